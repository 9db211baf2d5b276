#include "app/AppContext.h"
#include "common/PostgresServer.h"
#include "common/SampleQuestionnaire.h"
#include "dictionary/Dictionary.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/formats/XmlFile.h"
#include "ui/AboutDialog.h"
#include "ui/CaptionGrid.h"
#include "ui/CaptionModel.h"
#include "ui/DictionaryView.h"
#include "ui/MainWindow.h"
#include "ui/OpenDocument.h"
#include "ui/Strings.h"
#include "ui/TranslatorView.h"
#include "ui/UiTestMain.h"
#include "ui/dialogs/ExportDialog.h"
#include "ui/dialogs/ImportDialog.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolBar>

#include <memory>

using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

namespace {

// Answers the message boxes that the code under test shows, as a user would click them, and
// keeps their texts.
class BoxAnswerer : public QObject {
public:
    // `byText`: the buttons to click in the boxes to come, by their text without accelerators;
    // once they are used up, `button`.
    explicit BoxAnswerer(QMessageBox::StandardButton button = QMessageBox::Ok,
                         QStringList byText = {})
        : m_button(button), m_byText(std::move(byText)) {
        m_timer.setInterval(20);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            texts.append(box->text());
            QAbstractButton* button = box->button(m_button);
            if (!m_byText.isEmpty()) {
                const QString wanted = m_byText.takeFirst();
                for (QAbstractButton* candidate : box->buttons())
                    if (candidate->text().remove(QLatin1Char('&')) == wanted)
                        button = candidate;
            }
            if (!button)
                button = box->buttons().value(0);
            button->click();
        });
        m_timer.start();
    }
    QStringList texts;

private:
    QMessageBox::StandardButton m_button;
    QStringList m_byText;
    QTimer m_timer;
};

// Fills in the next dialog of type T that opens, as a user would, and presses OK.
template <typename T> void WhenOpen(const QString& path) {
    auto* timer = new QTimer;
    timer->setInterval(20);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, path] {
        auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer->stop();
        timer->deleteLater();
        auto* edit = dialog->template findChild<QLineEdit*>(QStringLiteral("path"));
        edit->clear();
        QTest::keyClicks(edit, path);
        auto* buttons = dialog->template findChild<QDialogButtonBox*>();
        QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    timer->start();
}

// Types `text` into the next input dialog that opens and presses OK.
void WhenAsked(const QString& text) {
    auto* timer = new QTimer;
    timer->setInterval(20);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, text] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer->stop();
        timer->deleteLater();
        auto* edit = dialog->findChild<QLineEdit*>();
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
    });
    timer->start();
}

} // namespace

class WindowTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<app::AppContext> m_context;
    std::unique_ptr<ui::MainWindow> m_window;
    QString m_path;

    ui::TranslatorView& View() { return *m_window->ActiveView(); }
    ui::CaptionGrid& Grid() { return View().Grid(); }
    questionnaire::CaptionTable& Table() { return View().Document().Captions(); }
    CQuestionnaire& Q() { return *View().Document().Document().Questionnaire(); }
    int RowOf(qint32 questionId, qint32 responseId) {
        for (qsizetype row = 0; row < Table().RowCount(); ++row)
            if (Table().QuestionId(row) == questionId && Table().ResponseId(row) == responseId)
                return int(row);
        return -1;
    }
    QModelIndex Cell(qint32 questionId, qint32 responseId, int column) {
        return View().Model().index(RowOf(questionId, responseId), column);
    }
    QString Stored(qint32 questionId, qint32 responseId, qint32 language) {
        return questionnaire::ReadCaption(Q(), questionId, responseId, language);
    }
    void ClickCell(const QModelIndex& index, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        Grid().scrollTo(index);
        QTest::mouseClick(Grid().viewport(), Qt::LeftButton, modifiers,
                          Grid().visualRect(index).center());
    }
    QLineEdit* Editor() { return Grid().findChild<QLineEdit*>(); }
    // Typing into the current cell: the first key opens the editor, which has the focus after.
    void Type(const QString& text) {
        QTest::keyClicks(&Grid(), text.left(1));
        QVERIFY(Editor());
        QTest::keyClicks(Editor(), text.mid(1));
    }
    QStringList MenuTitles() {
        QStringList titles;
        for (QAction* action : m_window->menuBar()->actions())
            titles.append(action->text());
        return titles;
    }

