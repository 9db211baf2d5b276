#pragma once

// What the parts of grid_bench share: a questionnaire's caption grid and the dictionary window's
// grid are timed with the same keys, paints and reports.

#include "Workload.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QJsonObject>
#include <QModelIndex>
#include <QObject>
#include <QWidget>

#include <algorithm>
#include <functional>
#include <vector>

namespace ui {
class CaptionGrid;
class MainWindow;
} // namespace ui

namespace bench {

constexpr double kPaintShareTarget = 0.10; // a first paint adds at most this to the load
constexpr double kInteractionTargetMs = 50;

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
// as it does before the user sees the result; paints the grid itself when that did not. True
// when the event loop painted.
bool Settle(QWidget* viewport, const PaintCounter& counter);

// Shows the window at a fixed size and waits until it is exposed and active, so its own first
// paint is not counted against what a measure opens in it.
bool ShowWindow(ui::MainWindow& window);

// Says on stderr what went wrong; always false.
bool Fail(const char* what);

inline double Ms(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e6;
}

// The keys a user presses in a grid, each timed up to the paint that shows its result.
struct KeyTimes {
    double scrollMs = 0; // PageDown from the first row
    double jumpMs = 0;   // Ctrl+End
    double editMs = 0;   // a letter on the last row, Return
    int pagedRows = 0;
    QModelIndex edited;
    QString typed; // what the edited cell holds now
};

// Presses the keys in `grid` and checks each did what it should: PageDown moved, Ctrl+End reached
// the last row, the edited cell shows the letter, was painted and its editor closed.
bool TimeKeys(ui::CaptionGrid& grid, KeyTimes& times);

// The median of one figure over the runs: a member, or a function of a run.
template <class Run, class Field> double MedianOf(const std::vector<Run>& runs, Field field) {
    std::vector<double> values;
    for (const Run& run : runs)
        values.push_back(double(std::invoke(field, run)));
    return Median(values);
}

// Fills `runs` with `repeat` results of `once`; false at the first that fails.
template <class Figures, class Once>
bool RunRepeatedly(int repeat, std::vector<Figures>& runs, Once once) {
    runs.assign(size_t(repeat), Figures());
    return std::all_of(runs.begin(), runs.end(), once);
}

// The key times of each run.
template <class Run> std::vector<KeyTimes> KeysOf(const std::vector<Run>& runs) {
    std::vector<KeyTimes> keys;
    for (const Run& run : runs)
        keys.push_back(run.keys);
    return keys;
}

// `o` with the fields of `more` added, as every line of a measure family carries its size.
inline QJsonObject With(QJsonObject o, const QJsonObject& more) {
    for (auto it = more.begin(); it != more.end(); ++it)
        o.insert(it.key(), it.value());
    return o;
}

// One JSON line per measure, each naming the workload and the number of runs.
class Report {
public:
    Report(const QString& workload, int repeat) : m_workload(workload), m_repeat(repeat) {}
    void Print(const char* measure, QJsonObject o) const;
    // FAMILY_jump_to_last_row, FAMILY_scroll_page and FAMILY_edit_cell: the medians of the runs
    // beside the interaction target, each line with `size`, the edit's with `edit` too.
    void Keys(const char* family, const std::vector<KeyTimes>& runs, const QJsonObject& size,
              const QJsonObject& edit) const;

private:
    void Interaction(const QByteArray& measure, double ms, QJsonObject o) const;

    QString m_workload;
    int m_repeat;
};

// The dictionary window on a translation memory of the workload's size, saved in `dir` (kept
// from an earlier run with --reuse).
bool MeasureDictionaryWindow(const Options& options, const QString& dir, const Report& report);

} // namespace bench
