// Measures the program's main jobs on a synthetic workload and prints one JSON line per
// measurement, each beside a reference tool timed in the same run:
//   export, import, only-unchanged, copy identical   cp of the export file
//   load_xml                                         xmllint --stream --noout of the XML
//   load_qex                                         unzip -p of the package plus xmllint of its
//   XML save_qex                                         our own save_xml plus zip -6 of the XML
//   create_qew, create_server    a new campaign database, in an SQLite file and on a PostgreSQL
//                                server of the benchmark's own: our write of a new .qes
//   load_qew, load_server        load_qes of the same run
//   save_qew, save_server        save_qes of the same run (one caption edited)
// Loads also report their peak memory beside the UTF-16 size of all captions.
//   translator_bench [--workload small|large|stress] [--dir DIR] [--reuse] [--only MEASURE,...]
//                  [--repeat N]
// --reuse keeps the questionnaire files a previous run left in DIR instead of generating them;
// --repeat runs each measure N times.
#include "Workload.h"

#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "common/PostgresServer.h"
#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/XmlFile.h"
#include "util/Messages.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include <malloc.h>

namespace {

using bench::Median;
using bench::ResetPeak;
using bench::Seconds;
using bench::StatusKb;

// The median time of a reference tool over three runs, or nothing when the tool is missing or
// fails.
std::optional<double> ToolSeconds(const QString& program, const QStringList& arguments) {
    if (QStandardPaths::findExecutable(program).isEmpty())
        return std::nullopt;
    std::vector<double> times;
    for (int i = 0; i < 3; ++i) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        QElapsedTimer timer;
        timer.start();
        process.start(program, arguments);
        if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit ||
            process.exitCode() != 0)
            return std::nullopt;
        times.push_back(timer.nsecsElapsed() / 1e9);
    }
    return Median(times);
}

class Bench {
public:
    Bench(const bench::WorkloadSpec& spec, const QString& dir, const QStringList& only, bool reuse,
          int repeat)
        : m_spec(spec), m_dir(dir), m_only(only), m_reuse(reuse), m_repeat(std::max(1, repeat)) {}
    void Run();

private:
    QJsonObject Measure(const char* name, const std::function<void()>& step, bool trim = false);
    // Runs a measure `m_repeat` times and prints each, with `extra` added to every line.
    void Repeat(const char* name, const std::function<void()>& step,
                const std::function<void(QJsonObject&)>& extra);
    void Print(QJsonObject o);
    double CopySeconds(const QString& path);
    bool Wanted(const QString& measure) const {
        return m_only.isEmpty() || m_only.contains(measure);
    }
    QString Path(const char* type) const { return m_base + QLatin1Char('.') + QLatin1String(type); }
    void Prepare();
    void MeasureLoads();
    void MeasureExchange();
    void MeasureSaves();
    void MeasureCampaigns();
    bool CampaignsWanted() const;

    bench::WorkloadSpec m_spec;
    QString m_dir;
    QString m_base;
    QStringList m_only; // measures to run; empty for all
    bool m_reuse = false;
    int m_repeat = 1;
    qint64 m_cells = 0;
    double m_captionMb = 0;
    util::RecordedMessages m_messages;
    app::AppContext m_app;
    std::unique_ptr<CQuestionnaire> m_q;
    questionnaire::CaptionList m_list;
    std::optional<double> m_xmllint; // xmllint --stream of the XML
    std::optional<double> m_saveXml; // our own save of the XML, for the package's reference
    std::optional<double> m_loadQes; // the campaigns' references
    std::optional<double> m_saveQes;
};