private Q_SLOTS:
    void init() {
        m_path = m_dir.filePath(QStringLiteral("survey.xml"));
        QFile::remove(m_path);
        QVERIFY(questionnaire::WriteXmlFile(m_path, testutil::MakeSample()));
        m_context = std::make_unique<app::AppContext>();
        m_context->dictionaryPath = m_dir.filePath(QStringLiteral("memory.dic"));
        m_window = std::make_unique<ui::MainWindow>(*m_context);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QApplication::setActiveWindow(m_window.get()); // the shortcuts work in the active window
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QVERIFY(m_window->OpenFile(m_path));
        Grid().setFocus();
    }

    void cleanup() {
        // Nothing saved by a test leaks into the next: the answers are "No".
        BoxAnswerer no(QMessageBox::No);
        m_window->close();
        m_window.reset();
        m_context.reset();
        QFile::remove(m_dir.filePath(QStringLiteral("memory.dic")));
    }

    // The grid shows the table: the default language first, titles, labels and escaped cells.
    void showsTheCaptions() {
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Translator - [survey.xml]"));
        const QAbstractItemModel& model = View().Model();
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("ENU"));
        QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), QStringLiteral("FRA"));
        QCOMPARE(Grid().columnWidth(2), 200);
        QCOMPARE(model.headerData(RowOf(10, -1), Qt::Vertical).toString(), QStringLiteral("Q1"));
        QVERIFY(!model.headerData(RowOf(10, -3), Qt::Vertical, Qt::DecorationRole)
                     .value<QIcon>()
                     .isNull());
        QCOMPARE(Cell(10, -3, 0).data().toString(), QStringLiteral("Read out\\nthe scale"));
    }

    // Every rule of writing back, through the grid as a user types: the text is typed over the
    // cell, then Enter.
    void writeBack_data() {
        QTest::addColumn<int>("questionId");
        QTest::addColumn<int>("responseId");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("typed"); // empty: the cell is cleared with Delete
        QTest::addColumn<qint32>("language");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("modified");
        QTest::newRow("first column refuses empty")
            << 10 << -1 << 0 << QString() << kEnglish << QStringLiteral("How satisfied are you?")
            << false;
        QTest::newRow("other column may be emptied")
            << 10 << -1 << 1 << QString() << kFrench << QString() << true;
        QTest::newRow("escapes undone") << 10 << 1 << 2 << QStringLiteral("a\\nb\\\\n") << kGerman
                                        << QStringLiteral("a\nb\\\n") << true;
        QTest::newRow("case alone is a change")
            << 10 << 1 << 0 << QStringLiteral("very") << kEnglish << QStringLiteral("very") << true;
        QTest::newRow("routing message")
            << -2 << 5 << 1 << QStringLiteral("Saut") << kFrench << QStringLiteral("Saut") << true;
        QTest::newRow("system message back to standard")
            << -1 << 3 << 0 << CQuestionnaire::GetStandardErrorMessage(kEnglish, 3) << kEnglish
            << CQuestionnaire::GetStandardErrorMessage(kEnglish, 3) << true;
        QTest::newRow("system message emptied")
            << -1 << 3 << 0 << QString() << kEnglish
            << CQuestionnaire::GetStandardErrorMessage(kEnglish, 3) << true;
    }
    void writeBack() {
        QFETCH(int, questionId);
        QFETCH(int, responseId);
        QFETCH(int, column);
        QFETCH(QString, typed);
        QFETCH(qint32, language);
        QFETCH(QString, stored);
        QFETCH(bool, modified);
        const QModelIndex index = Cell(questionId, responseId, column);
        QVERIFY(index.isValid());
        ClickCell(index);
        if (typed.isEmpty()) {
            QTest::keyClick(&Grid(), Qt::Key_Delete);
        } else {
            Type(typed);
            QTest::keyClick(Editor(), Qt::Key_Return);
        }
        QCOMPARE(Stored(questionId, responseId, language), stored);
        QCOMPARE(View().Document().IsModified(), modified);
        // The cell shows what the questionnaire holds, escaped: a refused edit is undone.
        QCOMPARE(index.data().toString(), Table().Text(index.row(), column));
        if (questionId == -1) // a system message back to its standard text is no longer custom
            QVERIFY(Q().GetCustomErrorMessages(responseId).Get(language).isEmpty());
    }

    // How each key or click opens an edit, and how each key ends it.
    void editKeys_data() {
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("end");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("rowMove");
        QTest::addColumn<int>("columnMove");
        // The cell holds "Very"; "Z" is typed once the editor is open.
        QTest::newRow("enter, caret at end") << "enter"
                                             << "enter"
                                             << "VeryZ" << 0 << 0;
        QTest::newRow("click on the current cell") << "click"
                                                   << "enter"
                                                   << "VeryZ" << 0 << 0;
        QTest::newRow("backspace deletes the last") << "backspace"
                                                    << "enter"
                                                    << "VerZ" << 0 << 0;
        QTest::newRow("space selects all") << "space"
                                           << "enter"
                                           << "Z" << 0 << 0;
        QTest::newRow("a character replaces") << "x"
                                              << "enter"
                                              << "xZ" << 0 << 0;
        QTest::newRow("escape puts the text back") << "x"
                                                   << "escape"
                                                   << "Very" << 0 << 0;
        QTest::newRow("tab keeps and moves on") << "enter"
                                                << "tab"
                                                << "VeryZ" << 0 << 1;
        QTest::newRow("focus loss keeps") << "enter"
                                          << "focus"
                                          << "VeryZ" << 0 << 0;
        QTest::newRow("arrow ends an edit begun by a key") << "x"
                                                           << "down"
                                                           << "xZ" << 1 << 0;
        // After a click the arrow moves the caret: the edit goes on until Enter.
        QTest::newRow("arrow after a click moves the caret") << "click"
                                                             << "down-enter"
                                                             << "VeryZ" << 0 << 0;
        QTest::newRow("ctrl+arrow ends any edit") << "click"
                                                  << "ctrl-down"
                                                  << "VeryZ" << 1 << 0;
    }
    void editKeys() {
        QFETCH(QString, start);
        QFETCH(QString, end);
        QFETCH(QString, stored);
        QFETCH(int, rowMove);
        QFETCH(int, columnMove);
        const QModelIndex index = Cell(10, 1, 0);
        ClickCell(index);
        if (start == QLatin1String("enter"))
            QTest::keyClick(&Grid(), Qt::Key_Return);
        else if (start == QLatin1String("click"))
            ClickCell(index);
        else if (start == QLatin1String("backspace"))
            QTest::keyClick(&Grid(), Qt::Key_Backspace);
        else if (start == QLatin1String("space"))
            QTest::keyClick(&Grid(), Qt::Key_Space);
        else
            QTest::keyClicks(&Grid(), start);
        QLineEdit* editor = Editor();
        QVERIFY(editor);
        QTest::keyClicks(editor, QStringLiteral("Z"));
        if (end == QLatin1String("enter"))
            QTest::keyClick(editor, Qt::Key_Return);
        else if (end == QLatin1String("escape"))
            QTest::keyClick(editor, Qt::Key_Escape);
        else if (end == QLatin1String("tab"))
            QTest::keyClick(editor, Qt::Key_Tab);
        else if (end == QLatin1String("down"))
            QTest::keyClick(editor, Qt::Key_Down);
        else if (end == QLatin1String("ctrl-down"))
            QTest::keyClick(editor, Qt::Key_Down, Qt::ControlModifier);
        else if (end == QLatin1String("down-enter")) {
            QTest::keyClick(editor, Qt::Key_Down);
            QVERIFY(Editor()); // still editing
            QTest::keyClick(Editor(), Qt::Key_Return);
        } else if (end == QLatin1String("focus")) {
            Grid().setFocus(); // the grid takes the focus back, as a click beside the editor does
            QApplication::processEvents();
        }
        QTRY_VERIFY(!Editor());
        QCOMPARE(Stored(10, 1, kEnglish), stored);
        QCOMPARE(View().Document().IsModified(), stored != QLatin1String("Very"));
        QCOMPARE(Grid().currentIndex().row(), index.row() + rowMove);
        QCOMPARE(Grid().currentIndex().column(), index.column() + columnMove);
    }

    // Copy lays out the block by tabs and line feeds, with empty texts for unselected cells in
    // it; cut and paste go cell by cell, and the first column refuses to lose its text.
    void clipboard() {
        const int row = RowOf(10, -1);
        ClickCell(View().Model().index(row, 0));
        ClickCell(View().Model().index(row + 1, 1), Qt::ShiftModifier);
        QTest::keyClick(&Grid(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(),
                 QStringLiteral("How satisfied are you?\tÊtes-vous satisfait ?\nSatisfaction\t"));
        // A cell left out of the selection inside the block copies as empty.
        ClickCell(View().Model().index(row, 0));
        ClickCell(View().Model().index(row + 1, 1), Qt::ControlModifier);
        QTest::keyClick(&Grid(), Qt::Key_Insert, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("How satisfied are you?\t\n\t"));

        // Cut: the French caption goes, the English one of the first column stays.
        ClickCell(View().Model().index(row, 0));
        ClickCell(View().Model().index(row, 1), Qt::ShiftModifier);
        QTest::keyClick(&Grid(), Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(),
                 QStringLiteral("How satisfied are you?\tÊtes-vous satisfait ?"));
        QCOMPARE(Stored(10, -1, kEnglish), QStringLiteral("How satisfied are you?"));
        QCOMPARE(Stored(10, -1, kFrench), QString());

        // Paste from a spreadsheet (CR LF, a last line feed): an empty first-column cell is
        // refused, the others are written.
        QApplication::clipboard()->setText(QStringLiteral("\tQuel\\tplaisir\r\nShort\tCourt\r\n"));
        ClickCell(View().Model().index(row, 0));
        QTest::keyClick(&Grid(), Qt::Key_Insert, Qt::ShiftModifier);
        QCOMPARE(Stored(10, -1, kEnglish), QStringLiteral("How satisfied are you?"));
        QCOMPARE(Stored(10, -1, kFrench), QStringLiteral("Quel\tplaisir"));
        QCOMPARE(Stored(10, -2, kEnglish), QStringLiteral("Short"));
        QCOMPARE(Stored(10, -2, kFrench), QStringLiteral("Court"));
        QVERIFY(View().Document().IsModified());

        // Text dropped on a cell is pasted there.
        auto* data = new QMimeData;
        data->setText(QStringLiteral("Dropped"));
        const QModelIndex target = View().Model().index(row, 2);
        const QPoint at = Grid().visualRect(target).center();
        QDragEnterEvent enter(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(Grid().viewport(), &enter);
        QDropEvent drop(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(Grid().viewport(), &drop);
        QCOMPARE(Stored(10, -1, kGerman), QStringLiteral("Dropped"));
        delete data;
    }

    // The menu bar follows the active child; the commands that need a selection follow it.
    void menusFollowTheChild() {
        QCOMPARE(MenuTitles(), (QStringList{QStringLiteral("&File"), QStringLiteral("&Edit"),
                                            QStringLiteral("&View"), QStringLiteral("&Window"),
                                            QStringLiteral("&Help")}));
        // The toolbar: open, save | cut, copy, paste | print | about.
        QStringList tools;
        for (QAction* action : m_window->findChild<QToolBar*>()->actions())
            tools.append(action->isSeparator() ? QStringLiteral("|") : action->toolTip());
        QCOMPARE(tools.join(QLatin1Char(' ')),
                 QStringLiteral("Open... Save | Cut Copy Paste | Print... | About Translator..."));
        Grid().clearSelection();
        QVERIFY(!m_window->Action(ui::strings::kSendToDictionary)->isEnabled());
        ClickCell(Cell(10, 1, 0));
        QVERIFY(m_window->Action(ui::strings::kSendToDictionary)->isEnabled());
        QVERIFY(!m_window->Action(ui::strings::kUndo)->isEnabled());

        // A second window on the same document: numbered titles, one question at the end.
        m_window->Action(ui::strings::kNewWindow)->trigger();
        QCOMPARE(m_window->Area()->subWindowList().size(), 2);
        QCOMPARE(m_window->Area()->activeSubWindow()->windowTitle(),
                 QStringLiteral("survey.xml:2"));
        ClickCell(Cell(10, 1, 1));
        Type(QStringLiteral("Tout"));
        QTest::keyClick(Editor(), Qt::Key_Return);
        // The first window shows the edit made in the second.
        auto* first =
            qobject_cast<ui::TranslatorView*>(m_window->Area()->subWindowList().front()->widget());
        QCOMPARE(first->Model().index(RowOf(10, 1), 1).data().toString(), QStringLiteral("Tout"));
        {
            BoxAnswerer none(QMessageBox::Cancel);
            m_window->Area()->activeSubWindow()->close(); // not the last: no question
            QTRY_COMPARE(m_window->Area()->subWindowList().size(), 1);
            QVERIFY(none.texts.isEmpty());
        }
        {
            BoxAnswerer cancel(QMessageBox::Cancel);
            m_window->Area()->activeSubWindow()->close();
            QCOMPARE(cancel.texts, QStringList{QStringLiteral("Save changes to survey.xml?")});
            QCOMPARE(m_window->Area()->subWindowList().size(), 1);
        }
        {
            BoxAnswerer yes(QMessageBox::Yes);
            m_window->Area()->activeSubWindow()->close();
            QTRY_COMPARE(m_window->Area()->subWindowList().size(), 0);
        }
        CQuestionnaire saved;
        QVERIFY(questionnaire::ReadXmlFile(m_path, saved));
        QCOMPARE(questionnaire::ReadCaption(saved, 10, 1, kFrench), QStringLiteral("Tout"));
        QTRY_COMPARE(MenuTitles(), (QStringList{QStringLiteral("&File"), QStringLiteral("&View"),
                                                QStringLiteral("&Help")}));
        // The file is now the most recent one.
        QVERIFY(m_window->findChildren<QAction*>().size() > 0);
        QCOMPARE(m_context->recentFiles.Files().value(0), m_path);
        QVERIFY(m_window->OpenFile(m_path));
    }

    // Auto-translate counts each hit it stores, a later source language's over an earlier one;
    // sending rows counts the new entries.
    void dictionaryCommands() {
        {
            CDictionary dictionary;
            dictionary.AddEntry(
                {{kEnglish, QStringLiteral("Very")}, {kGerman, QStringLiteral("Sehr")}});
            dictionary.AddEntry(
                {{kFrench, QStringLiteral("Très")}, {kGerman, QStringLiteral("Sehr viel")}});
            util::NoMessages silent;
            QVERIFY(dictionary.Save(m_context->dictionaryPath, silent));
        }
        {
            BoxAnswerer ok;
            m_window->Action(ui::strings::kAutoTranslate)->trigger();
            QCOMPARE(ok.texts, QStringList{QStringLiteral("2 captions have been translated")});
        }
        QCOMPARE(Stored(10, 1, kGerman), QStringLiteral("Sehr viel"));
        QVERIFY(View().Document().IsModified());
        QCOMPARE(Cell(10, 1, 2).data().toString(), QStringLiteral("Sehr viel")); // refilled

        // Rows 10/-1 and 10/-2: the first has two languages and is new, the second only one.
        ClickCell(Cell(10, -1, 0));
        ClickCell(Cell(10, -2, 0), Qt::ShiftModifier);
        {
            BoxAnswerer ok;
            m_window->Action(ui::strings::kSendToDictionary)->trigger();
            QCOMPARE(ok.texts,
                     QStringList{QStringLiteral("1 entrie(s) have been added to the dictionary")});
        }
        {
            BoxAnswerer no(QMessageBox::No);
            m_window->close();
            // The dictionary and then the questionnaire are offered for saving.
            QCOMPARE(no.texts, (QStringList{QStringLiteral("Dictionary has been modified. Do "
                                                           "you want to save?"),
                                            QStringLiteral("Save changes to survey.xml?")}));
        }
        // "No" left the file as it was: two entries.
        CDictionary saved;
        util::NoMessages silent;
        QVERIFY(saved.Load(m_context->dictionaryPath, silent));
        QCOMPARE(saved.GetEntryCount(), 2);
    }

    // The dictionary window: every live entry by language, edits merged into their entry,
    // whole rows deleted after one question, new entries listed after sending, and the save
    // question at exit with its three answers.
    void dictionaryWindow() {
        {
            CDictionary dictionary;
            for (int i = 0; i < 6; ++i)
                dictionary.AddEntry({{kEnglish, QStringLiteral("e%1").arg(i)},
                                     {kGerman, QStringLiteral("d%1").arg(i)}});
            util::NoMessages silent;
            QVERIFY(dictionary.Save(m_context->dictionaryPath, silent));
        }
        QMdiSubWindow* questionnaire = m_window->Area()->activeSubWindow();
        m_window->Action(ui::strings::kDictionary)->trigger();
        ui::DictionaryView* view = m_window->Dictionary();
        QVERIFY(view);
        QCOMPARE(m_window->Area()->activeSubWindow()->windowTitle(), QStringLiteral("Dictionary"));
        QTRY_COMPARE(MenuTitles(), (QStringList{QStringLiteral("&File"), QStringLiteral("&View"),
                                                QStringLiteral("&Help")}));
        ui::DictionaryModel& model = view->Model();
        ui::CaptionGrid& grid = view->Grid();
        QCOMPARE(model.rowCount(), 6);
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("DEU"));
        QCOMPARE(model.headerData(5, Qt::Vertical).toString(), QStringLiteral("6"));
        auto click = [&](int row, int column, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
            const QModelIndex index = model.index(row, column);
            grid.scrollTo(index);
            QTest::mouseClick(grid.viewport(), Qt::LeftButton, modifiers,
                              grid.visualRect(index).center());
        };

        // A text typed into a cell is merged into its entry; the cell shows the entry's text.
        click(0, 0);
        QTest::keyClicks(&grid, QStringLiteral("B"));
        QTest::keyClicks(grid.findChild<QLineEdit*>(), QStringLiteral("rot"));
        QTest::keyClick(grid.findChild<QLineEdit*>(), Qt::Key_Return);
        QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("Brot"));
        QCOMPARE(model.index(0, 1).data().toString(), QStringLiteral("e0"));

        // Cells in rows 3 and 5 selected: rows 3, 4 and 5 go, after one question.
        click(2, 0);
        click(4, 1, Qt::ControlModifier);
        {
            BoxAnswerer no(QMessageBox::No);
            m_window->Action(ui::strings::kDelete)->trigger();
            QCOMPARE(no.texts, QStringList{QStringLiteral(
                                   "Are you sure you want to delete these entrie(s) ?")});
            QCOMPARE(model.rowCount(), 6);
        }
        {
            BoxAnswerer yes(QMessageBox::Yes);
            m_window->Action(ui::strings::kDelete)->trigger();
            QCOMPARE(yes.texts.size(), 1);
        }
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.index(2, 1).data().toString(), QStringLiteral("e5"));

        // Rows sent from the questionnaire appear in the dictionary window at once.
        m_window->Area()->setActiveSubWindow(questionnaire);
        ClickCell(Cell(10, -1, 0));
        {
            BoxAnswerer ok;
            m_window->Action(ui::strings::kSendToDictionary)->trigger();
            QCOMPARE(ok.texts,
                     QStringList{QStringLiteral("1 entrie(s) have been added to the dictionary")});
        }
        QCOMPARE(model.rowCount(), 4);

        // At exit: Cancel keeps the program open, Yes saves the dictionary.
        {
            BoxAnswerer cancel(QMessageBox::Cancel);
            m_window->close();
            QCOMPARE(cancel.texts, QStringList{QStringLiteral(
                                       "Dictionary has been modified. Do you want to save?")});
            QVERIFY(m_window->isVisible());
            QVERIFY(m_window->Dictionary());
        }
        {
            BoxAnswerer yes(QMessageBox::Yes);
            m_window->close();
            QVERIFY(!m_window->isVisible());
        }
        CDictionary saved;
        util::NoMessages silent;
        QVERIFY(saved.Load(m_context->dictionaryPath, silent));
        int live = 0;
        for (int i = 0; i < saved.GetEntryCount(); ++i)
            live += saved.GetEntry(i).m_deleted ? 0 : 1;
        QCOMPARE(live, 4);
        QVERIFY(saved.GetEntry(0).m_texts.at(kGerman) == QStringLiteral("Brot"));
    }

    // The about box: the product and file version, the legal notice, the file's date.
    void aboutBox() {
        app::VersionInfo version;
        QVERIFY(version.Load());
        ui::AboutDialog about(version);
        QCOMPARE(about.windowTitle(), QStringLiteral("About Translator"));
        QVERIFY(about.ProductLine().startsWith(QStringLiteral("Translator 1.")));
        QCOMPARE(about.ProductLine().count(QLatin1Char('.')), 3); // a four-part file version
        QCOMPARE(about.LegalLine(), QStringLiteral("Copyright (C) Halvard Quist"));
        QCOMPARE(
            about.DateLine(),
            QLocale().toString(QFileInfo(QCoreApplication::applicationFilePath()).lastModified(),
                               QLocale::ShortFormat));
        version.dateStatus = app::VersionInfo::DateStatus::Invalid;
        QCOMPARE(ui::AboutDialog::FormatDate(version), QStringLiteral("Invalid DateTime"));
        version.dateStatus = app::VersionInfo::DateStatus::Null;
        QCOMPARE(ui::AboutDialog::FormatDate(version), QString());
    }

    // The export and import run from their dialogs; an import that changed captions refills
    // the grid and marks the document modified.
    void exportThenImport() {
        const QString file = m_dir.filePath(QStringLiteral("for translators.txt"));
        QFile::remove(file);
        {
            BoxAnswerer close(QMessageBox::Close);
            WhenOpen<ui::ExportDialog>(file);
            m_window->Action(ui::strings::kExport)->trigger();
            QCOMPARE(
                close.texts,
                QStringList{QStringLiteral("The captions have been exported to '%1'.").arg(file)});
        }
        QFile exported(file);
        QVERIFY(exported.open(QIODevice::ReadOnly));
        QString text = QString::fromUtf16(
            reinterpret_cast<const char16_t*>(exported.readAll().constData()) + 1,
            (exported.size() - 2) / 2);
        exported.close();
        QVERIFY(text.startsWith(
            QStringLiteral("QuestionId\tResponseId\t1036(FRA)\t1033(ENU)\t1031(DEU)")));
        QVERIFY(text.contains(QStringLiteral("10\t1\tTrès\tVery")));
        QVERIFY(!View().Document().IsModified());

        // The translator's work, which the "spreadsheet program" below saves over the export.
        text.replace(QStringLiteral("10\t1\tTrès\tVery"),
                     QStringLiteral("10\t1\tExtrêmement\tVery"));
        const QString translated = m_dir.filePath(QStringLiteral("translated.txt"));
        QFile work(translated);
        QVERIFY(work.open(QIODevice::WriteOnly | QIODevice::Truncate));
        work.write("\xFF\xFE");
        work.write(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
        work.close();
        View().SetEditorCommand({QStringLiteral("sh"), QStringLiteral("-c"),
                                 QStringLiteral("cp \"$0\" \"$1\""), translated});

        // Export again and open the file: when the program ends with the file changed, the
        // window offers to import it, and the import dialog starts from that file.
        BoxAnswerer answers(QMessageBox::Yes, {QStringLiteral("Open for Translation")});
        WhenOpen<ui::ExportDialog>(file);
        m_window->Action(ui::strings::kExport)->trigger();
        WhenOpen<ui::ImportDialog>(file);
        QTRY_COMPARE(answers.texts.size(), 3);
        QCOMPARE(answers.texts[1],
                 QStringLiteral("'%1' has been changed. Do you want to import it now?").arg(file));
        QCOMPARE(answers.texts[2], QStringLiteral("1 captions have been modified!"));
        QCOMPARE(Stored(10, 1, kFrench), QStringLiteral("Extrêmement"));
        QCOMPARE(Cell(10, 1, 1).data().toString(), QStringLiteral("Extrêmement"));
        QVERIFY(View().Document().IsModified());
    }

    // A questionnaire saved to a campaign on a server becomes that campaign; opened from the
    // server again it shows what was saved.
    void savesToAndOpensFromAServer() {
        testutil::PostgresServer server;
        QVERIFY2(server.Start(), qPrintable(server.Error()));
        const QString uri = server.CreateDatabase(QStringLiteral("window"));
        QVERIFY(!uri.isEmpty());
        const QVariant language = View().Model().headerData(1, Qt::Horizontal);
        ClickCell(Cell(10, 1, 1));
        Type(QStringLiteral("Sehr"));
        QTest::keyClick(Editor(), Qt::Key_Return);
        QVERIFY(View().Document().IsModified());
        {
            BoxAnswerer refusal;
            WhenAsked(QStringLiteral("/tmp/not-a-server.qew"));
            m_window->Action(ui::strings::kSaveServer)->trigger();
            QCOMPARE(refusal.texts, QStringList{QStringLiteral(
                                        "'/tmp/not-a-server.qew' is not a server location: it "
                                        "begins with postgresql://.")});
            QCOMPARE(View().Document().Document().Path(), m_path);
        }
        WhenAsked(uri);
        m_window->Action(ui::strings::kSaveServer)->trigger();
        QCOMPARE(View().Document().Document().Path(), uri);
        QVERIFY(!View().Document().IsModified());
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Translator - [%1]").arg(uri));
        QCOMPARE(m_context->recentFiles.Files().value(0), uri);

        m_window->Action(ui::strings::kClose)->trigger();
        QVERIFY(!m_window->ActiveView());
        WhenAsked(uri);
        m_window->Action(ui::strings::kOpenServer)->trigger();
        QVERIFY(m_window->ActiveView());
        QCOMPARE(View().Document().Document().Path(), uri);
        int column = 0; // a campaign has its own order of languages
        while (View().Model().headerData(column, Qt::Horizontal) != language)
            QVERIFY(++column < View().Model().columnCount());
        QCOMPARE(Cell(10, 1, column).data().toString(), QStringLiteral("Sehr"));
    }

    // Printing ends every page with its number and the count.
    void printsPages() {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        const QString pdf = m_dir.filePath(QStringLiteral("grid.pdf"));
        printer.setOutputFileName(pdf);
        View().PrintTo(printer);
        QProcess text;
        text.start(QStringLiteral("pdftotext"), {pdf, QStringLiteral("-")});
        QVERIFY2(text.waitForFinished(30000), "pdftotext did not run");
        const QString out = QString::fromUtf8(text.readAllStandardOutput());
        const QStringList pages = out.split(QLatin1Char('\f'), Qt::SkipEmptyParts);
        QVERIFY(pages.size() >= 2);
        for (int page = 1; page <= pages.size(); ++page)
            QVERIFY2(pages[page - 1].contains(
                         QStringLiteral("Page %1 of %2").arg(page).arg(pages.size())),
                     qPrintable(pages[page - 1]));
        QVERIFY(
            out.contains(QStringLiteral("Read out\\nthe scale"))); // escaped, as the grid shows it
    }
};

TRANSLATOR_UI_TEST_MAIN(WindowTest)
#include "WindowTest.moc"
