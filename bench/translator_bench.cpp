// Measures the program's main job on a synthetic workload and prints one JSON line per
// measurement. Export and import stand beside the time to copy the export file in the same run.
//   translator_bench [--workload small|large|stress] [--dir DIR] [--reuse] [--only MEASURE,...]
//                  [--repeat N]
// --reuse keeps the questionnaire files a previous run left in DIR instead of generating them;
// --repeat runs each export and import measure N times.
#include "Workload.h"

#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/QesDatabase.h"
#include "questionnaire/XmlFile.h"
#include "util/MessageSink.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>
#include <filesystem>

namespace {

qint64 StatusKb(const char* field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').value(0).toLongLong();
    return 0;
}

// Starts a new high-water mark of resident memory, so each step reports its own peak.
void ResetPeak() {
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

class Bench {
public:
    Bench(const bench::WorkloadSpec& spec, const QString& dir, const QStringList& only, bool reuse,
          int repeat)
        : m_spec(spec), m_dir(dir), m_only(only), m_reuse(reuse), m_repeat(std::max(1, repeat)) {}
    void Run();

private:
    template <class F> QJsonObject Measure(const char* name, qint64 cells, F&& step);
    void Print(QJsonObject o);
    double CopySeconds(const QString& path);
    qint64 CellCount(const CQuestionnaire& q) const;
    double CaptionMb(const CQuestionnaire& q) const;

    bool Wanted(const QString& measure) const {
        return m_only.isEmpty() || m_only.contains(measure);
    }

    bench::WorkloadSpec m_spec;
    QString m_dir;
    QStringList m_only; // measures to run; empty for all
    bool m_reuse = false;
    int m_repeat = 1; // times each export and import measure runs
    util::RecordingSink m_messages;
    app::AppContext m_app;
};

template <class F> QJsonObject Bench::Measure(const char* name, qint64 cells, F&& step) {
    ResetPeak();
    const qint64 before = StatusKb("VmRSS:");
    QElapsedTimer timer;
    timer.start();
    step();
    const double seconds = timer.nsecsElapsed() / 1e9;
    QJsonObject o{{QStringLiteral("workload"), m_spec.name},
                  {QStringLiteral("measure"), QString::fromLatin1(name)},
                  {QStringLiteral("seconds"), seconds},
                  {QStringLiteral("cells"), cells},
                  {QStringLiteral("cells_per_second"), seconds > 0 ? cells / seconds : 0.0},
                  {QStringLiteral("rss_before_mb"), before / 1024.0},
                  {QStringLiteral("peak_rss_mb"), StatusKb("VmHWM:") / 1024.0},
                  {QStringLiteral("step_peak_mb"), (StatusKb("VmHWM:") - before) / 1024.0},
                  {QStringLiteral("rss_mb"), StatusKb("VmRSS:") / 1024.0}};
    return o;
}

void Bench::Print(QJsonObject o) {
    if (!Wanted(o.value(QStringLiteral("measure")).toString()))
        return;
    if (o.contains(QStringLiteral("mb")) && o.value(QStringLiteral("seconds")).toDouble() > 0)
        o.insert(QStringLiteral("mb_per_second"),
                 o.value(QStringLiteral("mb")).toDouble() / o.value(QStringLiteral("seconds")).toDouble());
    std::printf("%s\n", QJsonDocument(o).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

// The median of five copies: one copy alone varies threefold with the state of the page cache.
double Bench::CopySeconds(const QString& path) {
    const QString copy = path + QStringLiteral(".copy");
    std::vector<double> times;
    for (int i = 0; i < 5; ++i) {
        QFile::remove(copy);
        QElapsedTimer timer;
        timer.start();
        std::filesystem::copy_file(path.toStdString(), copy.toStdString());
        times.push_back(timer.nsecsElapsed() / 1e9);
    }
    QFile::remove(copy);
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

qint64 Bench::CellCount(const CQuestionnaire& q) const {
    questionnaire::CaptionList list;
    questionnaire::BuildCaptionList(q, list, false);
    return list.size() * q.GetLanguageCount();
}

double Bench::CaptionMb(const CQuestionnaire& q) const {
    questionnaire::CaptionList list;
    questionnaire::BuildCaptionList(q, list, false);
    qint64 units = 0;
    for (qsizetype k = 0; k < list.size(); ++k)
        for (int l = 0; l < q.GetLanguageCount(); ++l)
            units += questionnaire::ReadCaption(q, list.questionIds[k], list.responseIds[k],
                                                q.GetLanguage(l).m_id).size();
    return units * 2 / 1e6;
}

void Bench::Run() {
    const QString base = m_dir + QStringLiteral("/") + m_spec.name;
    const bool reuse = m_reuse && QFileInfo::exists(base + QStringLiteral(".xml")) &&
                       QFileInfo::exists(base + QStringLiteral(".qes")) &&
                       QFileInfo::exists(base + QStringLiteral(".qex"));
    CQuestionnaire generated;
    if (reuse)
        app::LoadQuestionnaire(m_app, base + QStringLiteral(".qes"), generated, true, m_messages);
    else
        generated = bench::MakeQuestionnaire(m_spec);
    const qint64 cells = CellCount(generated);
    const double captionMb = CaptionMb(generated);
    if (!reuse) {
        QString error;
        questionnaire::WriteXmlFile(base + QStringLiteral(".xml"), generated);
        questionnaire::WriteQesFile(base + QStringLiteral(".qes"), generated,
                                    app::AppContext::ProgramVersion(), error);
        generated.SaveToExchangeFormat(base + QStringLiteral(".qex"), QString(), -1);
    }
    generated = CQuestionnaire();

    std::unique_ptr<CQuestionnaire> q;
    for (const char* type : {"xml", "qex", "qes"}) {
        const QString path = base + QLatin1Char('.') + QLatin1String(type);
        if (!Wanted(QStringLiteral("load_") + QLatin1String(type)) && qstrcmp(type, "qes") != 0)
            continue;
        q = std::make_unique<CQuestionnaire>();
        QJsonObject o = Measure((QByteArray("load_") + type).constData(), cells, [&] {
            app::LoadQuestionnaire(m_app, path, *q, true, m_messages);
        });
        o.insert(QStringLiteral("mb"), QFileInfo(path).size() / 1e6);
        o.insert(QStringLiteral("caption_utf16_mb"), captionMb);
        Print(o);
    }
    questionnaire::CaptionList list;
    Print(Measure("caption_list", cells, [&] { questionnaire::BuildCaptionList(*q, list, false); }));

    const QString exportPath = base + QStringLiteral("-export.txt");
    exchange::ExportOptions exportOptions;
    exportOptions.languages = questionnaire::DefaultLanguageOrder(*q);
    exportOptions.batch = true;
    // The import measures need the exported file, so the export always runs.
    std::vector<QJsonObject> exports;
    for (int r = 0; r < m_repeat; ++r) {
        // Like the copy below, the export makes a new file: freeing the blocks of an old one
        // is the file system's work, not the program's.
        QFile::remove(exportPath);
        exports.push_back(Measure("export", cells, [&] {
            exchange::ExportStringsForTranslation(exportPath, *q, exportOptions, list, m_messages);
        }));
    }
    const double exportMb = QFileInfo(exportPath).size() / 1e6;
    const double cp = CopySeconds(exportPath);
    for (QJsonObject& o : exports) {
        o.insert(QStringLiteral("mb"), exportMb);
        o.insert(QStringLiteral("caption_utf16_mb"), captionMb);
        o.insert(QStringLiteral("reference_cp_seconds"), cp);
        o.insert(QStringLiteral("ratio_to_cp"), o.value(QStringLiteral("seconds")).toDouble() / cp);
        Print(o);
    }

    exchange::ImportOptions importOptions;
    importOptions.languages = exportOptions.languages;
    importOptions.referenceLanguage = exportOptions.languages.first();
    importOptions.silent = true;
    auto measureImportOnce = [&](const char* name, const exchange::ImportOptions& options) {
        qint32 result = 0;
        exchange::ImportReport report;
        QJsonObject i = Measure(name, cells, [&] {
            result = exchange::ImportTranslatedFile(*q, exportPath, options, list, m_messages, &report);
        });
        i.insert(QStringLiteral("mb"), exportMb);
        i.insert(QStringLiteral("caption_utf16_mb"), captionMb);
        i.insert(QStringLiteral("result"), result);
        i.insert(QStringLiteral("rejected_rows"), report.rejectedRows);
        i.insert(QStringLiteral("reference_cp_seconds"), cp);
        i.insert(QStringLiteral("ratio_to_cp"), i.value(QStringLiteral("seconds")).toDouble() / cp);
        Print(i);
    };
    auto measureImport = [&](const char* name, const exchange::ImportOptions& options) {
        for (int r = 0; r < m_repeat && Wanted(QString::fromLatin1(name)); ++r)
            measureImportOnce(name, options);
    };
    measureImport("import", importOptions);
    // 3% of the source captions change after the export: their rows are set aside.
    for (qsizetype k = 0; k < list.size(); k += 33)
        if (list.questionIds[k] > 0)
            questionnaire::WriteCaption(*q, list.questionIds[k], list.responseIds[k],
                                        importOptions.referenceLanguage, QStringLiteral("changed"));
    exchange::ImportOptions unchanged = importOptions;
    unchanged.onlyUnchanged = true;
    measureImport("import_only_unchanged", unchanged);
    exchange::ImportOptions identical = importOptions;
    identical.copyIdentical = true;
    measureImport("import_copy_identical", identical);

    questionnaire::WriteCaption(*q, list.questionIds[0], list.responseIds[0],
                                importOptions.referenceLanguage, QStringLiteral("edited"));
    for (const char* type : {"xml", "qes", "qex"}) {
        const QString path = base + QLatin1Char('.') + QLatin1String(type);
        if (!Wanted(QStringLiteral("save_") + QLatin1String(type)))
            continue;
        app::QuestionnaireDocument document(m_app, m_messages);
        document.OpenSilently(path);
        QJsonObject s = Measure((QByteArray("save_") + type).constData(), cells,
                                [&] { document.SaveBatch(); });
        s.insert(QStringLiteral("mb"), QFileInfo(path).size() / 1e6);
        Print(s);
    }
}

} // namespace

namespace {
const QStringList kMeasures = {
    QStringLiteral("load_xml"), QStringLiteral("load_qex"), QStringLiteral("load_qes"),
    QStringLiteral("caption_list"), QStringLiteral("export"), QStringLiteral("import"),
    QStringLiteral("import_only_unchanged"), QStringLiteral("import_copy_identical"),
    QStringLiteral("save_xml"), QStringLiteral("save_qes"), QStringLiteral("save_qex")};

constexpr char kUsage[] =
    "usage: translator_bench [--workload small|large|stress] [--dir DIR] [--reuse]\n"
    "                        [--only MEASURE,...] [--repeat N]\n";
} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList args = QCoreApplication::arguments().mid(1);
    QString name = QStringLiteral("large");
    QString dir;
    QStringList only;
    bool reuse = false;
    int repeat = 1;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& option = args[i];
        const bool hasValue = i + 1 < args.size();
        if (option == QLatin1String("--help")) {
            std::printf("%smeasures: %s\n", kUsage, qPrintable(kMeasures.join(QLatin1Char(' '))));
            return 0;
        }
        if (option == QLatin1String("--reuse")) {
            reuse = true;
        } else if (option == QLatin1String("--workload") && hasValue) {
            name = args[++i];
        } else if (option == QLatin1String("--dir") && hasValue) {
            dir = args[++i];
        } else if (option == QLatin1String("--only") && hasValue) {
            only = args[++i].split(QLatin1Char(','));
            for (const QString& measure : std::as_const(only)) {
                if (!kMeasures.contains(measure)) {
                    std::fprintf(stderr, "unknown measure %s (%s)\n", qPrintable(measure),
                                 qPrintable(kMeasures.join(QStringLiteral(", "))));
                    return 64;
                }
            }
        } else if (option == QLatin1String("--repeat") && hasValue) {
            bool ok = false;
            repeat = args[++i].toInt(&ok);
            if (!ok || repeat < 1) {
                std::fprintf(stderr, "--repeat wants a whole number of at least 1\n%s", kUsage);
                return 64;
            }
        } else {
            std::fprintf(stderr, "unknown option or missing value: %s\n%s", qPrintable(option),
                         kUsage);
            return 64;
        }
    }
    bench::WorkloadSpec spec;
    if (!bench::NamedWorkload(name, spec)) {
        std::fprintf(stderr, "unknown workload (small, large, stress)\n");
        return 64;
    }
    QTemporaryDir temporary;
    Bench(spec, dir.isEmpty() ? temporary.path() : dir, only, reuse, repeat).Run();
    return 0;
}
