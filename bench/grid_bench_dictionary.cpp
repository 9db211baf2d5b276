// The dictionary window's part of grid_bench, on a translation memory of the workload's size:
//   dictionary_window_open          MainWindow::ToggleDictionary until its grid has painted once,
//                                   beside CDictionary::Load of the same file, no window; and
//                                   the window alone: opened again on the loaded dictionary
//   dictionary_jump_to_last_row     Ctrl+End and the paint that shows the last entry
//   dictionary_scroll_page          PageDown from the first entry and the paint after it
//   dictionary_edit_cell            a letter typed on the last entry, Return, the repaint; the
//                                   entry is then saved by the window's own question at exit and
//                                   read back to see it changed
//   dictionary_model_bytes_per_row  the allocator's bytes the window adds per entry
#include "GridBench.h"

#include "app/AppContext.h"
#include "dictionary/Dictionary.h"
#include "ui/CaptionGrid.h"
#include "ui/DictionaryView.h"
#include "ui/MainWindow.h"
#include "util/Messages.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QTimer>

namespace bench {

namespace {

// The figures of one opening of the dictionary in a new window.
struct DictionaryFigures {
    double loadSeconds = 0;   // CDictionary::Load alone
    double openSeconds = 0;   // ToggleDictionary until the first paint: load, view and paint
    double reopenSeconds = 0; // the same on the dictionary the window has loaded: the window alone
    qint64 loadHeapKb = 0, openHeapKb = 0, reopenHeapKb = 0;
    KeyTimes keys;
    int rows = 0, columns = 0;
    bool paintedByEventLoop = false; // else the first paint had to be forced
};

// Answers Yes to the question the window asks at exit, so the dictionary is saved.
class SaveAtExit : public QObject {
public:
    SaveAtExit() {
        m_timer.setInterval(20);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (QAbstractButton* yes = box ? box->button(QMessageBox::Yes) : nullptr) {
                ++asked;
                yes->click();
            }
        });
        m_timer.start();
    }
    int asked = 0;

private:
    QTimer m_timer;
};

class DictionaryWindowBench {
public:
    DictionaryWindowBench(const Options& options, const QString& dir, const Report& report)
        : m_options(options), m_entries(options.spec.dictionaryEntries),
          m_path(dir + QStringLiteral("/dictionary-%1.dic").arg(m_entries)),
          m_editedPath(dir + QStringLiteral("/dictionary-%1-edited.dic").arg(m_entries)),
          m_report(report) {}
    bool Run();

private:
    bool Prepare();
    bool Once(DictionaryFigures& run);
    // ToggleDictionary until the grid has painted: its time and the allocator's bytes it added.
    bool Open(ui::MainWindow& window, double& seconds, qint64& heapKb, bool* byEventLoop);
    // Closes the window, saving the dictionary elsewhere, and reads the edited entry back.
    bool CheckEditSaved(ui::MainWindow& window, const KeyTimes& keys);

    Options m_options;
    int m_entries;
    QString m_path;
    QString m_editedPath; // the save at exit goes here: the measured file stays as generated
    Report m_report;
    app::AppContext m_app;
};

bool DictionaryWindowBench::Prepare() {
    m_app.dictionaryPath = m_path;
    util::NoMessages silent;
    if (!(m_options.reuse && QFileInfo::exists(m_path)) &&
        !MakeDictionary(m_entries).Save(m_path, silent))
        return Fail("the dictionary could not be written");
    // Read once, the file is in the page cache for both loads: neither pays for the disk.
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return Fail("the dictionary file cannot be read");
    while (!file.read(1 << 20).isEmpty()) {
    }
    return true;
}

bool DictionaryWindowBench::Open(ui::MainWindow& window, double& seconds, qint64& heapKb,
                                 bool* byEventLoop) {
    // Memory the allocator kept from earlier work goes back, so the window's load, like the one
    // without a window, takes its memory fresh from the system.
    ResetPeak(true);
    const qint64 heap = HeapKb();
    QElapsedTimer timer;
    timer.start();
    window.ToggleDictionary();
    ui::DictionaryView* view = window.Dictionary();
    if (!view)
        return Fail("ToggleDictionary opened no dictionary window");
    PaintCounter painted(view->Grid().viewport());
    const bool settled = Settle(view->Grid().viewport(), painted);
    seconds = timer.nsecsElapsed() / 1e9;
    heapKb = HeapKb() - heap;
    if (byEventLoop)
        *byEventLoop = settled;
    return painted.paints > 0 || Fail("the dictionary grid never painted");
}