QJsonObject Bench::Measure(const char* name, const std::function<void()>& step, bool trim) {
    ResetPeak(trim);
    const qint64 before = StatusKb("VmRSS:");
    const double seconds = Seconds(step);
    const qint64 peak = StatusKb("VmHWM:");
    return QJsonObject{{QStringLiteral("workload"), m_spec.name},
                       {QStringLiteral("measure"), QString::fromLatin1(name)},
                       {QStringLiteral("seconds"), seconds},
                       {QStringLiteral("cells"), m_cells},
                       {QStringLiteral("cells_per_second"), seconds > 0 ? m_cells / seconds : 0.0},
                       {QStringLiteral("caption_utf16_mb"), m_captionMb},
                       {QStringLiteral("rss_before_mb"), before / 1024.0},
                       {QStringLiteral("peak_rss_mb"), peak / 1024.0},
                       {QStringLiteral("step_peak_mb"), (peak - before) / 1024.0},
                       {QStringLiteral("rss_mb"), StatusKb("VmRSS:") / 1024.0}};
}

void Bench::Repeat(const char* name, const std::function<void()>& step,
                   const std::function<void(QJsonObject&)>& extra) {
    if (!Wanted(QString::fromLatin1(name)))
        return;
    for (int r = 0; r < m_repeat; ++r) {
        QJsonObject o = Measure(name, step);
        if (extra)
            extra(o);
        Print(o);
    }
}

