// Round-trip properties on generated questionnaires whose captions hold quotes, tabs, line
// breaks, backslashes, characters outside the BMP and right-to-left text.
#include "common/TestUtil.h"
#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/Questionnaire.h"
#include "util/Messages.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <random>

using namespace exchange;
using namespace questionnaire;
using questionnaire::ReadCaption;
using questionnaire::WriteCaption;

using namespace Qt::StringLiterals;

namespace {

const QList<qint32> kLanguages = {1033, 1036, 1037}; // English (main), French, Hebrew

class Generator {
public:
    explicit Generator(unsigned start) : m_random(start) {}

    QString Caption(bool safeOnly) {
        static const QStringList pieces =
            u"word| |\"|\t|\n|\r\n|\\|n|t|é|\U0001F600|\u05E9\u05DC\u05D5\u05DD|\"\"|,|'"_s.split(
                u'|');
        for (;;) {
            QString text;
            const int count = int(m_random() % 8);
            for (int i = 0; i < count; ++i)
                text += pieces[m_random() % pieces.size()];
            if (!safeOnly || CaptionSurvivesRoundTrip(text, true))
                return text;
        }
    }

    CQuestionnaire Questionnaire(bool safeOnly) {
        CQuestionnaire q;
        for (qint32 lcid : kLanguages)
            q.AddLanguage(std::make_unique<CLanguage>(quint32(lcid)));
        q.SetDefaultLanguage(1033);
        for (int i = 1; i <= 40; ++i) {
            auto question = std::make_unique<CQuestion>(i, u"Q%1"_s.arg(i));
            for (qint32 lcid : kLanguages) {
                question->SetLocalisedLongCaption(lcid, Caption(safeOnly));
                question->SetLocalisedShortCaption(lcid, Caption(safeOnly));
            }
            for (int r = 1; r <= int(m_random() % 4); ++r) {
                auto response = std::make_unique<CModalite>(r, QString::number(r));
                for (qint32 lcid : kLanguages)
                    response->SetLocalisedLongCaption(lcid, Caption(safeOnly));
                question->AddModalite(std::move(response));
            }
            q.AddQuestion(std::move(question));
        }
        // Every caption row has a distinct English text, so that rows can be told apart.
        questionnaire::CaptionList list;
        questionnaire::BuildCaptionList(q, list, false);
        for (qsizetype k = 0; k < list.size(); ++k)
            if (list.questionIds[k] > 0)
                WriteCaption(q, list.questionIds[k], list.responseIds[k], 1033,
                             u"#%1 "_s.arg(k) +
                                 ReadCaption(q, list.questionIds[k], list.responseIds[k], 1033));
        return q;
    }

    std::mt19937 m_random;
};

class RoundTripTest : public ::testing::TestWithParam<unsigned> {
protected:
    void SetUp() override { m_generator = std::make_unique<Generator>(GetParam()); }

    QString Export(const CQuestionnaire& q, ExportReport* report = nullptr) {
        ExportOptions options;
        options.languages = questionnaire::DefaultLanguageOrder(q);
        questionnaire::CaptionList list;
        questionnaire::BuildCaptionList(q, list, false);
        const QString path = m_dir.filePath(u"export.txt"_s);
        ExportStringsForTranslation(path, q, options, list, m_messages, report);
        return path;
    }
    qint32 Import(CQuestionnaire& q, const QString& path, bool onlyUnchanged,
                  ImportReport* report = nullptr) {
        ImportOptions options;
        options.languages = questionnaire::DefaultLanguageOrder(q);
        options.referenceLanguage = 1033;
        options.onlyUnchanged = onlyUnchanged;
        questionnaire::CaptionList list;
        questionnaire::BuildCaptionList(q, list, false);
        return ImportTranslatedFile(q, path, options, list, m_messages, report);
    }
    // Every (row, language) of the questionnaire, in row order, whose caption is picked.
    template <typename Pick> static QStringList Keys(const CQuestionnaire& q, Pick pick) {
        QStringList keys;
        questionnaire::CaptionList list;
        questionnaire::BuildCaptionList(q, list, false);
        for (qsizetype k = 0; k < list.size(); ++k)
            for (qint32 lcid : kLanguages)
                if (pick(list.questionIds[k], list.responseIds[k], lcid))
                    keys.append(
                        u"%1/%2/%3"_s.arg(list.questionIds[k]).arg(list.responseIds[k]).arg(lcid));
        return keys;
    }
    static QStringList Differences(const CQuestionnaire& a, const CQuestionnaire& b) {
        return Keys(a, [&](qint32 question, qint32 response, qint32 lcid) {
            return ReadCaption(a, question, response, lcid) !=
                   ReadCaption(b, question, response, lcid);
        });
    }

    std::unique_ptr<Generator> m_generator;
    QTemporaryDir m_dir;
    util::RecordedMessages m_messages;
};

TEST_P(RoundTripTest, UntouchedFileChangesOnlyCaptionsTheExportWarnedAbout) {
    const CQuestionnaire original = m_generator->Questionnaire(false);
    CQuestionnaire q = original;
    ExportReport report;
    const QString path = Export(q, &report);
    const qint32 written = Import(q, path, false);
    const QStringList changed = Differences(original, q);
    EXPECT_EQ(written, changed.size());
    // The export counts every caption that may not survive and names its first ten rows.
    const QStringList unsafe = Keys(original, [&](qint32 question, qint32 response, qint32 lcid) {
        return !CaptionSurvivesRoundTrip(ReadCaption(original, question, response, lcid),
                                         lcid == 1033);
    });
    QStringList rows;
    for (const QString& key : unsafe)
        rows.append(key.section(u'/', 0, 1));
    rows.removeDuplicates();
    EXPECT_EQ(report.unsafeCaptions, unsafe.size());
    EXPECT_EQ(report.unsafeKeys, rows.mid(0, 10));
    for (const QString& key : changed)
        EXPECT_TRUE(unsafe.contains(key)) << key.toStdString();
}

// A translator fills some French and Hebrew cells: the file is the export of a copy with those
// cells changed. Importing it with only unchanged rows writes exactly those cells: no row whose
// source text holds quotes, tabs, line breaks or backslashes passes for changed.
TEST_P(RoundTripTest, ATranslatorsFileWritesExactlyTheEditedCells) {
    const CQuestionnaire original = m_generator->Questionnaire(true);
    questionnaire::CaptionList list;
    questionnaire::BuildCaptionList(original, list, false);
    CQuestionnaire translated = original;
    QStringList edited;
    for (qsizetype k = 0; k < list.size(); k += 3) {
        const qint32 lcid = k % 2 ? 1036 : 1037;
        const QString text = u"tr%1 "_s.arg(k) + m_generator->Caption(true);
        if (text == ReadCaption(original, list.questionIds[k], list.responseIds[k], lcid))
            continue;
        WriteCaption(translated, list.questionIds[k], list.responseIds[k], lcid, text);
        if (ReadCaption(translated, list.questionIds[k], list.responseIds[k], lcid) == text)
            edited.append(
                u"%1/%2/%3"_s.arg(list.questionIds[k]).arg(list.responseIds[k]).arg(lcid));
    }
    CQuestionnaire q = original;
    ImportReport report;
    EXPECT_EQ(Import(q, Export(translated), true, &report), edited.size());
    EXPECT_EQ(report.rejectedRows, 0);
    EXPECT_EQ(Differences(original, q), edited);
    EXPECT_EQ(q, translated);
}

INSTANTIATE_TEST_SUITE_P(Generated, RoundTripTest, ::testing::Values(1u, 2u, 3u, 4u, 5u));

} // namespace