bool DictionaryWindowBench::CheckEditSaved(ui::MainWindow& window, const KeyTimes& keys) {
    const ui::DictionaryModel& model = window.Dictionary()->Model();
    const qint32 number = model.EntryNumber(keys.edited.row());
    const QString language = model.headerData(keys.edited.column(), Qt::Horizontal).toString();
    m_app.dictionaryPath = m_editedPath;
    {
        SaveAtExit yes;
        window.close();
        if (yes.asked == 0)
            return Fail("the window did not offer to save the edited dictionary");
    }
    m_app.dictionaryPath = m_path;
    CDictionary saved;
    util::NoMessages silent;
    const bool loaded = saved.Load(m_editedPath, silent);
    QFile::remove(m_editedPath);
    if (!loaded || number >= saved.GetEntryCount())
        return Fail("the dictionary saved at exit could not be read back");
    const CDicLanguage& column = saved.GetLanguage(keys.edited.column());
    if (column.m_abbreviation != language)
        return Fail("the saved dictionary has its languages in another order");
    const CDicEntry::Texts& texts = saved.GetEntry(number).m_texts;
    const auto text = texts.find(qint32(column.m_id));
    if (text == texts.end() || text->second != keys.typed)
        return Fail("the edited entry did not change in the dictionary");
    return true;
}

bool DictionaryWindowBench::Once(DictionaryFigures& run) {
    {
        CDictionary dictionary;
        util::NoMessages silent;
        ResetPeak(true);
        const qint64 heap = HeapKb();
        run.loadSeconds = Seconds([&] { (void)dictionary.Load(m_path, silent); });
        run.loadHeapKb = HeapKb() - heap;
        if (dictionary.GetEntryCount() != m_entries)
            return Fail("the dictionary file does not hold the entries it was made with");
    }

    ui::MainWindow window(m_app);
    if (!ShowWindow(window))
        return false;
    if (!Open(window, run.openSeconds, run.openHeapKb, &run.paintedByEventLoop))
        return false;
    // Closed and opened again, the window finds the dictionary loaded: what it adds is its own.
    window.ToggleDictionary();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
    if (window.Dictionary())
        return Fail("ToggleDictionary did not close the dictionary window");
    if (!Open(window, run.reopenSeconds, run.reopenHeapKb, nullptr))
        return false;

    ui::DictionaryView& view = *window.Dictionary();
    run.rows = view.Model().rowCount();
    run.columns = view.Model().columnCount();
    if (run.rows != m_entries)
        return Fail("the dictionary window does not show every entry");
    return TimeKeys(view.Grid(), run.keys) && CheckEditSaved(window, run.keys);
}

bool DictionaryWindowBench::Run() {
    using Run = DictionaryFigures;
    std::vector<Run> runs;
    if (!Prepare() ||
        !RunRepeatedly(m_options.repeat, runs, [this](Run& run) { return Once(run); }))
        return false;
    const qint64 rows = runs.front().rows;
    const QJsonObject size{{QStringLiteral("entries"), rows},
                           {QStringLiteral("languages"), runs.front().columns}};
    const double load = MedianOf(runs, &Run::loadSeconds);
    const double open = MedianOf(runs, &Run::openSeconds);
    const double window = MedianOf(runs, &Run::reopenSeconds);

    m_report.Print(
        "dictionary_window_open",
        With({{QStringLiteral("seconds"), open},
              {QStringLiteral("reference"), QStringLiteral("CDictionary::Load of the .dic")},
              {QStringLiteral("reference_seconds"), load},
              {QStringLiteral("ratio_to_reference"), load > 0 ? open / load : 0.0},
              {QStringLiteral("mb"), QFileInfo(m_path).size() / 1e6},
              {QStringLiteral("open_minus_load_seconds"), open - load},
              {QStringLiteral("window_seconds"), window},
              {QStringLiteral("window_from"),
               QStringLiteral("ToggleDictionary again on the loaded dictionary, until the paint")},
              {QStringLiteral("window_to_load"), load > 0 ? window / load : 0.0},
              {QStringLiteral("target_window_to_load"), kPaintShareTarget},
              {QStringLiteral("meets_target"), load > 0 && window / load <= kPaintShareTarget},
              {QStringLiteral("painted_by_event_loop"), runs.front().paintedByEventLoop}},
             size));

    m_report.Keys(
        "dictionary", KeysOf(runs), size,
        {{QStringLiteral("entry_changed"), true},
         {QStringLiteral("entry_checked"),
          QStringLiteral("CDictionary::GetEntry of the dictionary the window saved at exit")}});

    const double heapKb = MedianOf(runs, [](const Run& r) { return r.openHeapKb - r.loadHeapKb; });
    const double windowKb = MedianOf(runs, &Run::reopenHeapKb);
    m_report.Print(
        "dictionary_model_bytes_per_row",
        With({{QStringLiteral("heap_bytes_per_row"), heapKb * 1024 / rows},
              {QStringLiteral("heap_from"),
               QStringLiteral("mallinfo2 in-use bytes of the first opening less those of "
                              "CDictionary::Load, median")},
              {QStringLiteral("reopen_heap_bytes_per_row"), windowKb * 1024 / rows},
              {QStringLiteral("dictionary_heap_mb"), MedianOf(runs, &Run::loadHeapKb) / 1024},
              {QStringLiteral("reference"), QStringLiteral("CDictionary::Load of the .dic")}},
             size));
    return true;
}

} // namespace

bool MeasureDictionaryWindow(const Options& options, const QString& dir, const Report& report) {
    return DictionaryWindowBench(options, dir, report).Run();
}

} // namespace bench
