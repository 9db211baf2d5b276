#include "app/AppContext.h"
#include "common/PostgresServer.h"
#include "common/SampleQuestionnaire.h"
#include "common/TestUtil.h"
#include "dictionary/Dictionary.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionEscaping.h"
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
#include "util/SqlConnection.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QInputDialog>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolBar>

#include <memory>

using namespace Qt::StringLiterals;
using testutil::kEnglish;
using testutil::kFrench;
using testutil::kGerman;

namespace {

// The texts of the message boxes that `act` brings up, answered as a user would click them: the
// boxes to come by the texts in `byText` (without accelerators), once those are used up by
// `button`.
QStringList Boxes(const std::function<void()>& act,
                  QMessageBox::StandardButton button = QMessageBox::Ok, QStringList byText = {}) {
    QStringList texts;
    QTimer timer;
    timer.setInterval(20);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        texts.append(box->text());
        QAbstractButton* clicked = box->button(button);
        if (!byText.isEmpty()) {
            const QString wanted = byText.takeFirst();
            for (QAbstractButton* candidate : box->buttons())
                if (candidate->text().remove(QLatin1Char('&')) == wanted)
                    clicked = candidate;
        }
        (clicked ? clicked : box->buttons().value(0))->click();
    });
    timer.start();
    act();
    return texts;
}

// Types `text` into the path field of the next dialog of type T that opens (the only field of
// an input dialog), as a user would, and presses OK.
template <typename T> void WhenOpen(const QString& text) {
    auto* timer = new QTimer;
    timer->setInterval(20);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, text] {
        auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer->stop();
        timer->deleteLater();
        auto* edit = dialog->template findChild<QLineEdit*>(QStringLiteral("path"));
        if (!edit)
            edit = dialog->template findChild<QLineEdit*>();
        edit->selectAll();
        QTest::keyClicks(edit, text);
        auto* buttons = dialog->template findChild<QDialogButtonBox*>();
        QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    timer->start();
}

// An edit of a cell through the grid: the cell and the language it holds; how the edit begins
// (kClick: a second click on the current cell; Delete clears the cell without an editor); the
// text typed ("<standard>": the standard text of system message 3); how it ends (kClick: the
// grid takes the focus back, as a click beside the editor does), Enter closing the editor when
// the end key leaves it open; the text then stored and how far the current cell moved.
struct Edit {
    const char* name;
    qint32 questionId, responseId;
    int column;
    qint32 language;
    Qt::Key start;
    const char* typed;
    QKeyCombination end;
    bool thenEnter;
    const char* stored;
    int rowMove, columnMove;
    const char* shown = nullptr; // when the cell does not show the stored text escaped
};

const Qt::Key kClick = Qt::Key_unknown, kEnter = Qt::Key_Return, kSpace = Qt::Key_Space,
              kDown = Qt::Key_Down, kX = Qt::Key_X;
