// Measures the translation memory: load and save of 1,000,000 entries in 4 languages beside a
// copy of the file, lookups per second, and auto-translation of the "large" workload. One JSON
// line per measurement.
//   dictionary_bench [--entries N]
#include "Workload.h"

#include "dictionary/ConflictList.h"
#include "dictionary/Dictionary.h"
#include "dictionary/DictionaryPasses.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/CaptionTable.h"
#include "questionnaire/LanguageList.h"
#include "util/Messages.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <cstdio>
#include <filesystem>

namespace {

void Print(const char* measure, double seconds, qint64 items, double mb, double cp) {
    QJsonObject o{{QStringLiteral("measure"), QString::fromLatin1(measure)},
                  {QStringLiteral("seconds"), seconds},
                  {QStringLiteral("items"), items},
                  {QStringLiteral("items_per_second"), seconds > 0 ? items / seconds : 0.0},
                  {QStringLiteral("peak_rss_mb"), bench::StatusKb("VmHWM:") / 1024.0}};
    if (mb > 0) {
        o.insert(QStringLiteral("mb"), mb);
        o.insert(QStringLiteral("mb_per_second"), seconds > 0 ? mb / seconds : 0.0);
    }
    if (cp > 0) {
        o.insert(QStringLiteral("reference_cp_seconds"), cp);
        o.insert(QStringLiteral("ratio_to_cp"), seconds / cp);
    }
    std::printf("%s\n", QJsonDocument(o).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

class NoChoice : public ConflictChooser {
public:
    qint32 Choose(const ConflictList&) override { return ConflictList::kDoNotAdd; }
};

} // namespace

int main(int argc, char** argv) {
    using bench::Seconds;
    QCoreApplication application(argc, argv);
    bench::WorkloadSpec spec;
    bench::NamedWorkload(QStringLiteral("large"), spec);
    const QStringList args = QCoreApplication::arguments();
    const int entries = args.contains(QLatin1String("--entries"))
                            ? args.value(args.indexOf(QLatin1String("--entries")) + 1).toInt()
                            : spec.dictionaryEntries;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Translator.dic"));
    util::RecordedMessages messages;
    QStringList sources;
    {
        CDictionary built = bench::MakeDictionary(entries, &sources);
        const double save = Seconds([&] { built.Save(path, messages); });
        const double mb = QFileInfo(path).size() / 1e6;
        const double cp = Seconds([&] {
            std::filesystem::copy_file(path.toStdString(),
                                       (path + QStringLiteral(".copy")).toStdString());
        });
        Print("save", save, entries, mb, cp);
    }
    CDictionary dictionary;
    const double mb = QFileInfo(path).size() / 1e6;
    const double cp = Seconds([&] {
        std::filesystem::copy_file(path.toStdString(),
                                   (path + QStringLiteral(".copy2")).toStdString());
    });
    Print("load", Seconds([&] { dictionary.Load(path, messages); }), entries, mb, cp);

    const int lookups = 200000;
    int found = 0;
    Print("translate", Seconds([&] {
              QString out;
              for (int i = 0; i < lookups; ++i)
                  found += dictionary.Translate(sources[i % sources.size()], 1033, 3082, out);
          }),
          lookups, 0, cp);

    CQuestionnaire q = bench::MakeQuestionnaire(spec);
    const questionnaire::CaptionTable table(&q);
    const questionnaire::CaptionList& rows = table.Rows();
    const QList<qint32>& columns = table.Languages();
    CDictionary memory;
    NoChoice chooser;
    int added = 0;
    Print("send_large", Seconds([&] {
              dictionary::SendToDictionary(table, 0, rows.size() - 1, memory, chooser, added);
          }),
          rows.size(), 0, cp);
    // The same questionnaire with every target cell emptied again.
    CQuestionnaire empty = q;
    for (qsizetype k = 0; k < rows.size(); ++k)
        for (qsizetype c = 1; c < columns.size(); ++c)
            questionnaire::WriteCaption(empty, rows.questionIds[k], rows.responseIds[k], columns[c],
                                        QString());
    questionnaire::CaptionTable emptyTable(&empty);
    int translated = 0;
    const double seconds =
        Seconds([&] { translated = dictionary::AutoTranslate(emptyTable, memory); });
    Print("autotranslate_large", seconds, translated, 0, cp);
    return found > 0 ? 0 : 1;
}
