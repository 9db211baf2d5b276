// Measures the window program's caption grid on a synthetic workload and prints one JSON line per
// measure:
//   grid_open                 MainWindow::OpenFile of the .xml: the load and the view built on it
//   grid_first_paint          from OpenFile's return until the grid has painted once
//                             both beside app::LoadQuestionnaire of the same file, no window
//   grid_jump_to_last_row     Ctrl+End in the grid and the paint that shows the last row
//   grid_scroll_page          PageDown from the first row and the paint after it
//   grid_edit_cell            a key typed into a cell of the last row, Return, the repaint
//   grid_model_bytes_per_row  the memory the window adds per row over a load alone: resident
//                             (current and peak) and the allocator's bytes in use
//   grid_bench [--workload small|large|stress] [--dir DIR] [--reuse] [--repeat N]
// --reuse keeps the .xml a previous run (of this program or translator_bench) left in DIR;
// --repeat opens the file N times, each in a new window, and reports the medians.
#include "Workload.h"

#include "app/AppContext.h"
#include "app/QuestionnaireDocument.h"
#include "questionnaire/formats/XmlFile.h"
#include "ui/CaptionGrid.h"
#include "ui/CaptionModel.h"
#include "ui/MainWindow.h"
#include "ui/OpenDocument.h"
#include "ui/TranslatorView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <malloc.h>

