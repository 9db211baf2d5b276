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
//   dictionary_*              the dictionary window alike, on a translation memory of 2,000
//                             entries (small) or 1,000,000 (large, stress); see
//                             grid_bench_dictionary.cpp
//   grid_bench [--workload small|large|stress] [--dir DIR] [--reuse] [--repeat N]
// --reuse keeps the .xml a previous run (of this program or translator_bench) left in DIR, and the
// dictionary file a previous run of this program left there; --repeat opens each N times, each
// in a new window, and reports the medians.
#include "GridBench.h"

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
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <memory>
#include <vector>

namespace bench {

bool Settle(QWidget* viewport, const PaintCounter& counter) {
    const int before = counter.paints;
    QApplication::processEvents();
    if (counter.paints == before)
        viewport->repaint();
    return counter.paints > before;
}

bool ShowWindow(ui::MainWindow& window) {
    window.resize(1280, 900);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        return Fail("the window was never shown");
    QApplication::setActiveWindow(&window);
    (void)QTest::qWaitForWindowActive(&window);
    QApplication::processEvents();
    return true;
}

bool Fail(const char* what) {
    std::fprintf(stderr, "grid_bench: %s\n", what);
    return false;
}

bool TimeKeys(ui::CaptionGrid& grid, KeyTimes& times) {
    const QAbstractItemModel& model = *grid.model();
    const int rows = model.rowCount();
    if (rows < 2 || model.columnCount() < 1)
        return Fail("the grid has too few rows to move in");
    PaintCounter painted(grid.viewport());
    grid.setFocus();
    grid.setCurrentIndex(model.index(0, 0));
    Settle(grid.viewport(), painted);

    QElapsedTimer timer;
    timer.start();
    QTest::keyClick(&grid, Qt::Key_PageDown);
    Settle(grid.viewport(), painted);
    times.scrollMs = Ms(timer);
    times.pagedRows = grid.currentIndex().row();
    if (times.pagedRows <= 0 || grid.verticalScrollBar()->value() <= 0)
        return Fail("PageDown moved nothing");

    timer.start();
    QTest::keyClick(&grid, Qt::Key_End, Qt::ControlModifier);
    Settle(grid.viewport(), painted);
    times.jumpMs = Ms(timer);
    const QModelIndex last = grid.currentIndex();
    if (last.row() != rows - 1)
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
    times.editMs = Ms(timer);
    times.edited = model.index(last.row(), last.column());
    times.typed = QString(QLatin1Char(typed));
    if (times.edited.data(Qt::EditRole).toString() != times.typed)
        return Fail("the edited cell did not change");
    if (painted.paints == paintsBefore)
        return Fail("the edited cell was not painted");
    if (editor && editor->isVisible())
        return Fail("Return left the editor open");
    return true;
}

void Report::Print(const char* measure, QJsonObject o) const {
    o.insert(QStringLiteral("workload"), m_workload);
    o.insert(QStringLiteral("measure"), QString::fromLatin1(measure));
    o.insert(QStringLiteral("repeat"), m_repeat);
    std::printf("%s\n", QJsonDocument(o).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

void Report::Interaction(const QByteArray& measure, double ms, QJsonObject o) const {
    o.insert(QStringLiteral("milliseconds"), ms);
    o.insert(QStringLiteral("target_milliseconds"), kInteractionTargetMs);
    o.insert(QStringLiteral("meets_target"), ms < kInteractionTargetMs);
    Print(measure.constData(), o);
}

void Report::Keys(const char* family, const std::vector<KeyTimes>& runs, const QJsonObject& size,
                  const QJsonObject& edit) const {
    const QByteArray name(family);
    Interaction(name + "_jump_to_last_row", MedianOf(runs, &KeyTimes::jumpMs),
                With({{QStringLiteral("keys"), QStringLiteral("Ctrl+End, then the paint")}}, size));
    Interaction(name + "_scroll_page", MedianOf(runs, &KeyTimes::scrollMs),
                With({{QStringLiteral("keys"),
                       QStringLiteral("PageDown from the first row, then the paint")},
                      {QStringLiteral("rows_moved"), runs.front().pagedRows}},
                     size));
    Interaction(name + "_edit_cell", MedianOf(runs, &KeyTimes::editMs),
                With(With({{QStringLiteral("keys"),
                            QStringLiteral("a letter on the last row, the editor shown, Return, "
                                           "then the paint")}},
                          size),
                     edit));
}

} // namespace bench

namespace {

using namespace bench;

// The figures of one opening of the file in a new window.
struct Figures {
    double loadSeconds = 0, openSeconds = 0, paintSeconds = 0;
    KeyTimes keys;
    qint64 loadRssKb = 0, loadPeakKb = 0, loadHeapKb = 0;
    qint64 windowRssKb = 0, windowPeakKb = 0, windowHeapKb = 0;
    qsizetype rows = 0;
    int columns = 0;
    bool paintedByEventLoop = false; // else the first paint had to be forced
};

class GridBench {
public:
    GridBench(const Options& options, const QString& dir)
        : m_options(options),
          m_path(dir + QLatin1Char('/') + options.spec.name + QStringLiteral(".xml")),
          m_report(options.spec.name, options.repeat) {
        m_app.dictionaryPath = dir + QStringLiteral("/grid_bench.dic");
    }
    bool Run();

private:
    bool Prepare();
    bool Once(Figures& run);

    Options m_options;
    QString m_path;
    Report m_report;
    app::AppContext m_app;
};

bool GridBench::Prepare() {
    if (m_options.reuse && QFileInfo::exists(m_path))
        return true;
    return questionnaire::WriteXmlFile(m_path, MakeQuestionnaire(m_options.spec)) ||
           Fail("the workload could not be written");
}

bool GridBench::Once(Figures& run) {
    {
        ResetPeak(true);
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
    if (!ShowWindow(window))
        return false;

    ResetPeak(true);
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
    {
        PaintCounter painted(grid.viewport());
        run.paintedByEventLoop = Settle(grid.viewport(), painted);
        if (painted.paints == 0)
            return Fail("the grid never painted");
    }
    run.paintSeconds = timer.nsecsElapsed() / 1e9;
    run.windowRssKb = StatusKb("VmRSS:") - before;
    run.windowPeakKb = StatusKb("VmHWM:") - before;
    run.windowHeapKb = HeapKb() - heap;

    ui::CaptionModel& model = view->Model();
    run.rows = model.rowCount();
    run.columns = model.columnCount();
    if (!TimeKeys(grid, run.keys))
        return false;
    // The edit is measured, not kept: closing asks nothing.
    view->Document().SetModified(false);
    return true;
}

bool GridBench::Run() {
    std::vector<Figures> runs;
    if (!Prepare() ||
        !RunRepeatedly(m_options.repeat, runs, [this](Figures& run) { return Once(run); }))
        return false;
    const double load = MedianOf(runs, &Figures::loadSeconds);
    const double open = MedianOf(runs, &Figures::openSeconds);
    const double paint = MedianOf(runs, &Figures::paintSeconds);
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
    m_report.Print("grid_open", o);

    o = reference;
    o.insert(QStringLiteral("seconds"), paint);
    o.insert(QStringLiteral("first_paint_to_load"), load > 0 ? paint / load : 0.0);
    o.insert(QStringLiteral("target_first_paint_to_load"), kPaintShareTarget);
    o.insert(QStringLiteral("meets_target"), load > 0 && paint / load <= kPaintShareTarget);
    o.insert(QStringLiteral("painted_by_event_loop"), runs.front().paintedByEventLoop);
    m_report.Print("grid_first_paint", o);

    const QJsonObject size{{QStringLiteral("rows"), rows}, {QStringLiteral("cells"), cells}};
    m_report.Keys("grid", KeysOf(runs), size, {{QStringLiteral("caption_changed"), true}});

    // Resident memory comes from the first opening, as a user's fresh program has it: later
    // openings reuse pages the allocator kept from earlier ones, and seem to cost nothing.
    const Figures& first = runs.front();
    const double heapKb =
        MedianOf(runs, [](const Figures& r) { return r.windowHeapKb - r.loadHeapKb; });
    m_report.Print(
        "grid_model_bytes_per_row",
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
                         "grid_scroll_page grid_model_bytes_per_row dictionary_window_open "
                         "dictionary_jump_to_last_row dictionary_edit_cell dictionary_scroll_page "
                         "dictionary_model_bytes_per_row";

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

    Options options;
    const int exitCode = ParseOptions(QApplication::arguments().mid(1), kUsage, kMeasures, options);
    if (exitCode >= 0)
        return exitCode;
    QTemporaryDir temporary;
    if (!options.dir.isEmpty() && !QDir().mkpath(options.dir)) {
        std::fprintf(stderr, "cannot make %s\n", qPrintable(options.dir));
        return 1;
    }
    const QString dir = options.dir.isEmpty() ? temporary.path() : options.dir;
    if (!GridBench(options, dir).Run())
        return 1;
    return MeasureDictionaryWindow(options, dir, Report(options.spec.name, options.repeat)) ? 0 : 1;
}
