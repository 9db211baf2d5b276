#include "ui/UiTestMain.h"

#include "dictionary/Dictionary.h"
#include "ui/support/ConflictDialog.h"
#include "ui/support/ProgressDialog.h"
#include "ui/support/WidgetMessages.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QTableView>
#include <QThread>
#include <QTimer>

#include <functional>

namespace {

// Acts on the modal window once it is up, then closes what the action left open, so that a
// failed check cannot leave the test waiting for ever.
void WhenModal(std::function<void(QWidget*)> act, int triesLeft = 500) {
    QTimer::singleShot(10, [act = std::move(act), triesLeft]() mutable {
        QPointer<QWidget> modal = QApplication::activeModalWidget();
        if (!modal && triesLeft > 0)
            WhenModal(std::move(act), triesLeft - 1);
        if (!modal)
            return;
        act(modal);
        if (modal && modal->isVisible())
            modal->close();
    });
}

void Click(QWidget* widget) {
    QVERIFY(widget);
    QTest::mouseClick(widget, Qt::LeftButton);
}

// Sends a row with entry 3's English text and entry 7's German text to a dictionary of eight
// German and English entries (entry 3 also in French), and lets `act` answer the dialog.
struct Conflict : ConflictChooser {
    qint32 Choose(const ConflictList& list) override {
        return chosen = ui::DialogConflictChooser(nullptr, &messages).Choose(list);
    }
    bool Send(const std::function<void(ui::ConflictDialog*)>& act) {
        CDictionary dictionary;
        for (int i = 0; i < 8; ++i) {
            CDicEntry::Texts texts{{1031, QStringLiteral("Deutsch %1").arg(i)},
                                   {1033, QStringLiteral("English %1").arg(i)}};
            if (i == 3)
                texts[1036] = QStringLiteral("Français 3");
            dictionary.AddEntry(texts);
        }
        WhenModal([&](QWidget* modal) {
            auto* dialog = qobject_cast<ui::ConflictDialog*>(modal);
            QVERIFY(dialog);
            act(dialog);
        });
        int added = 0;
        return dictionary.AddWithConflicts({{1031, "Deutsch 7"}, {1033, "English 3"}}, added,
                                           *this);
    }
    util::RecordedMessages messages;
    qint32 chosen = 0;
};

// A row clicked (-1: none), then a button clicked; Escape pressed instead for NoButton.
struct ConflictAnswer {
    const char* name;
    int row;
    QDialogButtonBox::StandardButton button;
    bool staysOpen;
    qint32 chosen;
};

using D = QDialogButtonBox;
const qint32 kCancelled = ConflictChooser::kCancelled;
// clang-format off
const ConflictAnswer kConflictAnswers[] = {
    {"do not add", 0, D::Ok, false, ConflictList::kDoNotAdd},
    {"new entry", 1, D::Ok, false, ConflictList::kNewEntry},
    {"entry 4", 2, D::Ok, false, 3},
    {"entry 8", 3, D::Ok, false, 7},
    {"OK without a row", -1, D::Ok, true, kCancelled},
    {"Cancel", 2, D::Cancel, false, kCancelled},
    {"Escape", 1, D::NoButton, false, kCancelled},
};
// clang-format on

// A message of a kind with the answers offered, then a button clicked or, when given, a key
// pressed instead; the icon shown and the answer returned.
struct BoxAnswer {
    const char* name;
    util::MessageKind kind;
    QList<util::Answer> answers;
    Qt::Key key;
    QMessageBox::StandardButton click;
    QMessageBox::Icon icon;
    util::Answer expected;
};

using util::Answer;
using K = util::MessageKind;
using B = QMessageBox;
const Qt::Key kNoKey = Qt::Key_unknown, kEsc = Qt::Key_Escape, kEnter = Qt::Key_Return;
const QList<Answer> kYesNo{Answer::Yes, Answer::No};
// clang-format off
const BoxAnswer kBoxAnswers[] = {
    {"information", K::Information, {}, kNoKey, B::Ok, B::Information, Answer::Ok},
    {"warning, Escape", K::Warning, {}, kEsc, B::Ok, B::Warning, Answer::Ok},
    {"error, Enter", K::Error, {}, kEnter, B::Ok, B::Critical, Answer::Ok},
    {"No clicked", K::Question, kYesNo, kNoKey, B::No, B::Question, Answer::No},
    {"Enter takes the first", K::Question, {Answer::No, Answer::Yes}, kEnter, B::Ok, B::Question, Answer::No},
    {"Escape is Cancel", K::Question, {Answer::Yes, Answer::Cancel, Answer::No}, kEsc, B::Ok, B::Question, Answer::Cancel},
    {"Escape without Cancel", K::Question, kYesNo, kEsc, B::Ok, B::Question, Answer::No},
};
// clang-format on

// Work reported against a total, which the bar shows scaled to fit an int.
struct Progress {
    const char* name;
    ui::ProgressDialog::Cancel cancel;
    qint64 total;
    int maximum;
};

const auto kOffered = ui::ProgressDialog::Cancel::Offered;
const auto kNotOffered = ui::ProgressDialog::Cancel::NotOffered;
const Progress kProgresses[] = {
    {"cancellable", kOffered, 1000, 1000},
    {"not cancellable", kNotOffered, 1000, 1000},
    {"unknown length", kOffered, 0, 0},
    {"beyond an int", kNotOffered, 5'000'000'000, 1'666'666'666},
};

} // namespace

class SupportTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The dialog lists the candidates under their labels, then each answer gives its choice.
    void conflictDialog_data() { AddRows(kConflictAnswers); }
    void conflictDialog() {
        QFETCH(int, row);
        const ConflictAnswer& c = kConflictAnswers[row];
        bool open = false;
        Conflict conflict;
        const bool sent = conflict.Send([&](ui::ConflictDialog* dialog) {
            QCOMPARE(dialog->windowTitle(), "Conflict while adding to the dictionary");
            QCOMPARE(dialog->findChild<QLabel*>()->text(),
                     "Please select a line to either create a new entry or merge it with an "
                     "existing entry");
            QTableView* table = dialog->Table();
            const QAbstractItemModel* model = table->model();
            QStringList grid; // the headers and cells as the view shows them
            int widestLabel = 0;
            for (int r = -1; r < model->rowCount(); ++r) {
                QStringList cells{r < 0 ? QString()
                                        : model->headerData(r, Qt::Vertical).toString()};
                for (int column = 0; column < model->columnCount(); ++column)
                    cells.append(r < 0 ? model->headerData(column, Qt::Horizontal).toString()
                                       : model->index(r, column).data().toString());
                grid.append(cells.join(QLatin1Char('|')));
                widestLabel =
                    std::max(widestLabel, table->fontMetrics().horizontalAdvance(cells[0]));
            }
            QCOMPARE(grid, QStringList({"|DEU|ENU|FRA", "Existing entry no -1|||",
                                        "New entry|Deutsch 7|English 3|",
                                        "Existing entry no 4|Deutsch 3|English 3|Français 3",
                                        "Existing entry no 8|Deutsch 7|English 7|"}));
            QVERIFY(table->verticalHeader()->width() >= std::max(100, widestLabel));

            if (c.row >= 0)
                QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                                  table->visualRect(model->index(c.row, 1)).center());
            auto* buttons = dialog->findChild<QDialogButtonBox*>();
            if (c.button == D::NoButton)
                QTest::keyClick(dialog, Qt::Key_Escape);
            else
                Click(buttons->button(c.button));
            open = dialog->isVisible();
            if (open)
                Click(buttons->button(QDialogButtonBox::Cancel));
        });
        QCOMPARE(open, c.staysOpen);
        QCOMPARE(conflict.messages.messages,
                 c.staysOpen ? QStringList{"Please select an entry"} : QStringList());
        QCOMPARE(conflict.chosen, c.chosen);
        QCOMPARE(sent, c.chosen != ConflictChooser::kCancelled);
    }

    void messageBoxAnswers_data() { AddRows(kBoxAnswers); }
    void messageBoxAnswers() {
        QFETCH(int, row);
        const BoxAnswer& c = kBoxAnswers[row];
        QWidget window;
        QString shown;
        WhenModal([&](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            QVERIFY(box);
            shown = QStringLiteral("%1: %2, icon %3, %4 buttons, over the window: %5")
                        .arg(box->windowTitle(), box->text())
                        .arg(box->icon())
                        .arg(box->buttons().size())
                        .arg(box->parentWidget() == &window);
            if (c.key != Qt::Key_unknown)
                QTest::keyClick(box, c.key);
            else
                Click(box->button(c.click));
        });
        QCOMPARE(ui::WidgetMessages(&window).Show(c.kind, QStringLiteral("Save?"), c.answers),
                 c.expected);
        QCOMPARE(shown, QStringLiteral("Translator: Save?, icon %1, %2 buttons, over the window: 1")
                            .arg(c.icon)
                            .arg(std::max<qsizetype>(1, c.answers.size())));
    }

    void progressDialog_data() { AddRows(kProgresses); }
    void progressDialog() {
        QFETCH(int, row);
        const Progress& c = kProgresses[row];
        const bool cancellable = c.cancel == kOffered;
        QWidget window;
        window.show();
        ui::ProgressDialog progress(&window, c.cancel, std::chrono::milliseconds(200));
        progress.Begin(QStringLiteral("Saving the dictionary"), c.total);
        QPointer<QProgressDialog> dialog = progress.Dialog();
        QVERIFY(dialog);
        QVERIFY(progress.Advance(0));
        QVERIFY2(!dialog->isVisible(), "shown before the work lasted long enough");
        // A message the work shows and the user takes a while to answer stays usable: the
        // progress does not come up over it.
        bool covered = true;
        WhenModal([&](QWidget* box) {
            QTest::qWait(400);
            covered = dialog->isVisible() || QApplication::activeModalWidget() != box;
            QTest::keyClick(box, Qt::Key_Enter);
        });
        ui::WidgetMessages(&window).Show(util::MessageKind::Error, QStringLiteral("Not found"), {});
        QVERIFY(!covered);
        QElapsedTimer clock;
        clock.start();
        while (!dialog->isVisible() && clock.elapsed() < 5000) {
            QThread::msleep(5);
            QVERIFY(progress.Advance(c.total / 2));
        }
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->labelText(), QStringLiteral("Saving the dictionary"));
        QVERIFY(dialog->parentWidget() == &window &&
                dialog->windowModality() == Qt::ApplicationModal);
        QCOMPARE(dialog->maximum(), c.maximum);
        QCOMPARE(dialog->value(), c.maximum / 2);

        QPushButton* cancelButton = dialog->findChild<QPushButton*>();
        QCOMPARE(cancelButton != nullptr, cancellable);
        if (cancellable) {
            Click(cancelButton);
        } else { // neither Escape nor closing the window stops work that cannot stop
            QTest::keyClick(dialog, Qt::Key_Escape);
            dialog->close();
            QVERIFY(dialog->isVisible());
        }
        QCOMPARE(progress.Advance(c.total), !cancellable);
        progress.End();
        QVERIFY(!dialog);
    }

    // No window closes under work that uses it (the main window, a window inside it): the close
    // waits for the end of the work. A dialog the work asks closes as usual.
    void closesWaitForTheWork() {
        QMainWindow window;
        auto* area = new QMdiArea;
        // A window inside closes by deleting itself.
        const QPointer<QMdiSubWindow> inside = area->addSubWindow(new QWidget);
        window.setCentralWidget(area);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        ui::ProgressDialog progress(&window, kOffered, std::chrono::hours(1));
        progress.Begin(QStringLiteral("Loading"), 10);
        QDialog box(&window);
        box.show();
        for (QWidget* widget : {static_cast<QWidget*>(&window),
                                static_cast<QWidget*>(inside.data()), static_cast<QWidget*>(&box)})
            QMetaObject::invokeMethod(widget, &QWidget::close, Qt::QueuedConnection);
        QVERIFY(progress.Advance(5));
        QVERIFY(window.isVisible() && inside && inside->isVisible());
        QVERIFY(!box.isVisible());
        progress.End();
        QTRY_VERIFY(!window.isVisible());
        QTRY_VERIFY(!inside || !inside->isVisible());
    }
};

TRANSLATOR_UI_TEST_MAIN(SupportTest)

#include "SupportTest.moc"
