// doc_tool convert IN OUT       open IN by its type and save it as OUT
// doc_tool bigsave PATH SIZE    replace PATH (saved in its own type) with a large questionnaire,
//                               printing "saving" before and "saved" after the save
#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "questionnaire/CaptionAccess.h"
#include "util/MessageSink.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

namespace {

int Convert(const QString& in, const QString& out) {
    app::AppContext context;
    util::StandardErrorSink messages;
    app::QuestionnaireDocument document(context, messages);
    if (!document.Open(in))
        return 1;
    return document.Save(out) ? 0 : 2;
}

int BigSave(const QString& path, int size) {
    app::AppContext context;
    util::StandardErrorSink messages;
    app::QuestionnaireDocument document(context, messages);
    if (!document.OpenSilently(path))
        return 1;
    CQuestionnaire& q = *document.Questionnaire();
    // Enough new questions that the save takes a while.
    for (int i = 0; i < size; ++i) {
        auto question = std::make_unique<CQuestion>(100000 + i, QStringLiteral("BIG%1").arg(i));
        for (int l = 0; l < q.GetLanguageCount(); ++l)
            question->SetLocalisedLongCaption(q.GetLanguage(l).m_id,
                                              QStringLiteral("Caption %1 ").arg(i).repeated(20));
        q.AddQuestion(std::move(question));
    }
    for (int i = 0; i < q.GetNbreQuestion(); ++i)
        questionnaire::WriteCaption(q, q.GetQuestion(i).m_id, questionnaire::kShortCaption, 1033,
                                    QStringLiteral("changed %1").arg(i));
    std::printf("saving\n");
    std::fflush(stdout);
    const bool saved = document.SaveBatch();
    std::printf(saved ? "saved\n" : "failed\n");
    std::fflush(stdout);
    return saved ? 0 : 2;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() == 4 && args[1] == QLatin1String("convert"))
        return Convert(args[2], args[3]);
    if (args.size() == 4 && args[1] == QLatin1String("bigsave"))
        return BigSave(args[2], args[3].toInt());
    std::fprintf(stderr, "usage: doc_tool convert IN OUT | bigsave PATH SIZE\n");
    return 64;
}
