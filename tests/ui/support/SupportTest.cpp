#include "ui/UiTestMain.h"

#include "dictionary/Dictionary.h"
#include "ui/support/ConflictDialog.h"
#include "ui/support/ProgressDialog.h"
#include "ui/support/WidgetMessages.h"

#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QTableView>
#include <QThread>
#include <QTimer>

#include <functional>

Q_DECLARE_METATYPE(util::MessageKind)
Q_DECLARE_METATYPE(util::Answer)
Q_DECLARE_METATYPE(ui::ProgressDialog::Cancel)

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

} // namespace

class SupportTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void conflictDialogListsTheCandidates();
    void conflictDialogAnswers_data();
    void conflictDialogAnswers();
    void messageBoxAnswers_data();
    void messageBoxAnswers();
    void progressDialog_data();
    void progressDialog();
};

void SupportTest::conflictDialogListsTheCandidates() {
    QString title, prompt;
    QStringList grid; // the headers and cells as the view shows them
    int widestLabel = 0, labelColumn = 0;
    Conflict().Send([&](ui::ConflictDialog* dialog) {
        title = dialog->windowTitle();
        prompt = dialog->findChild<QLabel*>()->text();
        const QTableView* table = dialog->Table();
        const QAbstractItemModel* model = table->model();
        for (int r = -1; r < model->rowCount(); ++r) {
            QStringList cells{r < 0 ? QString() : model->headerData(r, Qt::Vertical).toString()};
            for (int c = 0; c < model->columnCount(); ++c)
                cells.append(r < 0 ? model->headerData(c, Qt::Horizontal).toString()
                                   : model->index(r, c).data().toString());
            grid.append(cells.join(QLatin1Char('|')));
            widestLabel = std::max(widestLabel, table->fontMetrics().horizontalAdvance(cells[0]));
        }
        labelColumn = table->verticalHeader()->width();
    });
    QCOMPARE(title, QStringLiteral("Conflict while adding to the dictionary"));
    QCOMPARE(prompt, QStringLiteral("Please select a line to either create a new entry or merge "
                                    "it with an existing entry"));
    QCOMPARE(grid, QStringList({"|DEU|ENU|FRA", "Existing entry no -1|||",
                                "New entry|Deutsch 7|English 3|",
                                "Existing entry no 4|Deutsch 3|English 3|Français 3",
                                "Existing entry no 8|Deutsch 7|English 7|"}));
    QVERIFY(labelColumn >= std::max(100, widestLabel));
}

void SupportTest::conflictDialogAnswers_data() {
    QTest::addColumn<int>("row"); // clicked first; -1: none
    QTest::addColumn<int>("key"); // pressed instead of the button; 0: none
    QTest::addColumn<QDialogButtonBox::StandardButton>("button");
    QTest::addColumn<bool>("staysOpen");
    QTest::addColumn<qint32>("chosen");

    const auto ok = QDialogButtonBox::Ok;
    const qint32 cancelled = ConflictChooser::kCancelled;
    QTest::newRow("do not add") << 0 << 0 << ok << false << ConflictList::kDoNotAdd;
    QTest::newRow("new entry") << 1 << 0 << ok << false << ConflictList::kNewEntry;
    QTest::newRow("entry 4") << 2 << 0 << ok << false << 3;
    QTest::newRow("entry 8") << 3 << 0 << ok << false << 7;
    QTest::newRow("OK without a row") << -1 << 0 << ok << true << cancelled;
    QTest::newRow("Cancel") << 2 << 0 << QDialogButtonBox::Cancel << false << cancelled;
    QTest::newRow("Escape") << 1 << int(Qt::Key_Escape) << ok << false << cancelled;
}

void SupportTest::conflictDialogAnswers() {
    QFETCH(int, row);
    QFETCH(int, key);
    QFETCH(QDialogButtonBox::StandardButton, button);
    QFETCH(bool, staysOpen);
    QFETCH(qint32, chosen);

    bool open = false;
    Conflict conflict;
    const bool sent = conflict.Send([&](ui::ConflictDialog* dialog) {
        QTableView* table = dialog->Table();
        if (row >= 0)
            QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                              table->visualRect(table->model()->index(row, 1)).center());
        auto* buttons = dialog->findChild<QDialogButtonBox*>();
        if (key)
            QTest::keyClick(dialog, Qt::Key(key));
        else
            Click(buttons->button(button));
        open = dialog->isVisible();
        if (open)
            Click(buttons->button(QDialogButtonBox::Cancel));
    });
    QCOMPARE(open, staysOpen);
    QCOMPARE(conflict.messages.messages,
             staysOpen ? QStringList{"Please select an entry"} : QStringList());
    QCOMPARE(conflict.chosen, chosen);
    QCOMPARE(sent, chosen != ConflictChooser::kCancelled);
}

