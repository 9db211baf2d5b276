#pragma once

#include "util/Progress.h"

#include <QElapsedTimer>
#include <QPointer>

#include <chrono>
#include <memory>

class QProgressDialog;
class QWidget;

namespace ui {

// Long work of the core shown in a progress dialog over a window. The dialog appears only when
// the work lasts long enough to be worth watching, blocks every window while it runs, and keeps
// the program repainting between steps. No window closes under the work: a close asked for
// meanwhile happens after it, and input given before the dialog shows waits for the end.
class ProgressDialog : public util::Progress {
public:
    enum class Cancel { Offered, NotOffered };

    // Work that cannot stop halfway without loss is run with Cancel::NotOffered: the dialog then
    // has no Cancel button and cannot be closed.
    explicit ProgressDialog(QWidget* parent, Cancel cancel = Cancel::Offered,
                            std::chrono::milliseconds showAfter = std::chrono::milliseconds(500));
    ~ProgressDialog() override;
    ProgressDialog(const ProgressDialog&) = delete;
    ProgressDialog& operator=(const ProgressDialog&) = delete;

    void SetCancel(Cancel cancel) { m_cancel = cancel; }

    void Begin(const QString& what, qint64 total) override;
    bool Advance(qint64 done) override;
    void End() override;

    // The dialog of the work under way, null between pieces of work.
    QProgressDialog* Dialog() const;

private:
    class CloseGuard;
    QPointer<QWidget> m_parent;
    Cancel m_cancel;
    std::chrono::milliseconds m_showAfter;
    QPointer<QProgressDialog> m_dialog; // also gone when the parent window was closed
    qint64 m_divisor = 1;               // totals beyond an int are shown in coarser units
    int m_shown = -1;
    QElapsedTimer m_clock;                    // since the work began
    std::unique_ptr<CloseGuard> m_closeGuard; // from Begin to End
};

} // namespace ui