// clang-format off
const Edit kEdits[] = {
    // How each key or click opens an edit of "Very", and how each key ends it.
    {"enter, caret at end", 10, 1, 0, kEnglish, kEnter, "Z", kEnter, false, "VeryZ", 0, 0},
    {"click on the current cell", 10, 1, 0, kEnglish, kClick, "Z", kEnter, false, "VeryZ", 0, 0},
    {"backspace deletes the last", 10, 1, 0, kEnglish, Qt::Key_Backspace, "Z", kEnter, false, "VerZ", 0, 0},
    {"space selects all", 10, 1, 0, kEnglish, kSpace, "Z", kEnter, false, "Z", 0, 0},
    {"a character replaces", 10, 1, 0, kEnglish, kX, "Z", kEnter, false, "xZ", 0, 0},
    {"escape puts the text back", 10, 1, 0, kEnglish, kX, "Z", Qt::Key_Escape, false, "Very", 0, 0},
    {"tab keeps and moves on", 10, 1, 0, kEnglish, kEnter, "Z", Qt::Key_Tab, false, "VeryZ", 0, 1},
    {"focus loss keeps", 10, 1, 0, kEnglish, kEnter, "Z", kClick, false, "VeryZ", 0, 0},
    {"arrow ends an edit begun by a key", 10, 1, 0, kEnglish, kX, "Z", kDown, false, "xZ", 1, 0},
    {"arrow ends an edit begun by enter", 10, 1, 0, kEnglish, kEnter, "Z", kDown, false, "VeryZ", 1, 0},
    {"arrow after a click moves the caret", 10, 1, 0, kEnglish, kClick, "Z", kDown, true, "VeryZ", 0, 0},
    {"ctrl+arrow ends any edit", 10, 1, 0, kEnglish, kClick, "Z", Qt::ControlModifier | kDown, false, "VeryZ", 1, 0},
    // The rules of writing back that the grid shows in its own way (the caption table's tests
    // hold every rule).
    {"first column refuses empty", 10, -1, 0, kEnglish, Qt::Key_Delete, "", kEnter, false, "How satisfied are you?", 0, 0},
    {"other column may be emptied", 10, -1, 1, kFrench, Qt::Key_Delete, "", kEnter, false, "", 0, 0},
    {"escapes undone", 10, 1, 2, kGerman, kSpace, "a\\nb\\\\n", kEnter, false, "a\nb\\\n", 0, 0, "a\\nb\\\\n"},
    {"system message emptied", -1, 3, 0, kEnglish, Qt::Key_Delete, "", kEnter, false, "<standard>", 0, 0, ""},
};
// clang-format on