void Bench::Print(QJsonObject o) {
    const double seconds = o.value(QStringLiteral("seconds")).toDouble();
    if (o.contains(QStringLiteral("mb")) && seconds > 0)
        o.insert(QStringLiteral("mb_per_second"),
                 o.value(QStringLiteral("mb")).toDouble() / seconds);
    if (o.contains(QStringLiteral("reference_seconds"))) {
        const double reference = o.value(QStringLiteral("reference_seconds")).toDouble();
        o.insert(QStringLiteral("ratio_to_reference"), reference > 0 ? seconds / reference : 0.0);
    }
    if (o.contains(QStringLiteral("caption_utf16_mb")) && m_captionMb > 0)
        o.insert(QStringLiteral("peak_to_captions"),
                 o.value(QStringLiteral("step_peak_mb")).toDouble() / m_captionMb);
    std::printf("%s\n", QJsonDocument(o).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

// The median of five copies: one copy alone varies threefold with the state of the page cache.
double Bench::CopySeconds(const QString& path) {
    const QString copy = path + QStringLiteral(".copy");
    std::vector<double> times;
    for (int i = 0; i < 5; ++i) {
        QFile::remove(copy);
        times.push_back(
            Seconds([&] { std::filesystem::copy_file(path.toStdString(), copy.toStdString()); }));
    }
    QFile::remove(copy);
    return Median(times);
}

void Bench::Prepare() {
    m_base = m_dir + QStringLiteral("/") + m_spec.name;
    const bool reuse = m_reuse && QFileInfo::exists(Path("xml")) &&
                       QFileInfo::exists(Path("qes")) && QFileInfo::exists(Path("qex"));
    CQuestionnaire generated;
    if (reuse)
        (void)app::LoadQuestionnaire(m_app, Path("qes"), generated);
    else
        generated = bench::MakeQuestionnaire(m_spec);
    questionnaire::BuildCaptionList(generated, m_list, false);
    m_cells = m_list.size() * generated.GetLanguageCount();
    qint64 units = 0;
    for (qsizetype k = 0; k < m_list.size(); ++k)
        for (int l = 0; l < generated.GetLanguageCount(); ++l)
            units +=
                questionnaire::ReadCaption(generated, m_list.questionIds[k], m_list.responseIds[k],
                                           generated.GetLanguage(l).m_id)
                    .size();
    m_captionMb = units * 2 / 1e6;
    if (!reuse) {
        (void)questionnaire::WriteXmlFile(Path("xml"), generated);
        (void)questionnaire::WriteQesFile(Path("qes"), generated,
                                          app::AppContext::ProgramVersion());
        generated.SaveToExchangeFormat(Path("qex"), QString(), -1);
    }
}

void Bench::MeasureLoads() {
    if (Wanted(QStringLiteral("load_xml")) || Wanted(QStringLiteral("load_qex")))
        m_xmllint =
            ToolSeconds(QStringLiteral("xmllint"),
                        {QStringLiteral("--stream"), QStringLiteral("--noout"), Path("xml")});
    std::optional<double> unzip;
    if (Wanted(QStringLiteral("load_qex")))
        unzip = ToolSeconds(QStringLiteral("unzip"), {QStringLiteral("-p"), Path("qex"),
                                                      QStringLiteral("questionnaire.xml")});
    for (const char* type : {"xml", "qex", "qes"}) {
        const QByteArray name = QByteArray("load_") + type;
        // The questionnaire the later measures work on comes from the last load, a .qes.
        if (!Wanted(QString::fromLatin1(name)) && qstrcmp(type, "qes") != 0)
            continue;
        std::optional<double> reference;
        QString tools;
        if (qstrcmp(type, "xml") == 0) {
            reference = m_xmllint;
            tools = QStringLiteral("xmllint --stream --noout");
        } else if (qstrcmp(type, "qex") == 0 && unzip && m_xmllint) {
            reference = *unzip + *m_xmllint;
            tools = QStringLiteral("unzip -p, then xmllint --stream --noout");
        }
        const QString path = Path(type);
        std::vector<double> times;
        for (int r = 0; r < m_repeat; ++r) {
            m_q.reset();
            QJsonObject o = Measure(
                name.constData(),
                [&] {
                    m_q = std::make_unique<CQuestionnaire>();
                    (void)app::LoadQuestionnaire(m_app, path, *m_q);
                },
                true);
            times.push_back(o.value(QStringLiteral("seconds")).toDouble());
            o.insert(QStringLiteral("mb"), QFileInfo(path).size() / 1e6);
            if (reference) {
                o.insert(QStringLiteral("reference_seconds"), *reference);
                o.insert(QStringLiteral("reference"), tools);
            }
            if (Wanted(QString::fromLatin1(name)))
                Print(o);
        }
        if (qstrcmp(type, "qes") == 0)
            m_loadQes = Median(times);
    }
}

void Bench::MeasureExchange() {
    CQuestionnaire& q = *m_q;
    Repeat("caption_list",
           [&] {
               m_list.clear();
               questionnaire::BuildCaptionList(q, m_list, false);
           },
           {});
    const QString exportPath = m_base + QStringLiteral("-export.txt");
    exchange::ExportOptions exportOptions;
    exportOptions.languages = questionnaire::DefaultLanguageOrder(q);
    // Like the copy it is compared with, the export makes a new file: freeing the blocks of an
    // old one is the file system's work, not the program's. The import measures need the file,
    // so the export always runs.
    std::vector<QJsonObject> exports;
    for (int r = 0; r < m_repeat; ++r) {
        QFile::remove(exportPath);
        exports.push_back(Measure("export", [&] {
            exchange::ExportStringsForTranslation(exportPath, q, exportOptions, m_list, m_messages);
        }));
    }
    const double exportMb = QFileInfo(exportPath).size() / 1e6;
    const double cp = CopySeconds(exportPath);
    auto beside = [&](QJsonObject& o) {
        o.insert(QStringLiteral("mb"), exportMb);
        o.insert(QStringLiteral("reference"), QStringLiteral("cp of the export file"));
        o.insert(QStringLiteral("reference_seconds"), cp);
    };
    if (Wanted(QStringLiteral("export"))) {
        for (QJsonObject& o : exports) {
            beside(o);
            Print(o);
        }
    }

    exchange::ImportOptions importOptions;
    importOptions.languages = exportOptions.languages;
    importOptions.referenceLanguage = exportOptions.languages.first();
    util::NoMessages silent;
    auto import = [&](const char* name, const exchange::ImportOptions& options) {
        qint32 result = 0;
        exchange::ImportReport report;
        Repeat(
            name,
            [&] {
                result =
                    exchange::ImportTranslatedFile(q, exportPath, options, m_list, silent, &report);
            },
            [&](QJsonObject& o) {
                beside(o);
                o.insert(QStringLiteral("result"), result);
                o.insert(QStringLiteral("rejected_rows"), report.rejectedRows);
            });
    };
    import("import", importOptions);
    // 3% of the source captions change after the export: their rows are set aside.
    for (qsizetype k = 0; k < m_list.size(); k += 33)
        if (m_list.questionIds[k] > 0)
            questionnaire::WriteCaption(q, m_list.questionIds[k], m_list.responseIds[k],
                                        importOptions.referenceLanguage, QStringLiteral("changed"));
    exchange::ImportOptions unchanged = importOptions;
    unchanged.onlyUnchanged = true;
    import("import_only_unchanged", unchanged);
    exchange::ImportOptions identical = importOptions;
    identical.copyIdentical = true;
    import("import_copy_identical", identical);
}

void Bench::MeasureSaves() {
    m_q.reset();
    std::optional<double> zip;
    if (Wanted(QStringLiteral("save_qex"))) {
        const QString zipPath = m_base + QStringLiteral("-reference.zip");
        QFile::remove(zipPath);
        zip = ToolSeconds(QStringLiteral("sh"),
                          {QStringLiteral("-c"),
                           QStringLiteral("rm -f \"$1\" && zip -6 -q -j \"$1\" \"$2\""),
                           QStringLiteral("sh"), zipPath, Path("xml")});
        QFile::remove(zipPath);
    }
    for (const char* type : {"xml", "qes", "qex"}) {
        const QByteArray name = QByteArray("save_") + type;
        const bool wanted = Wanted(QString::fromLatin1(name));
        // The package is measured against the XML's save, which runs whenever it is wanted, and
        // the campaigns against the .qes save.
        if (!wanted && !(qstrcmp(type, "xml") == 0 && Wanted(QStringLiteral("save_qex"))) &&
            !(qstrcmp(type, "qes") == 0 && CampaignsWanted()))
            continue;
        app::QuestionnaireDocument document(m_app, m_messages);
        document.OpenSilently(Path(type));
        // A changed caption, as a save after work has one.
        questionnaire::WriteCaption(
            *document.Questionnaire(), m_list.questionIds[0], m_list.responseIds[0],
            document.Questionnaire()->GetDefaultLanguage(), QStringLiteral("edited"));
        std::vector<double> times;
        for (int r = 0; r < m_repeat; ++r) {
            QJsonObject o = Measure(name.constData(), [&] { document.SaveBatch(); });
            times.push_back(o.value(QStringLiteral("seconds")).toDouble());
            o.insert(QStringLiteral("mb"), QFileInfo(Path(type)).size() / 1e6);
            if (qstrcmp(type, "qex") == 0 && zip && m_saveXml) {
                o.insert(QStringLiteral("reference"),
                         QStringLiteral("our save_xml, then zip -6 of the XML"));
                o.insert(QStringLiteral("reference_seconds"), *m_saveXml + *zip);
            }
            if (wanted)
                Print(o);
        }
        if (qstrcmp(type, "xml") == 0)
            m_saveXml = Median(times);
        if (qstrcmp(type, "qes") == 0)
            m_saveQes = Median(times);
    }
}

const char* const kCampaignMeasures[] = {"create_qew",    "load_qew",    "save_qew",
                                         "create_server", "load_server", "save_server"};

bool Bench::CampaignsWanted() const {
    return std::any_of(std::begin(kCampaignMeasures), std::end(kCampaignMeasures),
                       [this](const char* name) { return Wanted(QLatin1String(name)); });
}

void Bench::MeasureCampaigns() {
    if (!CampaignsWanted())
        return;
    // The reference of a new database: our own write of a new .qes file.
    CQuestionnaire source;
    (void)app::LoadQuestionnaire(m_app, Path("qes"), source);
    const QString newQes = m_base + QStringLiteral("-new.qes");
    std::vector<double> writes;
    for (int r = 0; r < 3; ++r) {
        QFile::remove(newQes);
        writes.push_back(Seconds([&] {
            (void)questionnaire::WriteQesFile(newQes, source, app::AppContext::ProgramVersion());
        }));
    }
    QFile::remove(newQes);
    const double writeQes = Median(writes);
    // A row of a question, so that the edit lands in the campaign.
    qsizetype edited = 0;
    while (edited < m_list.size() - 1 && m_list.questionIds[edited] <= 0)
        ++edited;

    testutil::PostgresServer server;
    QString serverLocation;
    if (server.Start(true))
        serverLocation = server.CreateDatabase(QStringLiteral("bench"));
    if (serverLocation.isEmpty())
        std::fprintf(stderr, "no PostgreSQL server for the server measures: %s\n",
                     qPrintable(server.Error()));
    for (const char* kind : {"qew", "server"}) {
        const bool onServer = qstrcmp(kind, "server") == 0;
        const QString location = onServer ? serverLocation : Path("qew");
        if (location.isEmpty())
            continue;
        const QByteArray create = QByteArray("create_") + kind;
        const QByteArray load = QByteArray("load_") + kind;
        const QByteArray save = QByteArray("save_") + kind;
        for (int r = 0; r < m_repeat; ++r) {
            app::QuestionnaireDocument document(m_app, m_messages);
            document.OpenSilently(Path("qes"));
            bool saved = false;
            QJsonObject o =
                Measure(create.constData(), [&] { saved = document.SaveBatchAs(location); });
            o.insert(QStringLiteral("saved"), saved);
            o.insert(QStringLiteral("reference"), QStringLiteral("our write of a new .qes"));
            o.insert(QStringLiteral("reference_seconds"), writeQes);
            if (Wanted(QString::fromLatin1(create)))
                Print(o);
        }
        Repeat(
            load.constData(),
            [&] {
                CQuestionnaire q;
                (void)app::LoadQuestionnaire(m_app, location, q);
            },
            [&](QJsonObject& o) {
                o.insert(QStringLiteral("reference"), QStringLiteral("load_qes of this run"));
                o.insert(QStringLiteral("reference_seconds"), m_loadQes.value_or(0));
            });
        if (!Wanted(QString::fromLatin1(save)))
            continue;
        app::QuestionnaireDocument document(m_app, m_messages);
        document.OpenSilently(location);
        for (int r = 0; r < m_repeat; ++r) {
            questionnaire::WriteCaption(
                *document.Questionnaire(), m_list.questionIds[edited], m_list.responseIds[edited],
                document.Questionnaire()->GetDefaultLanguage(), QStringLiteral("edited %1").arg(r));
            bool saved = false;
            QJsonObject o = Measure(save.constData(), [&] { saved = document.SaveBatch(); });
            o.insert(QStringLiteral("saved"), saved);
            o.insert(QStringLiteral("reference"), QStringLiteral("save_qes of this run"));
            o.insert(QStringLiteral("reference_seconds"), m_saveQes.value_or(0));
            Print(o);
        }
    }
}

void Bench::Run() {
    Prepare();
    MeasureLoads();
    MeasureExchange();
    MeasureSaves();
    MeasureCampaigns();
}

const QStringList kMeasures = {QStringLiteral("load_xml"),
                               QStringLiteral("load_qex"),
                               QStringLiteral("load_qes"),
                               QStringLiteral("caption_list"),
                               QStringLiteral("export"),
                               QStringLiteral("import"),
                               QStringLiteral("import_only_unchanged"),
                               QStringLiteral("import_copy_identical"),
                               QStringLiteral("save_xml"),
                               QStringLiteral("save_qes"),
                               QStringLiteral("save_qex"),
                               QStringLiteral("create_qew"),
                               QStringLiteral("load_qew"),
                               QStringLiteral("save_qew"),
                               QStringLiteral("create_server"),
                               QStringLiteral("load_server"),
                               QStringLiteral("save_server")};

constexpr char kUsage[] =
    "usage: translator_bench [--workload small|large|stress] [--dir DIR] [--reuse]\n"
    "                        [--only MEASURE,...] [--repeat N]\n";

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    bench::Options options;
    const QByteArray measures = kMeasures.join(QLatin1Char(' ')).toLatin1();
    if (const int status = bench::ParseOptions(QCoreApplication::arguments().mid(1), kUsage,
                                               measures.constData(), options, true);
        status >= 0)
        return status;
    QTemporaryDir temporary;
    Bench(options.spec, options.dir.isEmpty() ? temporary.path() : options.dir, options.only,
          options.reuse, options.repeat)
        .Run();
    return 0;
}
