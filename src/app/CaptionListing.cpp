#include "app/CaptionListing.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/Questionnaire.h"

namespace app {

namespace {
QString Escaped(QString text) {
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    text.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    text.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    return text;
}
} // namespace

void PrintCaptionList(const CQuestionnaire& q, QTextStream& out) {
    questionnaire::CaptionList list;
    questionnaire::BuildCaptionList(q, list);
    const QList<qint32> languages = questionnaire::DefaultLanguageOrder(q);
    out << "QuestionId\tResponseId\tLabel";
    for (qint32 lcid : languages) {
        int index = 0;
        QString name;
        for (index = 0; index < q.GetLanguageCount(); ++index)
            if (q.GetLanguage(index).m_id == lcid)
                name = q.GetLanguage(index).m_shortName;
        out << '\t' << lcid << '(' << name << ')';
    }
    out << '\n';
    for (qsizetype row = 0; row < list.size(); ++row) {
        out << list.questionIds[row] << '\t' << list.responseIds[row] << '\t' << list.labels[row];
        for (qint32 lcid : languages)
            out << '\t'
                << Escaped(questionnaire::ReadCaption(q, list.questionIds[row],
                                                      list.responseIds[row], lcid));
        out << '\n';
    }
}

} // namespace app