const QStringList kEmptyMenus = {"&File", "&View", "&Help"};
const QString kSaveDictionary = "Dictionary has been modified. Do you want to save?";

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
    bool Modified() { return View().Document().IsModified(); }
    void Trigger(const char* command) { m_window->Action(command)->trigger(); }
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
    // On the questionnaire's grid unless another is given.
    void ClickCell(const QModelIndex& index, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                   ui::CaptionGrid* grid = nullptr) {
        grid = grid ? grid : &Grid();
        grid->scrollTo(index);
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, modifiers,
                          grid->visualRect(index).center());
    }
    // Clicks `first`, then `last` with `modifiers`: a block with Shift, two cells with Control.
    void Select(const QModelIndex& first, const QModelIndex& last,
                Qt::KeyboardModifiers modifiers) {
        ClickCell(first);
        ClickCell(last, modifiers);
    }
    QLineEdit* Editor() { return Grid().findChild<QLineEdit*>(); }
    // Types into the current cell, the first key opening the editor, and leaves the editor open.
    void Type(const QString& text, ui::CaptionGrid* grid = nullptr) {
        grid = grid ? grid : &Grid();
        QTest::keyClicks(grid, text.left(1));
        QVERIFY(grid->findChild<QLineEdit*>());
        QTest::keyClicks(grid->findChild<QLineEdit*>(), text.mid(1));
    }
    QStringList MenuTitles() {
        QStringList titles;
        for (QAction* action : m_window->menuBar()->actions())
            titles.append(action->text());
        return titles;
    }
    // The live entries of the saved dictionary, each its texts by language id joined by "|".
    QStringList SavedDictionary() {
        CDictionary saved;
        util::NoMessages silent;
        if (!saved.Load(m_context->dictionaryPath, silent))
            return {QStringLiteral("not loaded")};
        QStringList entries;
        for (int i = 0; i < saved.GetEntryCount(); ++i) {
            QStringList texts;
            for (const auto& [language, text] : saved.GetEntry(i).m_texts)
                texts.append(text);
            if (!saved.GetEntry(i).m_deleted)
                entries.append(texts.join(QLatin1Char('|')));
        }
        return entries;
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
        Boxes([&] { m_window->close(); }, QMessageBox::No);
        m_window.reset();
        m_context.reset();
        QFile::remove(m_dir.filePath(QStringLiteral("memory.dic")));
    }

    // Each way of beginning and ending an edit, and each rule of writing back.
    void edit_data() { AddRows(kEdits); }
    void edit() {
        QFETCH(int, row);
        const Edit& c = kEdits[row];
        const QString standard = CQuestionnaire::GetStandardErrorMessage(kEnglish, 3);
        const auto text = [&](const char* t) {
            return QString::fromUtf8(t).replace(QStringLiteral("<standard>"), standard);
        };
        const QString before = Stored(c.questionId, c.responseId, c.language);
        const QModelIndex index = Cell(c.questionId, c.responseId, c.column);
        QVERIFY(index.isValid());
        ClickCell(index);
        if (c.start == kClick)
            ClickCell(index);
        else
            QTest::keyClick(&Grid(), c.start);
        if (c.start != Qt::Key_Delete) {
            QVERIFY(Editor());
            QTest::keyClicks(Editor(), text(c.typed));
            if (c.end.key() == kClick)
                Grid().setFocus();
            else
                QTest::keyClick(Editor(), c.end.key(), c.end.keyboardModifiers());
            if (c.thenEnter) {
                QVERIFY(Editor()); // still editing
                QTest::keyClick(Editor(), Qt::Key_Return);
            }
        }
        QTRY_VERIFY(!Editor());
        const QString stored = Stored(c.questionId, c.responseId, c.language);
        QCOMPARE(stored, text(c.stored));
        QCOMPARE(Modified(), stored != before);
        // The cell shows the text as typed, which is the stored text escaped unless the edit
        // stored something else; a refused edit shows the old text again.
        QCOMPARE(index.data().toString(),
                 c.shown ? text(c.shown) : questionnaire::EscapeCaption(stored));
        QCOMPARE(Grid().currentIndex(),
                 View().Model().index(index.row() + c.rowMove, index.column() + c.columnMove));
        if (c.questionId == -1) // a system message back to its standard text is no longer custom
            QVERIFY(Q().GetCustomErrorMessages(c.responseId).Get(c.language).isEmpty());
    }

    // A caption longer than a line editor takes by default survives an edit that changes
    // nothing, and its tip shows markup as text; characters that come other than as one plain
    // key press (composed, or beyond 16 bits) begin an edit on the current cell all the same.
    void unusualInput() {
        const QString longText = QString(40000, u'x') + u"<img src=\"/dev/zero\">"_s;
        questionnaire::WriteCaption(Q(), 10, 2, kFrench, longText);
        const QModelIndex longCell = Cell(10, 2, 1);
        QVERIFY(longCell.isValid());
        const QString tip = longCell.data(Qt::ToolTipRole).toString();
        QVERIFY(tip.endsWith(u"x&lt;img src=&quot;/dev/zero&quot;&gt;</p>"_s));
        QVERIFY(!tip.contains(u"<img"_s));
        ClickCell(longCell);
        ClickCell(longCell);
        QVERIFY(Editor());
        QTest::keyClick(Editor(), Qt::Key_Return);
        QTRY_VERIFY(!Editor());
        QCOMPARE(Stored(10, 2, kFrench), longText);
        QVERIFY(!Modified());

        // The view alone would search the column for "ê", move to "Êtes-vous satisfait ?" and
        // let the next key replace it.
        const QModelIndex french = Cell(10, 1, 1);
        ClickCell(french);
        QInputMethodEvent composed;
        composed.setCommitString(u"ê"_s);
        QApplication::sendEvent(&Grid(), &composed);
        QVERIFY(Editor());
        QCOMPARE(Grid().currentIndex(), french);
        QTest::keyClicks(Editor(), "tre");
        QTest::keyClick(Editor(), Qt::Key_Return);
        QTRY_VERIFY(!Editor());
        QCOMPARE(Stored(10, 1, kFrench), u"être"_s);
        QCOMPARE(Stored(10, -1, kFrench), u"Êtes-vous satisfait ?"_s);

        QCOMPARE(Grid().currentIndex(), french);
        QKeyEvent wide(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, u"\U0001F600"_s);
        QApplication::sendEvent(&Grid(), &wide);
        QVERIFY(Editor());
        QTest::keyClick(Editor(), Qt::Key_Return);
        QTRY_VERIFY(!Editor());
        QCOMPARE(Stored(10, 1, kFrench), u"\U0001F600"_s);
    }

    // Copy lays out the block by tabs and line feeds, with empty texts for unselected cells in
    // it; cut and paste go cell by cell, and the first column refuses to lose its text.
    void clipboard() {
        const int row = RowOf(10, -1);
        const auto cell = [&](int r, int column) { return View().Model().index(r, column); };
        Select(cell(row, 0), cell(row + 1, 1), Qt::ShiftModifier);
        QTest::keyClick(&Grid(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(),
                 "How satisfied are you?\tÊtes-vous satisfait ?\nSatisfaction\t");
        // A cell left out of the selection inside the block copies as empty.
        Select(cell(row, 0), cell(row + 1, 1), Qt::ControlModifier);
        QTest::keyClick(&Grid(), Qt::Key_Insert, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), "How satisfied are you?\t\n\t");

        // Cut: the French caption goes, the English one of the first column stays.
        Select(cell(row, 0), cell(row, 1), Qt::ShiftModifier);
        QTest::keyClick(&Grid(), Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(),
                 "How satisfied are you?\tÊtes-vous satisfait ?");
        QCOMPARE(Stored(10, -1, kEnglish), "How satisfied are you?");
        QCOMPARE(Stored(10, -1, kFrench), QString());

        // Paste from a spreadsheet (CR LF, a last line feed): an empty first-column cell is
        // refused, the others are written.
        QApplication::clipboard()->setText("\tQuel\\tplaisir\r\nShort\tCourt\r\n");
        ClickCell(cell(row, 0));
        QTest::keyClick(&Grid(), Qt::Key_Insert, Qt::ShiftModifier);
        QCOMPARE(Stored(10, -1, kEnglish), "How satisfied are you?");
        QCOMPARE(Stored(10, -1, kFrench), "Quel\tplaisir");
        QCOMPARE(Stored(10, -2, kEnglish), "Short");
        QCOMPARE(Stored(10, -2, kFrench), "Court");
        QVERIFY(Modified());

        // Text dropped on a cell is pasted there.
        QMimeData data;
        data.setText("Dropped");
        const QPoint at = Grid().visualRect(cell(row, 2)).center();
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(Grid().viewport(), &enter);
        QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(Grid().viewport(), &drop);
        QCOMPARE(Stored(10, -1, kGerman), "Dropped");
    }

    // The grid shows the table: the default language first, titles, labels and escaped cells.
    // The menu bar follows the active child; the commands that need a selection follow it.
    void windowsOnADocument() {
        const QAbstractItemModel& model = View().Model();
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), "ENU");
        QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), "FRA");
        QCOMPARE(Grid().columnWidth(2), 200);
        QCOMPARE(model.headerData(RowOf(10, -1), Qt::Vertical).toString(), "Q1");
        QVERIFY(!model.headerData(RowOf(10, -3), Qt::Vertical, Qt::DecorationRole)
                     .value<QIcon>()
                     .isNull());
        QCOMPARE(Cell(10, -3, 0).data().toString(), "Read out\\nthe scale");
        QCOMPARE(MenuTitles(), (QStringList{"&File", "&Edit", "&View", "&Window", "&Help"}));
        // The toolbar: open, save | cut, copy, paste | print | about.
        QStringList tools;
        for (QAction* action : m_window->findChild<QToolBar*>()->actions())
            tools.append(action->isSeparator() ? "|" : action->toolTip());
        QCOMPARE(tools.join(QLatin1Char(' ')),
                 "Open... Save | Cut Copy Paste | Print... | About Translator...");
        Grid().clearSelection();
        QVERIFY(!m_window->Action(ui::strings::kSendToDictionary)->isEnabled());
        ClickCell(Cell(10, 1, 0));
        QVERIFY(m_window->Action(ui::strings::kSendToDictionary)->isEnabled());
        QVERIFY(!m_window->Action(ui::strings::kUndo)->isEnabled());

        // A second window on the same document: numbered titles, one question at the end.
        Trigger(ui::strings::kNewWindow);
        QMdiArea* area = m_window->Area();
        QCOMPARE(area->subWindowList().size(), 2);
        QCOMPARE(area->activeSubWindow()->windowTitle(), "survey.xml:2");
        ClickCell(Cell(10, 1, 1));
        Type("Tout");
        QTest::keyClick(Editor(), Qt::Key_Return);
        // The first window shows the edit made in the second.
        auto* first = qobject_cast<ui::TranslatorView*>(area->subWindowList().front()->widget());
        QCOMPARE(first->Model().index(RowOf(10, 1), 1).data().toString(), "Tout");
        // Not the last window: no question.
        QVERIFY(Boxes([&] { area->activeSubWindow()->close(); }, QMessageBox::Cancel).isEmpty());
        QTRY_COMPARE(area->subWindowList().size(), 1);
        QCOMPARE(Boxes([&] { area->activeSubWindow()->close(); }, QMessageBox::Cancel),
                 QStringList{"Save changes to survey.xml?"});
        QCOMPARE(area->subWindowList().size(), 1);
        // An edit still open when the window closes is saved with the rest.
        ClickCell(Cell(10, 2, 1));
        Type("Peu");
        Boxes([&] { area->activeSubWindow()->close(); }, QMessageBox::Yes);
        QTRY_COMPARE(area->subWindowList().size(), 0);
        CQuestionnaire saved;
        QVERIFY(questionnaire::ReadXmlFile(m_path, saved));
        QCOMPARE(questionnaire::ReadCaption(saved, 10, 1, kFrench), "Tout");
        QCOMPARE(questionnaire::ReadCaption(saved, 10, 2, kFrench), "Peu");
        QTRY_COMPARE(MenuTitles(), kEmptyMenus);
        // The file is now the most recent one.
        QCOMPARE(m_context->recentFiles.Files().value(0), m_path);
        QVERIFY(m_window->OpenFile(m_path));
    }

    // Auto-translate counts each hit it stores, a later source language's over an earlier one.
    // The dictionary window lists every live entry by language, merges edits into their entry,
    // deletes whole rows after one question and lists new entries as rows are sent. At exit the
    // dictionary is offered first, then the questionnaire: Cancel keeps the program open, No
    // leaves the file as it was, Yes saves it.
    void dictionary() {
        CDictionary dictionary;
        dictionary.AddEntry({{kEnglish, "Very"}, {kGerman, "Sehr"}});
        dictionary.AddEntry({{kFrench, "Très"}, {kGerman, "Sehr viel"}});
        for (int i = 2; i < 6; ++i)
            dictionary.AddEntry({{kEnglish, QStringLiteral("e%1").arg(i)},
                                 {kGerman, QStringLiteral("d%1").arg(i)}});
        util::NoMessages silent;
        QVERIFY(dictionary.Save(m_context->dictionaryPath, silent));
        const QStringList asSaved = SavedDictionary();
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kAutoTranslate); }),
                 QStringList{"2 captions have been translated"});
        QCOMPARE(Stored(10, 1, kGerman), "Sehr viel");
        QVERIFY(Modified());
        QCOMPARE(Cell(10, 1, 2).data().toString(), "Sehr viel"); // refilled

        QMdiSubWindow* questionnaire = m_window->Area()->activeSubWindow();
        Trigger(ui::strings::kDictionary);
        ui::DictionaryView* view = m_window->Dictionary();
        QVERIFY(view);
        QCOMPARE(m_window->Area()->activeSubWindow()->windowTitle(), "Dictionary");
        QTRY_COMPARE(MenuTitles(), kEmptyMenus);
        ui::DictionaryModel& model = view->Model();
        ui::CaptionGrid* grid = &view->Grid();
        QCOMPARE(model.rowCount(), 6);
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), "DEU");
        QCOMPARE(model.headerData(5, Qt::Vertical).toString(), "6");

        // A text typed into a cell is merged into its entry; the cell shows the entry's text. Still
        // in the editor when the program is asked to end, it makes the dictionary one to save.
        ClickCell(model.index(0, 0), Qt::NoModifier, grid);
        Type("Brot", grid);
        QCOMPARE(Boxes([&] { m_window->close(); }, QMessageBox::Cancel),
                 QStringList{kSaveDictionary});
        QCOMPARE(model.index(0, 0).data().toString(), "Brot");
        QCOMPARE(model.index(0, 1).data().toString(), "Very");

        // Cells in rows 3 and 5 selected: rows 3, 4 and 5 go, after one question.
        ClickCell(model.index(2, 0), Qt::NoModifier, grid);
        ClickCell(model.index(4, 1), Qt::ControlModifier, grid);
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kDelete); }, QMessageBox::No),
                 QStringList{"Are you sure you want to delete these entrie(s) ?"});
        QCOMPARE(model.rowCount(), 6);
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kDelete); }, QMessageBox::Yes).size(), 1);
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.index(2, 1).data().toString(), "e5");

        // Rows 10/-1 and 10/-2 sent: the first has two languages and is new, the second only one.
        m_window->Area()->setActiveSubWindow(questionnaire);
        Select(Cell(10, -1, 0), Cell(10, -2, 0), Qt::ShiftModifier);
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kSendToDictionary); }),
                 QStringList{"1 entrie(s) have been added to the dictionary"});
        QCOMPARE(model.rowCount(), 4);

        const QString saveSurvey = "Save changes to survey.xml?";
        const auto close = [&] { m_window->close(); };
        QCOMPARE(Boxes(close, QMessageBox::Cancel), QStringList{kSaveDictionary});
        QCOMPARE(Boxes(close, QMessageBox::Cancel, {"No"}),
                 (QStringList{kSaveDictionary, saveSurvey}));
        QVERIFY(m_window->isVisible());
        QVERIFY(m_window->Dictionary());
        QCOMPARE(SavedDictionary(), asSaved);
        QCOMPARE(Boxes(close, QMessageBox::No, {"Yes"}),
                 (QStringList{kSaveDictionary, saveSurvey}));
        QVERIFY(!m_window->isVisible());
        QCOMPARE(SavedDictionary(), (QStringList{"Brot|Very", "Sehr viel|Très", "d5|e5",
                                                 "How satisfied are you?|Êtes-vous satisfait ?"}));
    }

    // A row sent into an entry in a language the dictionary lacked adds no entry, yet the open
    // dictionary window shows the new column at once, its current cell and scroll kept.
    void dictionaryGainsALanguage() {
        CDictionary dictionary;
        for (int i = 0; i < 200; ++i)
            dictionary.AddEntry(
                {{kEnglish, i == 0 ? "How satisfied are you?" : QStringLiteral("e%1").arg(i)},
                 {kGerman, QStringLiteral("d%1").arg(i)}});
        util::NoMessages silent;
        QVERIFY(dictionary.Save(m_context->dictionaryPath, silent));
        QMdiSubWindow* questionnaire = m_window->Area()->activeSubWindow();
        Trigger(ui::strings::kDictionary);
        ui::DictionaryView* view = m_window->Dictionary();
        QVERIFY(view);
        ui::CaptionGrid* grid = &view->Grid();
        const QModelIndex last = view->Model().index(199, 1);
        ClickCell(last, Qt::NoModifier, grid);
        const int scrolled = grid->verticalScrollBar()->value();
        QVERIFY(scrolled > 0);
        QCOMPARE(grid->horizontalHeader()->count(), 2);

        m_window->Area()->setActiveSubWindow(questionnaire);
        ClickCell(Cell(10, -1, 0)); // English and French
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kSendToDictionary); }),
                 QStringList{"0 entrie(s) have been added to the dictionary"});
        QCOMPARE(grid->horizontalHeader()->count(), 3);
        QCOMPARE(view->Model().headerData(2, Qt::Horizontal).toString(), "FRA");
        QCOMPARE(view->Model().index(0, 2).data().toString(), "Êtes-vous satisfait ?");
        QCOMPARE(grid->currentIndex(), view->Model().index(199, 1));
        QCOMPARE(grid->verticalScrollBar()->value(), scrolled);
    }

    // The about box: the product and file version, the legal notice, the file's date.
    void aboutBox() {
        app::VersionInfo version;
        QVERIFY(version.Load());
        ui::AboutDialog about(version);
        QCOMPARE(about.windowTitle(), "About Translator");
        QVERIFY(about.ProductLine().startsWith("Translator 1."));
        QCOMPARE(about.ProductLine().count(QLatin1Char('.')), 3); // a four-part file version
        QCOMPARE(about.LegalLine(), "Copyright (C) Halvard Quist");
        QCOMPARE(
            about.DateLine(),
            QLocale().toString(QFileInfo(QCoreApplication::applicationFilePath()).lastModified(),
                               QLocale::ShortFormat));
        version.dateStatus = app::VersionInfo::DateStatus::Invalid;
        QCOMPARE(ui::AboutDialog::FormatDate(version), "Invalid DateTime");
        version.dateStatus = app::VersionInfo::DateStatus::Null;
        QCOMPARE(ui::AboutDialog::FormatDate(version), QString());
    }

    // The round trip as a user makes it, in text and then in XLIFF (one file per target
    // language): nothing follows a completed export; the translator's file is imported from its
    // dialog, and an import that changed captions refills the grid and marks the document
    // modified.
    void exportThenImport() {
        const QString file = m_dir.filePath("for translators.txt");
        QFile::remove(file);
        WhenOpen<ui::ExportDialog>(file);
        QVERIFY(Boxes([&] { Trigger(ui::strings::kExport); }).isEmpty());
        const QByteArray bytes = testutil::ReadAll(file);
        QVERIFY(bytes.startsWith("\xFF\xFE"));
        QString text = QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData()) + 1,
                                          (bytes.size() - 2) / 2);
        QVERIFY(text.startsWith("QuestionId\tResponseId\t1036(FRA)\t1033(ENU)\t1031(DEU)"));
        QVERIFY(text.contains("10\t1\tTrès\tVery"));
        QVERIFY(!Modified());

        // The translator's work, saved over the export.
        text.replace("10\t1\tTrès\tVery", "10\t1\tExtrêmement\tVery");
        QVERIFY(testutil::WriteAll(file, testutil::Utf16Le(text)));
        WhenOpen<ui::ImportDialog>(file);
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kImport); }),
                 QStringList{"1 captions have been modified!"});
        QCOMPARE(Stored(10, 1, kFrench), "Extrêmement");
        QCOMPARE(Cell(10, 1, 1).data().toString(), "Extrêmement");
        QVERIFY(Modified());

        // The typed ending chooses XLIFF.
        const QString english = m_dir.filePath("survey.ENU.xlf");
        WhenOpen<ui::ExportDialog>(m_dir.filePath("survey.xlf"));
        QVERIFY(Boxes([&] { Trigger(ui::strings::kExport); }).isEmpty());
        QVERIFY(QFileInfo::exists(m_dir.filePath("survey.DEU.xlf")));
        QByteArray xliff = testutil::ReadAll(english);
        const QByteArray unit =
            "<source>Extrêmement</source><target state=\"translated\">Very</target>";
        QVERIFY2(xliff.contains(unit), xliff.constData());
        xliff.replace(unit,
                      "<source>Extrêmement</source><target state=\"final\">Extremely</target>");
        QVERIFY(testutil::WriteAll(english, xliff));
        WhenOpen<ui::ImportDialog>(english);
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kImport); }),
                 QStringList{"1 captions have been modified!"});
        QCOMPARE(Stored(10, 1, kEnglish), "Extremely");
    }

    // A questionnaire saved to a campaign on a server becomes that campaign; opened from the
    // server again it shows what was saved.
    void savesToAndOpensFromAServer() {
        testutil::PostgresServer server;
        QVERIFY2(server.Start(), qPrintable(server.Error()));
        const QString uri = server.CreateDatabase("window");
        QVERIFY(!uri.isEmpty());
        const QVariant language = View().Model().headerData(1, Qt::Horizontal);
        ClickCell(Cell(10, 1, 1));
        Type("Sehr");
        QTest::keyClick(Editor(), Qt::Key_Return);
        QVERIFY(Modified());
        WhenOpen<QInputDialog>("/tmp/not-a-server.qew");
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kSaveServer); }),
                 QStringList{"'/tmp/not-a-server.qew' is not a server location: it begins with "
                             "postgresql://."});
        QCOMPARE(View().Document().Document().Path(), m_path);
        WhenOpen<QInputDialog>(uri);
        Trigger(ui::strings::kSaveServer);
        QCOMPARE(View().Document().Document().Path(), uri);
        QVERIFY(!Modified());
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Translator - [%1]").arg(uri));
        QCOMPARE(m_context->recentFiles.Files().value(0), uri);

        Trigger(ui::strings::kClose);
        QVERIFY(!m_window->ActiveView());
        WhenOpen<QInputDialog>(uri);
        Trigger(ui::strings::kOpenServer);
        QVERIFY(m_window->ActiveView());
        QCOMPARE(View().Document().Document().Path(), uri);
        int column = 0; // a campaign has its own order of languages
        while (View().Model().headerData(column, Qt::Horizontal) != language)
            QVERIFY(++column < View().Model().columnCount());
        QCOMPARE(Cell(10, 1, column).data().toString(), "Sehr");

        // Saved there again, the campaign is saved; another questionnaire asks first, and No
        // leaves the campaign on the server as it was.
        WhenOpen<QInputDialog>(uri);
        QVERIFY(Boxes([&] { Trigger(ui::strings::kSaveServer); }).isEmpty());
        QVERIFY(m_window->OpenFile(m_path));
        QCOMPARE(View().Document().Document().Path(), m_path);
        ClickCell(Cell(10, 1, 1));
        Type("Nicht");
        QTest::keyClick(Editor(), Qt::Key_Return);
        const QString replace =
            QStringLiteral(
                "The database '%1' already holds a campaign.\nDo you want to replace it?")
                .arg(util::sql::PrintableLocation(uri));
        WhenOpen<QInputDialog>(uri);
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kSaveServer); }, QMessageBox::No),
                 QStringList{replace});
        QCOMPARE(View().Document().Document().Path(), m_path);
        QVERIFY(Modified());
        WhenOpen<QInputDialog>(uri);
        QCOMPARE(Boxes([&] { Trigger(ui::strings::kSaveServer); }, QMessageBox::Yes),
                 QStringList{replace});
        QCOMPARE(View().Document().Document().Path(), uri);
        QVERIFY(!Modified());
    }

    // Printing ends every page with its number and the count.
    void printsPages() {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        const QString pdf = m_dir.filePath("grid.pdf");
        printer.setOutputFileName(pdf);
        View().PrintTo(printer);
        QProcess text;
        text.start("pdftotext", {pdf, "-"});
        QVERIFY2(text.waitForFinished(30000), "pdftotext did not run");
        const QString out = QString::fromUtf8(text.readAllStandardOutput());
        const QStringList pages = out.split(QLatin1Char('\f'), Qt::SkipEmptyParts);
        QVERIFY(pages.size() >= 2);
        for (int page = 1; page <= pages.size(); ++page)
            QVERIFY2(pages[page - 1].contains(
                         QStringLiteral("Page %1 of %2").arg(page).arg(pages.size())),
                     qPrintable(pages[page - 1]));
        QVERIFY(out.contains("Read out\\nthe scale")); // escaped, as the grid shows it
    }
};

TRANSLATOR_UI_TEST_MAIN(WindowTest)
#include "WindowTest.moc"
