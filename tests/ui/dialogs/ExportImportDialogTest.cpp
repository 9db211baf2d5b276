// The export and import dialogs and the version list, driven with mouse and keyboard.
#include "common/SampleQuestionnaire.h"
#include "ui/UiTestMain.h"
#include "ui/dialogs/ArrowIcon.h"
#include "ui/dialogs/ExportDialog.h"
#include "ui/dialogs/ImportDialog.h"
#include "ui/dialogs/VersionComboBox.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QStyleHints>
#include <QToolButton>
#include <QTreeWidget>

using exchange::ExportOptions;
using namespace testutil;

namespace {

// The closed version list joins names by the user's list separator: these tests run as a user in
// the United States, whose separator is a comma, whatever the machine's locale. Set before main()
// so that Qt reads it when it first looks at the system locale.
[[maybe_unused]] const bool kUnitedStatesUser = qputenv("LC_ALL", "en_US.UTF-8");

// The dialogs with their file dialog and message box replaced by recorders.
template <class Dialog> class Recorded : public Dialog {
public:
    using Dialog::Dialog;
    QStringList asked, messages;
    QString chosen;

protected:
    QString ChooseFile(const QString& current) override {
        asked.append(current);
        return chosen;
    }
};

class TestExportDialog : public Recorded<ui::ExportDialog> {
    using Recorded::Recorded;
    void ShowMessage(const QString& text) override { messages.append(text); }
};
using TestImportDialog = Recorded<ui::ImportDialog>;

// The export's check boxes, and the options they set in the same order.
// clang-format off
const QStringList kExportBoxes = {
    "Exclude already translated captions", "Exclude duplicated captions",
    "Exclude non visible questions", "Exclude system messages", "Exclude routings",
    "Exclude question long captions", "Exclude question short captions", "Exclude instructions",
    "Exclude comments", "Exclude responses", "Show shortcuts and entry-codes"};

QList<bool> Flags(const ExportOptions& o) {
    return {o.excludeTranslated, o.excludeDuplicates, o.excludeNonVisible,
            o.kinds.excludeSystemMessages, o.kinds.excludeRoutings, o.kinds.excludeLongCaptions,
            o.kinds.excludeShortCaptions, o.kinds.excludeInstructions, o.kinds.excludeComments,
            o.kinds.excludeResponses, o.showShortcuts};
}
// clang-format on

const QHash<QString, qint32> kIds = {{"FRA", kFrench}, {"ENU", kEnglish}, {"DEU", kGerman}};

QCheckBox* Box(QWidget& dialog, const QString& text) {
    for (QCheckBox* box : dialog.findChildren<QCheckBox*>())
        if (box->text() == text)
            return box;
    return nullptr;
}

// Clicks a check box on its label: a box wider than its text takes no click at its centre.
void ClickBox(QCheckBox* box) {
    QVERIFY(box);
    QTest::mouseClick(box, Qt::LeftButton, {},
                      QPoint(box->sizeHint().width() / 2, box->height() / 2));
}

template <class T> T* Child(QWidget& dialog, const char* name) {
    return dialog.findChild<T*>(QString::fromLatin1(name));
}

void Show(QWidget& widget) {
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
}

void ClickOk(QWidget& dialog) {
    QTest::mouseClick(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                      Qt::LeftButton);
}

// Clicks a language row on its abbreviation, right of the check box, which makes that cell
// current, then toggles its check with the space bar.
void ToggleRow(QTreeWidget* list, int row) {
    const QRect rect = list->visualItemRect(list->topLevelItem(row));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, QPoint(60, rect.center().y()));
    QTest::keyClick(list, Qt::Key_Space);
}

// Toggles a version in the open popup, by a click or by the space bar on the item.
void ToggleVersion(ui::VersionComboBox& combo, int item, bool byKey) {
    QAbstractItemView* view = combo.view();
    const QModelIndex index = view->model()->index(item, 0);
    if (byKey) {
        view->setCurrentIndex(index);
        QTest::keyClick(view, Qt::Key_Space);
    } else {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
    }
}

// "1,2": lists compared as text, which also shows them when they differ.
template <class T> QString Joined(const QList<T>& list) {
    QStringList texts;
    for (const T value : list)
        texts.append(QString::number(value));
    return texts.join(QLatin1Char(','));
}

QString CheckedItems(const ui::VersionComboBox& combo) {
    QList<int> items;
    for (int i = 0; i < combo.count(); ++i)
        if (combo.IsChecked(i))
            items.append(i);
    return Joined(items);
}

} // namespace

class ExportImportDialogTest : public QObject {
    Q_OBJECT

    const CQuestionnaire m_q = MakeSample();

private Q_SLOTS:
    // A popup ignores releases for a double-click interval after it opens; kept short so that
    // the version tests can wait it out and see the popup stay open on its own merits.
    void initTestCase() { QGuiApplication::styleHints()->setMouseDoubleClickInterval(20); }

