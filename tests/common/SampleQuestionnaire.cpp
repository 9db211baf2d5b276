#include "common/SampleQuestionnaire.h"

#include "common/TestUtil.h"
#include "questionnaire/formats/XmlFile.h"

#include <QProcess>
#include <QTemporaryDir>

namespace testutil {

namespace {
std::unique_ptr<CModalite> Response(qint32 id, const QString& code, const QString& english,
                                    const QString& french, QList<qint32> versions = {}) {
    auto response = std::make_unique<CModalite>(id, code);
    response->SetLocalisedLongCaption(kEnglish, english);
    if (!french.isEmpty())
        response->SetLocalisedLongCaption(kFrench, french);
    response->SetVersions(versions);
    return response;
}
} // namespace

CQuestionnaire MakeSample() {
    CQuestionnaire q;
    q.SetName(QStringLiteral("Sample"));
    q.AddLanguage(std::make_unique<CLanguage>(quint32(kFrench)));
    q.AddLanguage(std::make_unique<CLanguage>(quint32(kEnglish)));
    q.AddLanguage(std::make_unique<CLanguage>(quint32(kGerman)));
    q.SetDefaultLanguage(kEnglish);
    q.AddVersion(std::make_unique<CVersion>(1, QStringLiteral("Web")));
    q.AddVersion(std::make_unique<CVersion>(2, QStringLiteral("Phone")));

    auto q10 = std::make_unique<CQuestion>(10, QStringLiteral("Q1"));
    q10->SetLocalisedLongCaption(kEnglish, QStringLiteral("How satisfied are you?"));
    q10->SetLocalisedLongCaption(kFrench, QStringLiteral("Êtes-vous satisfait ?"));
    q10->SetLocalisedShortCaption(kEnglish, QStringLiteral("Satisfaction"));
    q10->SetLocalisedInstructions(kEnglish, QStringLiteral("Read out\nthe scale"));
    q10->SetLocalisedComments(kEnglish, QStringLiteral("Tab\there"));
    q10->AddModalite(
        Response(1, QStringLiteral("1"), QStringLiteral("Very"), QStringLiteral("Très")));
    q10->AddModalite(Response(2, QStringLiteral("2"), QStringLiteral("Not \"really\""), {}, {2}));
    q.AddQuestion(std::move(q10));

    auto q20 = std::make_unique<CQuestion>(20, QStringLiteral("GRID"));
    q20->m_visible = 0;
    q20->SetLocalisedLongCaption(kEnglish, QStringLiteral("Rate each aspect"));
    q20->SetVersions({1});
    q.AddQuestion(std::move(q20));

    auto q21 = std::make_unique<CQuestion>(21, QStringLiteral("GRID_A"), QuestionType::Numeric);
    q21->m_hasParent = true;
    q21->m_parentId = 20;
    q21->SetLocalisedLongCaption(kEnglish, QStringLiteral("Price \\ value"));
    q.AddQuestion(std::move(q21));

    auto routing1 = std::make_unique<CFiltre>(5, CFiltre::kKindWithMessage);
    routing1->m_sourceQuestionId = 10;
    routing1->m_targetQuestionId = 21;
    routing1->m_condition = QStringLiteral("Q1 = 2");
    routing1->SetLocalisedMessage(kEnglish, QStringLiteral("Skipping ahead"));
    q.AddFiltre(std::move(routing1));
    auto routing2 = std::make_unique<CFiltre>(6, 1);
    routing2->SetLocalisedMessage(kEnglish, QStringLiteral("never listed"));
    q.AddFiltre(std::move(routing2));
    auto routing3 = std::make_unique<CFiltre>(7, CFiltre::kKindWithMessage);
    q.AddFiltre(std::move(routing3));

    q.SetCustomErrorMessage(kEnglish, 3, QStringLiteral("Please answer this one."));
    return q;
}

QString ValidateAgainstSchema(const QString& xmlPath) {
#ifdef TRANSLATOR_XMLLINT
    // xmllint reads the declared "Unicode" as UCS-2 and stumbles on surrogate pairs, so it gets
    // a UTF-8 copy of the same document.
    const QByteArray bytes = ReadAll(xmlPath);
    if (!bytes.startsWith("\xFF\xFE"))
        return QStringLiteral("the file does not start with FF FE");
    QString text = QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData() + 2),
                                      (bytes.size() - 2) / 2);
    const QString declaration = QString::fromUtf16(questionnaire::kXmlDeclaration);
    if (!text.startsWith(declaration))
        return QStringLiteral("the file does not start with the declaration line");
    text.replace(0, declaration.size(),
                 QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    QTemporaryDir dir;
    const QString copy = dir.filePath(QStringLiteral("copy.xml"));
    if (!WriteAll(copy, text.toUtf8()))
        return QStringLiteral("cannot write a UTF-8 copy");
    QProcess lint;
    lint.start(QStringLiteral(TRANSLATOR_XMLLINT),
               {QStringLiteral("--noout"), QStringLiteral("--nonet"), QStringLiteral("--schema"),
                QStringLiteral(TRANSLATOR_SOURCE_DIR "/docs/questionnaire.xsd"), copy});
    if (!lint.waitForFinished(60000))
        return QStringLiteral("xmllint did not finish");
    if (lint.exitStatus() == QProcess::NormalExit && lint.exitCode() == 0)
        return {};
    return QString::fromLocal8Bit(lint.readAllStandardError());
#else
    Q_UNUSED(xmlPath);
    return QStringLiteral("xmllint was not found when the tests were configured");
#endif
}

} // namespace testutil