void SupportTest::messageBoxAnswers_data() {
    QTest::addColumn<util::MessageKind>("kind");
    QTest::addColumn<QList<util::Answer>>("answers");
    QTest::addColumn<int>("key"); // pressed instead of clicking `click`; 0: none
    QTest::addColumn<QMessageBox::StandardButton>("click");
    QTest::addColumn<QMessageBox::Icon>("icon");
    QTest::addColumn<util::Answer>("expected");

    using util::Answer;
    using K = util::MessageKind;
    using B = QMessageBox;
    const int esc = Qt::Key_Escape, enter = Qt::Key_Return;
    const QList<Answer> none, yesNo{Answer::Yes, Answer::No};
    QTest::newRow("information") << K::Information << none << 0 << B::Ok << B::Information
                                 << Answer::Ok;
    QTest::newRow("warning, Escape")
        << K::Warning << none << esc << B::Ok << B::Warning << Answer::Ok;
    QTest::newRow("error, Enter") << K::Error << none << enter << B::Ok << B::Critical
                                  << Answer::Ok;
    QTest::newRow("No clicked") << K::Question << yesNo << 0 << B::No << B::Question << Answer::No;
    QTest::newRow("Enter takes the first") << K::Question << QList<Answer>{Answer::No, Answer::Yes}
                                           << enter << B::Ok << B::Question << Answer::No;
    QTest::newRow("Escape is Cancel")
        << K::Question << QList<Answer>{Answer::Yes, Answer::Cancel, Answer::No} << esc << B::Ok
        << B::Question << Answer::Cancel;
    QTest::newRow("Escape without Cancel")
        << K::Question << yesNo << esc << B::Ok << B::Question << Answer::No;
}

void SupportTest::messageBoxAnswers() {
    QFETCH(util::MessageKind, kind);
    QFETCH(QList<util::Answer>, answers);
    QFETCH(int, key);
    QFETCH(QMessageBox::StandardButton, click);
    QFETCH(QMessageBox::Icon, icon);
    QFETCH(util::Answer, expected);

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
        if (key)
            QTest::keyClick(box, Qt::Key(key));
        else
            Click(box->button(click));
    });
    QCOMPARE(ui::WidgetMessages(&window).Show(kind, QStringLiteral("Save?"), answers), expected);
    QCOMPARE(shown, QStringLiteral("Translator: Save?, icon %1, %2 buttons, over the window: 1")
                        .arg(icon)
                        .arg(std::max<qsizetype>(1, answers.size())));
}

void SupportTest::progressDialog_data() {
    QTest::addColumn<ui::ProgressDialog::Cancel>("cancel");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<int>("maximum");

    const auto offered = ui::ProgressDialog::Cancel::Offered;
    const auto notOffered = ui::ProgressDialog::Cancel::NotOffered;
    QTest::newRow("cancellable") << offered << qint64(1000) << 1000;
    QTest::newRow("not cancellable") << notOffered << qint64(1000) << 1000;
    QTest::newRow("unknown length") << offered << qint64(0) << 0;
    QTest::newRow("beyond an int") << notOffered << qint64(5'000'000'000) << 1'666'666'666;
}

void SupportTest::progressDialog() {
    QFETCH(ui::ProgressDialog::Cancel, cancel);
    QFETCH(qint64, total);
    QFETCH(int, maximum);
    const bool cancellable = cancel == ui::ProgressDialog::Cancel::Offered;

    QWidget window;
    window.show();
    ui::ProgressDialog progress(&window, cancel, std::chrono::milliseconds(200));
    progress.Begin(QStringLiteral("Saving the dictionary"), total);
    QPointer<QProgressDialog> dialog = progress.Dialog();
    QVERIFY(dialog);
    QVERIFY(progress.Advance(0));
    QVERIFY2(!dialog->isVisible(), "shown before the work lasted long enough");
    QElapsedTimer clock;
    clock.start();
    while (!dialog->isVisible() && clock.elapsed() < 5000) {
        QThread::msleep(5);
        QVERIFY(progress.Advance(total / 2));
    }
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->labelText(), QStringLiteral("Saving the dictionary"));
    QVERIFY(dialog->parentWidget() == &window && dialog->windowModality() == Qt::WindowModal);
    QCOMPARE(dialog->maximum(), maximum);
    QCOMPARE(dialog->value(), maximum / 2);

    QPushButton* cancelButton = dialog->findChild<QPushButton*>();
    QCOMPARE(cancelButton != nullptr, cancellable);
    if (cancellable) {
        Click(cancelButton);
    } else { // neither Escape nor closing the window stops work that cannot stop
        QTest::keyClick(dialog, Qt::Key_Escape);
        dialog->close();
        QVERIFY(dialog->isVisible());
    }
    QCOMPARE(progress.Advance(total), !cancellable);
    progress.End();
    QVERIFY(!dialog);
}

TRANSLATOR_UI_TEST_MAIN(SupportTest)

#include "SupportTest.moc"