    // The dialog as it opens; a language moved up and down, unchecked so that its check is seen
    // to travel with it; each option box; then OK refused, the file asked for before the languages,
    // until a file and two languages are given.
    void exportDialog() {
        TestExportDialog dialog(m_q);
        Show(dialog);
        QCOMPARE(dialog.windowTitle(), "Export languages you want to export");
        QVERIFY(dialog.Path().isEmpty());
        auto* list = Child<QTreeWidget>(dialog, "languages");
        QCOMPARE(list->topLevelItem(1)->text(1), m_q.GetLanguage(1).m_name);
        QCOMPARE(list->headerItem()->text(0) + "|" + list->headerItem()->text(1),
                 "Abbreviation|Language");
        QCOMPARE(QList<int>({list->columnWidth(0), list->columnWidth(1)}), QList<int>({100, 200}));
        QCOMPARE(Child<ui::VersionComboBox>(dialog, "versions")->DisplayText(), "All versions");
        QVERIFY(!Child<QToolButton>(dialog, "moveUp")->icon().isNull());

        const struct {
            const char* name;
            int toggled; // the row clicked and unchecked first, -1: none
            const char* button;
            const char* order; // exported languages in capitals, the selected one in brackets
        } moves[] = {{"no selection", -1, "moveDown", "FRA ENU DEU"},
                     {"up", 1, "moveUp", "[enu] FRA DEU"},
                     {"first up", -1, "moveUp", "[enu] FRA DEU"},
                     {"first down", -1, "moveDown", "FRA [enu] DEU"},
                     {"down", -1, "moveDown", "FRA DEU [enu]"},
                     {"last down", -1, "moveDown", "FRA DEU [enu]"}};
        for (const auto& move : moves) {
            if (move.toggled >= 0)
                ToggleRow(list, move.toggled);
            QTest::mouseClick(Child<QToolButton>(dialog, move.button), Qt::LeftButton);
            const QList<qint32> exported = dialog.Options().languages;
            QStringList shown;
            for (int i = 0; i < list->topLevelItemCount(); ++i) {
                const QTreeWidgetItem* item = list->topLevelItem(i);
                QString text = item->text(0);
                if (!exported.contains(kIds.value(text)))
                    text = text.toLower();
                shown.append(item->isSelected() ? "[" + text + "]" : text);
            }
            QCOMPARE(move.name + (": " + shown.join(' ')),
                     move.name + (": " + QString(move.order)));
        }

        // Each box sets its own option and no other; the version list hands over its choice.
        for (int box = 0; box < kExportBoxes.size(); ++box) {
            ClickBox(Box(dialog, kExportBoxes[box]));
            QList<bool> flags(kExportBoxes.size(), false);
            flags[box] = true;
            QCOMPARE(kExportBoxes[box] + ": " + Joined(Flags(dialog.Options())),
                     kExportBoxes[box] + ": " + Joined(flags));
            ClickBox(Box(dialog, kExportBoxes[box]));
        }
        auto* versions = Child<ui::VersionComboBox>(dialog, "versions");
        versions->showPopup();
        ToggleVersion(*versions, 2, false);
        versions->hidePopup();

        // Rows now FRA, DEU, enu: each step types a path, toggles rows, then clicks OK.
        const char* noFile = "Please select an output file!";
        const char* twoLanguages = "Please select at least 2 languages";
        const struct {
            const char* name;
            const char* typed;
            QList<int> toggled;
            const char* outcome; // the message shown, or "closed"
        } oks[] = {{"no file", "", {}, noFile},
                   {"file before languages", "", {0}, noFile},
                   {"one language", "out.txt", {}, twoLanguages},
                   {"no language", "", {1}, twoLanguages},
                   {"two languages", "", {0, 1}, "closed"}};
        for (const auto& ok : oks) {
            QTest::keyClicks(Child<QLineEdit>(dialog, "path"), ok.typed);
            for (int row : ok.toggled)
                ToggleRow(list, row);
            ClickOk(dialog);
            const QString outcome =
                dialog.messages.join('|') + (dialog.isVisible() ? "" : "closed");
            QCOMPARE(ok.name + (": " + outcome), ok.name + (": " + QString(ok.outcome)));
            dialog.messages.clear();
        }
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.Path(), "out.txt");
        QCOMPARE(dialog.Options().languages, QList<qint32>({kFrench, kGerman}));
        QCOMPARE(dialog.Options().versions, QList<qint32>{2});
    }

    // The format chosen with the keys; the file's ending follows it, another ending stays. "..."
    // starts from the path in the field and replaces it unless cancelled.
    void formatFollowsEnding() {
        TestExportDialog dialog(m_q);
        Show(dialog);
        auto* path = Child<QLineEdit>(dialog, "path");
        auto* format = Child<QComboBox>(dialog, "format");
        QTest::keyClicks(path, "out.txt");
        const struct {
            Qt::Key key;
            ui::ExportDialog::Format format;
            const char* path;
        } steps[] = {{Qt::Key_Down, ui::ExportDialog::Format::Xliff12, "out.xlf"},
                     {Qt::Key_Down, ui::ExportDialog::Format::Xliff20, "out.xlf"},
                     {Qt::Key_Up, ui::ExportDialog::Format::Xliff12, "out.xlf"},
                     {Qt::Key_Up, ui::ExportDialog::Format::TabSeparated, "out.txt"}};
        for (const auto& step : steps) {
            QTest::keyClick(format, step.key);
            QCOMPARE(dialog.ChosenFormat(), step.format);
            QCOMPARE(dialog.Path(), step.path);
        }
        path->setText("notes.dat");
        QTest::keyClick(format, Qt::Key_Down);
        QCOMPARE(dialog.Path(), "notes.dat");
        // A typed ending chooses the format in its turn.
        QTest::keyClicks(path, ".txt");
        QCOMPARE(dialog.ChosenFormat(), ui::ExportDialog::Format::TabSeparated);
        path->clear();
        QTest::keyClicks(path, "mine.XLIFF");
        QCOMPARE(dialog.ChosenFormat(), ui::ExportDialog::Format::Xliff12);
        QCOMPARE(dialog.Path(), "mine.XLIFF");
        // And so does the ending of a file chosen with "...", which is kept as chosen.
        const struct {
            const char* chosen; // empty: cancelled
            ui::ExportDialog::Format format;
        } chosen[] = {{"", ui::ExportDialog::Format::Xliff12},
                      {"/tmp/a.txt", ui::ExportDialog::Format::TabSeparated},
                      {"/tmp/b.xlf", ui::ExportDialog::Format::Xliff12},
                      {"/tmp/c.dat", ui::ExportDialog::Format::Xliff12},
                      {"/tmp/d.TXT", ui::ExportDialog::Format::TabSeparated},
                      {"/tmp/e.xliff", ui::ExportDialog::Format::Xliff12}};
        for (const auto& file : chosen) {
            const QString before = dialog.Path();
            dialog.chosen = file.chosen;
            QTest::mouseClick(Child<QPushButton>(dialog, "browse"), Qt::LeftButton);
            QCOMPARE(dialog.asked.last(), before);
            QCOMPARE(dialog.ChosenFormat(), file.format);
            QCOMPARE(dialog.Path(), *file.chosen ? file.chosen : before);
        }
    }

    // Versions 1 and 2 are "Web" and "Phone"; item 0 is "All versions". Lists as in Joined.
    void versionRules_data() {
        QTest::addColumn<QList<qint32>>("preselected");
        QTest::addColumn<QList<int>>("toggles");
        QTest::addColumn<bool>("byKey");
        QTest::addColumn<QString>("checked");
        QTest::addColumn<QString>("chosen"); // empty: all versions
        QTest::addColumn<QString>("text");
        using L = QList<int>;
        // clang-format off
        QTest::newRow("opened") << L{} << L{} << false << "0" << "" << "All versions";
        QTest::newRow("preselected") << L{2} << L{} << false << "2" << "2" << "Phone";
        QTest::newRow("unknown preselected") << L{99} << L{} << false << "0" << "" << "All versions";
        QTest::newRow("a version clears all") << L{} << L{2} << false << "2" << "2" << "Phone";
        QTest::newRow("by space bar") << L{} << L{1} << true << "1" << "1" << "Web";
        QTest::newRow("every version") << L{} << L{2, 1} << false << "1,2" << "" << "Web, Phone";
        QTest::newRow("all clears versions") << L{1, 2} << L{0} << true << "0" << "" << "All versions";
        QTest::newRow("all unchecked") << L{} << L{0} << false << "" << "" << "";
        QTest::newRow("version unchecked") << L{1} << L{1} << true << "" << "" << "";
        // clang-format on
    }

    void versionRules() {
        QFETCH(QList<qint32>, preselected);
        QFETCH(QList<int>, toggles);
        QFETCH(bool, byKey);
        ui::VersionComboBox combo;
        combo.Fill(m_q, {1});
        combo.Fill(m_q, preselected); // a second fill starts afresh
        Show(combo);
        combo.showPopup();
        QTest::qWait(40);
        for (int item : toggles) {
            ToggleVersion(combo, item, byKey);
            QVERIFY(combo.view()->isVisible());
        }
        QTEST(CheckedItems(combo), "checked");
        QTEST(Joined(combo.ChosenVersions(m_q)), "chosen");
        QTEST(combo.DisplayText(), "text");
        QTest::keyClick(combo.view(), Qt::Key_Escape);
        QTRY_VERIFY(!combo.view()->isVisible());
    }

    // The separator between the checked names, by the user's locale; one not in the table
    // takes a semicolon.
    void listSeparator() {
        for (const auto& [locale, separator] :
             {std::pair{"en_US", ", "}, std::pair{"de_DE", "; "}, std::pair{"C", "; "}})
            QCOMPARE(locale + (": " + ui::VersionComboBox::JoinSeparator(
                                          ui::VersionComboBox::ListSeparator(locale))),
                     locale + (": " + QString(separator)));
    }

    void noVersions() {
        ui::VersionComboBox combo;
        combo.Fill(CQuestionnaire(), {1});
        QCOMPARE(combo.count(), 1);
        QCOMPARE(CheckedItems(combo), "0");
        QVERIFY(combo.ChosenVersions(CQuestionnaire()).isEmpty());
    }

    // Up and down are mirror images, drawn rather than blank.
    void arrowIcons() {
        const QImage up = ui::ArrowIcon(Qt::UpArrow).pixmap(32).toImage();
        const QImage down = ui::ArrowIcon(Qt::DownArrow).pixmap(32).toImage();
        QVERIFY(qAlpha(up.pixel(16, 6)) > 0);
        QVERIFY(qAlpha(up.pixel(4, 28)) == 0);
        // Equal but for rounding in the antialiased edges.
        const QImage mirrored = up.mirrored(false, true);
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x)
                QVERIFY(qAbs(qAlpha(mirrored.pixel(x, y)) - qAlpha(down.pixel(x, y))) <= 2);
        QVERIFY(ui::ArrowIcon(Qt::NoArrow).isNull());
    }

    void importOptions_data() {
        QTest::addColumn<bool>("onlyUnchanged");
        QTest::addColumn<bool>("copyIdentical");
        QTest::newRow("only unchanged") << true << false;
        QTest::newRow("copy identical") << false << true;
        QTest::newRow("both") << true << true;
    }

    // The dialog opens with no file, no box and the main language preselected in a disabled
    // reference list, which a box enables; once disabled again the list keeps its choice.
    void importOptions() {
        QFETCH(bool, onlyUnchanged);
        QFETCH(bool, copyIdentical);
        TestImportDialog dialog(m_q);
        Show(dialog);
        QCOMPARE(dialog.windowTitle(), "Import file");
        QVERIFY(dialog.Path().isEmpty());
        QVERIFY(!dialog.OnlyUnchanged() && !dialog.CopyIdentical());
        auto* reference = Child<QComboBox>(dialog, "reference");
        QCOMPARE(reference->count(), 3);
        QCOMPARE(reference->itemText(0), "FRA - " + m_q.GetLanguage(0).m_name);
        QCOMPARE(reference->currentText(), "ENU - " + m_q.GetLanguage(1).m_name);
        QVERIFY(!reference->isEnabled());
        QCOMPARE(dialog.ReferenceLanguage(), kEnglish);
        // "..." starts from the typed path and replaces it unless cancelled.
        QTest::keyClicks(Child<QLineEdit>(dialog, "path"), "a.txt");
        for (const char* chosen : {"", "/tmp/b.txt"}) {
            dialog.chosen = chosen;
            QTest::mouseClick(Child<QPushButton>(dialog, "browse"), Qt::LeftButton);
        }
        QCOMPARE(dialog.asked, QStringList({"a.txt", "a.txt"}));
        QCOMPARE(dialog.Path(), "/tmp/b.txt");
        QCheckBox* only = Box(dialog, "Only import unchanged captions since the export");
        QCheckBox* copy = Box(dialog, "Copy over identical strings");
        for (auto [box, on] : {std::pair{only, onlyUnchanged}, std::pair{copy, copyIdentical}})
            if (on)
                ClickBox(box);
        QVERIFY(reference->isEnabled());
        QTest::keyClick(reference, Qt::Key_Down); // English to German
        QCOMPARE(dialog.OnlyUnchanged(), onlyUnchanged);
        QCOMPARE(dialog.CopyIdentical(), copyIdentical);
        QCOMPARE(dialog.ReferenceLanguage(), kGerman);
        if (onlyUnchanged)
            ClickBox(only);
        QCOMPARE(reference->isEnabled(), copyIdentical);
        if (copyIdentical)
            ClickBox(copy);
        QVERIFY(!reference->isEnabled());
        QCOMPARE(dialog.ReferenceLanguage(), kGerman);
        ClickOk(dialog);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));

        CQuestionnaire noMain = MakeSample();
        noMain.SetDefaultLanguage(0);
        QCOMPARE(TestImportDialog(noMain).ReferenceLanguage(), 0);
    }
};

TRANSLATOR_UI_TEST_MAIN(ExportImportDialogTest)

#include "ExportImportDialogTest.moc"
