#include "ui/support/ProgressDialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDialog>
#include <QMdiSubWindow>
#include <QPointer>
#include <QProgressDialog>

#include <algorithm>
#include <limits>

namespace ui {

namespace {

// A progress dialog that, when the work may not be stopped, ignores Escape and the window's
// close button instead of hiding itself while the work goes on.
class WorkDialog : public QProgressDialog {
public:
    WorkDialog(QWidget* parent, bool cancellable)
        : QProgressDialog(parent), m_cancellable(cancellable) {}

    // Shows the dialog now, as its own timer would.
    void ShowNow() { forceShow(); }

    void reject() override {
        if (m_cancellable)
            cancel();
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        if (m_cancellable)
            QProgressDialog::closeEvent(event);
        else
            event->ignore();
    }

private:
    bool m_cancellable;
};

} // namespace

// While work runs, no window but a dialog closes: closing the main window, a view or the
// dictionary window would free what the work is using. The closes asked for meanwhile are
// carried out once the work has ended.
class ProgressDialog::CloseGuard : public QObject {
public:
    ~CloseGuard() override {
        for (const QPointer<QWidget>& widget : m_asked)
            if (widget)
                QMetaObject::invokeMethod(widget, &QWidget::close, Qt::QueuedConnection);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Close || !watched->isWidgetType())
            return false;
        auto* widget = static_cast<QWidget*>(watched);
        // Main windows and the windows inside them; not the message boxes the work asks, nor
        // the progress itself, nor menus and tips.
        const bool window = widget->isWindow() && widget->windowType() == Qt::Window &&
                            !qobject_cast<QDialog*>(widget);
        if (!window && !qobject_cast<QMdiSubWindow*>(widget))
            return false;
        event->ignore();
        if (!m_asked.contains(widget))
            m_asked.append(widget);
        return true;
    }

private:
    QList<QPointer<QWidget>> m_asked;
};

ProgressDialog::ProgressDialog(QWidget* parent, Cancel cancel, std::chrono::milliseconds showAfter)
    : m_parent(parent), m_cancel(cancel), m_showAfter(showAfter) {}

ProgressDialog::~ProgressDialog() {
    delete m_dialog;
}

QProgressDialog* ProgressDialog::Dialog() const {
    return m_dialog;
}

void ProgressDialog::Begin(const QString& what, qint64 total) {
    const bool cancellable = m_cancel == Cancel::Offered;
    delete m_dialog;
    // Over a dialog the work was started from, when there is one: over the window behind it,
    // the progress would block that dialog.
    QWidget* modal = QApplication::activeModalWidget();
    m_dialog = new WorkDialog(modal ? modal : m_parent.data(), cancellable);
    // Every window waits for the work, the dictionary window as much as the main one.
    m_dialog->setWindowModality(Qt::ApplicationModal);
    if (!m_closeGuard) {
        m_closeGuard = std::make_unique<CloseGuard>();
        qApp->installEventFilter(m_closeGuard.get());
    }
    m_dialog->setWindowTitle(QCoreApplication::applicationName());
    m_dialog->setLabelText(what);
    if (!cancellable)
        m_dialog->setCancelButton(nullptr);
    // The dialog stays up until End, whatever the values the work reports.
    m_dialog->setAutoReset(false);
    m_dialog->setAutoClose(false);

    constexpr qint64 kIntMax = std::numeric_limits<int>::max();
    total = std::max<qint64>(total, 0);
    m_divisor = std::max<qint64>(1, (total + kIntMax - 1) / kIntMax);
    // A range of 0 to 0 makes the bar a busy indicator for work of unknown length.
    m_dialog->setRange(0, int(total / m_divisor));
    // The dialog is shown from Advance, never by a timer of its own: a timer would also fire
    // while the work waits on a message box, and the dialog, modal over the same window, would
    // then cover the box and take its input away.
    m_dialog->setMinimumDuration(std::numeric_limits<int>::max());
    m_dialog->setValue(0);
    m_shown = 0;
    m_clock.start();
}

bool ProgressDialog::Advance(qint64 done) {
    if (!m_dialog)
        return true;
    if (m_dialog->maximum() > 0) {
        const int value = int(std::clamp<qint64>(done / m_divisor, 0, m_dialog->maximum()));
        // Setting the minimum again would restart the clock before the dialog shows.
        if (value != m_shown && value > 0) {
            m_shown = value;
            m_dialog->setValue(value);
        }
    }
    if (!m_dialog->isVisible() && m_clock.elapsed() >= m_showAfter.count())
        static_cast<WorkDialog*>(m_dialog.data())->ShowNow();
    // Repaints and, once the dialog shows, lets Cancel be pressed while its modality keeps the
    // windows out of reach. Before that nothing is modal: what the user types or clicks then
    // waits until the work has ended, rather than start other work in the middle of it.
    QCoreApplication::processEvents(m_dialog->isVisible() ? QEventLoop::AllEvents
                                                          : QEventLoop::ExcludeUserInputEvents);
    return !m_dialog->wasCanceled();
}

void ProgressDialog::End() {
    m_closeGuard.reset();
    if (!m_dialog)
        return;
    m_dialog->hide();
    delete m_dialog;
}

} // namespace ui