namespace {

constexpr double kPaintShareTarget = 0.10; // the first paint adds at most this to the load
constexpr double kInteractionTargetMs = 50;

qint64 StatusKb(const char* field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').value(0).toLongLong();
    return 0;
}

// Gives back what the allocator keeps from earlier work and starts a new high-water mark, so a
// step's memory is its own.
void ResetPeak() {
    malloc_trim(0);
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

// The bytes the allocator has handed out and not had back: unlike resident memory, it does not
// hide what a step allocates in pages an earlier step freed but kept.
qint64 HeapKb() {
    const struct mallinfo2 info = mallinfo2();
    return qint64((info.uordblks + info.hblkhd) / 1024);
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

double Ms(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e6;
}

// Counts a widget's paints, so a measure knows the paint it waits for happened.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) : QObject(widget) { widget->installEventFilter(this); }
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
};

// Lets the event loop do what the last input left (layouts, scrolling, the paint it asked for),
// as it does before the user sees the result; paints the grid itself when that did not.
bool Settle(QWidget* viewport, const PaintCounter& counter) {
    const int before = counter.paints;
    QApplication::processEvents();
    if (counter.paints == before)
        viewport->repaint();
    return counter.paints > before;
}

// The figures of one opening of the file in a new window.
struct Figures {
    double loadSeconds = 0, openSeconds = 0, paintSeconds = 0;
    double jumpMs = 0, scrollMs = 0, editMs = 0;
    qint64 loadRssKb = 0, loadPeakKb = 0, loadHeapKb = 0;
    qint64 windowRssKb = 0, windowPeakKb = 0, windowHeapKb = 0;
    qsizetype rows = 0;
    int columns = 0;
    int pagedRows = 0;
    bool paintedByEventLoop = false; // else the first paint had to be forced
};

class GridBench {
public:
    GridBench(const bench::WorkloadSpec& spec, const QString& dir, bool reuse, int repeat)
        : m_spec(spec), m_path(dir + QLatin1Char('/') + spec.name + QStringLiteral(".xml")),
          m_reuse(reuse), m_repeat(repeat) {
        m_app.dictionaryPath = dir + QStringLiteral("/grid_bench.dic");
    }
    bool Run();

private:
    bool Prepare();
    bool Once(Figures& run);
    bool Fail(const char* what) {
        std::fprintf(stderr, "grid_bench: %s\n", what);
        return false;
    }
    void Print(const char* measure, QJsonObject o) const {
        o.insert(QStringLiteral("workload"), m_spec.name);
        o.insert(QStringLiteral("measure"), QString::fromLatin1(measure));
        o.insert(QStringLiteral("repeat"), m_repeat);
        std::printf("%s\n", QJsonDocument(o).toJson(QJsonDocument::Compact).constData());
        std::fflush(stdout);
    }

    bench::WorkloadSpec m_spec;
    QString m_path;
    bool m_reuse;
    int m_repeat;
    app::AppContext m_app;
};

bool GridBench::Prepare() {
    if (m_reuse && QFileInfo::exists(m_path))
        return true;
    return questionnaire::WriteXmlFile(m_path, bench::MakeQuestionnaire(m_spec)) ||
           Fail("the workload could not be written");
}

bool GridBench::Once(Figures& run) {
    {
        ResetPeak();
        const qint64 before = StatusKb("VmRSS:");
        const qint64 heap = HeapKb();
        auto q = std::make_unique<CQuestionnaire>();
        QElapsedTimer timer;
        timer.start();
        const util::Outcome loaded = app::LoadQuestionnaire(m_app, m_path, *q);
        run.loadSeconds = timer.nsecsElapsed() / 1e9;
        run.loadRssKb = StatusKb("VmRSS:") - before;
        run.loadPeakKb = StatusKb("VmHWM:") - before;
        run.loadHeapKb = HeapKb() - heap;
        if (!loaded)
            return Fail(qPrintable(loaded.Reason()));
    }

    // The window is up and painted before the file opens: its own cost is not the grid's.
    ui::MainWindow window(m_app);
    window.resize(1280, 900);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        return Fail("the window was never shown");
    QApplication::setActiveWindow(&window);
    (void)QTest::qWaitForWindowActive(&window);
    QApplication::processEvents();

    ResetPeak();
    const qint64 before = StatusKb("VmRSS:");
    const qint64 heap = HeapKb();
    QElapsedTimer timer;
    timer.start();
    if (!window.OpenFile(m_path))
        return Fail("MainWindow::OpenFile failed");
    run.openSeconds = timer.nsecsElapsed() / 1e9;
    timer.start();
    ui::TranslatorView* view = window.ActiveView();
    if (!view)
        return Fail("no active view after OpenFile");
    ui::CaptionGrid& grid = view->Grid();
    PaintCounter painted(grid.viewport());
    run.paintedByEventLoop = Settle(grid.viewport(), painted);
    run.paintSeconds = timer.nsecsElapsed() / 1e9;
    run.windowRssKb = StatusKb("VmRSS:") - before;
    run.windowPeakKb = StatusKb("VmHWM:") - before;
    run.windowHeapKb = HeapKb() - heap;
    if (painted.paints == 0)
        return Fail("the grid never painted");

    ui::CaptionModel& model = view->Model();
    run.rows = model.rowCount();
    run.columns = model.columnCount();
    if (run.rows < 2 || run.columns < 1)
        return Fail("the grid has too few rows to move in");
    grid.setFocus();
    grid.setCurrentIndex(model.index(0, 0));
    Settle(grid.viewport(), painted);

    timer.start();
    QTest::keyClick(&grid, Qt::Key_PageDown);
    Settle(grid.viewport(), painted);
    run.scrollMs = Ms(timer);
    run.pagedRows = grid.currentIndex().row();
    if (run.pagedRows <= 0 || grid.verticalScrollBar()->value() <= 0)
        return Fail("PageDown moved nothing");

    timer.start();
    QTest::keyClick(&grid, Qt::Key_End, Qt::ControlModifier);
    Settle(grid.viewport(), painted);
    run.jumpMs = Ms(timer);
    const QModelIndex last = grid.currentIndex();
    if (last.row() != run.rows - 1)
        return Fail("Ctrl+End did not reach the last row");

    const char typed = last.data(Qt::EditRole).toString() == QLatin1String("x") ? 'y' : 'x';
    const int paintsBefore = painted.paints;
    timer.start();
    QTest::keyClick(&grid, typed);
    QApplication::processEvents(); // the user sees the editor open before pressing Return
    QPointer<QLineEdit> editor = grid.viewport()->findChild<QLineEdit*>();
    if (!editor || !editor->isVisible())
        return Fail("a typed key opened no editor");
    QTest::keyClick(editor, Qt::Key_Return);
    Settle(grid.viewport(), painted);
    run.editMs = Ms(timer);
    if (model.index(last.row(), last.column()).data(Qt::EditRole).toString() !=
        QString(QLatin1Char(typed)))
        return Fail("the edited caption did not change");
    if (painted.paints == paintsBefore)
        return Fail("the edited cell was not painted");
    if (editor && editor->isVisible())
        return Fail("Return left the editor open");

    // The edit is measured, not kept: closing asks nothing.
    view->Document().SetModified(false);
    return true;
}

bool GridBench::Run() {
    if (!Prepare())
        return false;
    std::vector<Figures> runs(m_repeat);
    for (Figures& run : runs)
        if (!Once(run))
            return false;
    auto median = [&](auto field) {
        std::vector<double> values;
        for (const Figures& run : runs)
            values.push_back(double(field(run)));
        return Median(values);
    };
    const double load = median([](const Figures& r) { return r.loadSeconds; });
    const double open = median([](const Figures& r) { return r.openSeconds; });
    const double paint = median([](const Figures& r) { return r.paintSeconds; });
    const qint64 rows = runs.front().rows;
    const qint64 cells = rows * runs.front().columns;
    const double mb = QFileInfo(m_path).size() / 1e6;
    const QJsonObject reference{{QStringLiteral("reference"),
                                 QStringLiteral("app::LoadQuestionnaire of the .xml, no window")},
                                {QStringLiteral("reference_seconds"), load},
                                {QStringLiteral("rows"), rows},
                                {QStringLiteral("cells"), cells},
                                {QStringLiteral("mb"), mb}};

    QJsonObject o = reference;
    o.insert(QStringLiteral("seconds"), open);
    o.insert(QStringLiteral("ratio_to_reference"), load > 0 ? open / load : 0.0);
    Print("grid_open", o);

    o = reference;
    o.insert(QStringLiteral("seconds"), paint);
    o.insert(QStringLiteral("first_paint_to_load"), load > 0 ? paint / load : 0.0);
    o.insert(QStringLiteral("target_first_paint_to_load"), kPaintShareTarget);
    o.insert(QStringLiteral("meets_target"), load > 0 && paint / load <= kPaintShareTarget);
    o.insert(QStringLiteral("painted_by_event_loop"), runs.front().paintedByEventLoop);
    Print("grid_first_paint", o);

    auto interaction = [&](const char* measure, double ms, QJsonObject extra) {
        extra.insert(QStringLiteral("milliseconds"), ms);
        extra.insert(QStringLiteral("target_milliseconds"), kInteractionTargetMs);
        extra.insert(QStringLiteral("meets_target"), ms < kInteractionTargetMs);
        extra.insert(QStringLiteral("rows"), rows);
        extra.insert(QStringLiteral("cells"), cells);
        Print(measure, extra);
    };
    interaction("grid_jump_to_last_row", median([](const Figures& r) { return r.jumpMs; }),
                {{QStringLiteral("keys"), QStringLiteral("Ctrl+End, then the paint")}});
    interaction(
        "grid_edit_cell", median([](const Figures& r) { return r.editMs; }),
        {{QStringLiteral("keys"),
          QStringLiteral("a letter on the last row, the editor shown, Return, then the paint")},
         {QStringLiteral("caption_changed"), true}});
    interaction(
        "grid_scroll_page", median([](const Figures& r) { return r.scrollMs; }),
        {{QStringLiteral("keys"), QStringLiteral("PageDown from the first row, then the paint")},
         {QStringLiteral("rows_moved"), runs.front().pagedRows}});

    // Resident memory comes from the first opening, as a user's fresh program has it: later
    // openings reuse pages the allocator kept from earlier ones, and seem to cost nothing.
    const Figures& first = runs.front();
    const double heapKb = median([](const Figures& r) { return r.windowHeapKb - r.loadHeapKb; });
    Print("grid_model_bytes_per_row",
          {{QStringLiteral("bytes_per_row"), (first.windowRssKb - first.loadRssKb) * 1024.0 / rows},
           {QStringLiteral("peak_bytes_per_row"),
            (first.windowPeakKb - first.loadPeakKb) * 1024.0 / rows},
           {QStringLiteral("heap_bytes_per_row"), heapKb * 1024 / rows},
           {QStringLiteral("rows"), rows},
           {QStringLiteral("cells"), cells},
           {QStringLiteral("window_rss_mb"), first.windowRssKb / 1024.0},
           {QStringLiteral("window_peak_mb"), first.windowPeakKb / 1024.0},
           {QStringLiteral("load_rss_mb"), first.loadRssKb / 1024.0},
           {QStringLiteral("load_peak_mb"), first.loadPeakKb / 1024.0},
           {QStringLiteral("rss_from"), QStringLiteral("the first opening")},
           {QStringLiteral("heap_from"), QStringLiteral("mallinfo2 in-use bytes, median")},
           {QStringLiteral("reference"),
            QStringLiteral("app::LoadQuestionnaire of the .xml, no window")}});
    return true;
}

const char kMeasures[] = "grid_open grid_first_paint grid_jump_to_last_row grid_edit_cell "
                         "grid_scroll_page grid_model_bytes_per_row";

constexpr char kUsage[] =
    "usage: grid_bench [--workload small|large|stress] [--dir DIR] [--reuse] [--repeat N]\n";

} // namespace

int main(int argc, char** argv) {
    // The profile and data folders of the run are its own: opening a file must not add it to
    // the user's recent files.
    QTemporaryDir home;
    const QByteArray base = home.path().toLocal8Bit();
    qputenv("XDG_CONFIG_HOME", base + "/config");
    qputenv("XDG_DATA_HOME", base + "/data");
    qputenv("XDG_CACHE_HOME", base + "/cache");
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Halvard Quist"));
    QApplication::setApplicationName(QStringLiteral("Translator"));

    const QStringList args = QApplication::arguments().mid(1);
    QString name = QStringLiteral("large");
    QString dir;
    bool reuse = false;
    int repeat = 1;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& option = args[i];
        const bool hasValue = i + 1 < args.size();
        if (option == QLatin1String("--help")) {
            std::printf("%smeasures: %s\n", kUsage, kMeasures);
            return 0;
        }
        if (option == QLatin1String("--reuse")) {
            reuse = true;
        } else if (option == QLatin1String("--workload") && hasValue) {
            name = args[++i];
        } else if (option == QLatin1String("--dir") && hasValue) {
            dir = args[++i];
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
    if (!dir.isEmpty() && !QDir().mkpath(dir)) {
        std::fprintf(stderr, "cannot make %s\n", qPrintable(dir));
        return 1;
    }
    return GridBench(spec, dir.isEmpty() ? temporary.path() : dir, reuse, repeat).Run() ? 0 : 1;
}
