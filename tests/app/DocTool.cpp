// doc_tool convert IN OUT       open IN by its type and save it as OUT
// doc_tool bigsave PATH SIZE [LABEL]
//                               replace PATH (saved in its own type) with a large questionnaire
//                               whose short captions carry LABEL, printing "saving" before and
//                               "saved" after the save
// doc_tool limit BYTES PROGRAM ARG...
//                               run PROGRAM with files limited to BYTES, SIGXFSZ ignored, so
//                               that writes fail part-way as on a full disk
#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "questionnaire/CaptionAccess.h"
#include "util/Messages.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>

#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

int BigSave(app::QuestionnaireDocument& document, util::StandardErrorMessages& messages,
            const QString& path, int size, const QString& label) {
    if (!document.OpenSilently(path))
        return 1;
    CQuestionnaire& q = *document.Questionnaire();
    // Enough new questions that the save takes a while.
    for (int i = 0; i < size; ++i) {
        auto question = std::make_unique<CQuestion>(100000 + i, u"BIG%1"_s.arg(i));
        for (int l = 0; l < q.GetLanguageCount(); ++l)
            question->SetLocalisedLongCaption(q.GetLanguage(l).m_id,
                                              u"Caption %1 "_s.arg(i).repeated(20));
        q.AddQuestion(std::move(question));
    }
    for (int i = 0; i < q.GetNbreQuestion(); ++i)
        questionnaire::WriteCaption(q, q.GetQuestion(i).m_id, questionnaire::kShortCaption, 1033,
                                    u"%1 %2"_s.arg(label).arg(i));
    std::printf("saving\n");
    std::fflush(stdout);
    const bool saved = document.SaveBatch();
    std::printf(saved ? "saved\n" : "failed\n");
    if (!saved)
        messages.Error(document.LastError());
    std::fflush(stdout);
    return saved ? 0 : 2;
}

int RunLimited(qint64 bytes, char** command) {
    struct rlimit limit {};
    limit.rlim_cur = limit.rlim_max = rlim_t(bytes);
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        return 70;
    std::signal(SIGXFSZ, SIG_IGN);
    ::execv(command[0], command);
    return 71;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (argc >= 4 && args[1] == QLatin1String("limit"))
        return RunLimited(args[2].toLongLong(), argv + 3);
    app::AppContext context;
    util::StandardErrorMessages messages;
    app::QuestionnaireDocument document(context, messages);
    if (args.size() == 4 && args[1] == QLatin1String("convert"))
        return !document.Open(args[2]) ? 1 : document.Save(args[3]) ? 0 : 2;
    if ((args.size() == 4 || args.size() == 5) && args[1] == QLatin1String("bigsave"))
        return BigSave(document, messages, args[2], args[3].toInt(), args.value(4, u"changed"_s));
    std::fprintf(stderr, "usage: doc_tool convert IN OUT | bigsave PATH SIZE [LABEL] | "
                         "limit BYTES PROGRAM ARG...\n");
    return 64;
}
