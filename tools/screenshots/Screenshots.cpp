// Draws the pictures of the window for the documentation: the main window on a questionnaire,
// the export and import dialogs, and the dictionary's conflict dialog.
//   translator_screenshots OUTPUT_FOLDER QUESTIONNAIRE
#include "app/AppContext.h"
#include "dictionary/ConflictList.h"
#include "dictionary/Dictionary.h"
#include "ui/AboutDialog.h"
#include "ui/CaptionGrid.h"
#include "ui/CaptionModel.h"
#include "ui/MainWindow.h"
#include "ui/OpenDocument.h"
#include "ui/Strings.h"
#include "ui/Translations.h"
#include "ui/TranslatorView.h"
#include "ui/dialogs/ExportDialog.h"
#include "ui/dialogs/ImportDialog.h"
#include "ui/support/ConflictDialog.h"
#include "util/Messages.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

namespace {

bool Save(QWidget& widget, const QString& folder, const QString& name) {
    widget.show();
    QApplication::processEvents();
    const QString path = QDir(folder).filePath(name);
    if (!widget.grab().save(path)) {
        QTextStream(stderr) << "cannot write " << path << '\n';
        return false;
    }
    QTextStream(stdout) << path << '\n';
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The pictures must not show, or change, the profile of whoever makes them.
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit() + "/config");
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit() + "/data");
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Halvard Quist"));
    QApplication::setApplicationName(QStringLiteral("Translator"));
    // The pictures show the program in English, with its icon.
    ui::SetUpApplication(application);
    ui::InstallTranslations(application, {QStringLiteral("en")});
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3) {
        QTextStream(stderr) << "usage: translator_screenshots OUTPUT_FOLDER QUESTIONNAIRE\n";
        return 2;
    }
    const QString folder = arguments[1];
    if (!QDir().mkpath(folder)) {
        QTextStream(stderr) << "cannot create " << folder << '\n';
        return 1;
    }
    app::AppContext context;
    context.versionInfo.Load();
    context.dictionaryPath = home.filePath(QStringLiteral("memory.dic"));
    ui::MainWindow window(context);
    window.resize(1100, 640);
    window.show();
    if (!window.OpenFile(arguments[2]))
        return 1;
    ui::TranslatorView* view = window.ActiveView();
    // A few cells selected, as when a user is about to copy them.
    ui::CaptionGrid& grid = view->Grid();
    grid.setCurrentIndex(view->Model().index(4, 1));
    grid.selectionModel()->select(
        QItemSelection(view->Model().index(4, 1), view->Model().index(5, 2)),
        QItemSelectionModel::ClearAndSelect);
    bool ok = Save(window, folder, QStringLiteral("main-window.png"));

    // The question of File > Save to Server, answered with Cancel once drawn.
    QTimer::singleShot(200, &window, [&] {
        if (QWidget* asking = QApplication::activeModalWidget()) {
            ok = Save(*asking, folder, QStringLiteral("server-location.png")) && ok;
            asking->close();
        }
    });
    window.Action(ui::strings::kSaveServer)->trigger();

    const CQuestionnaire& q = *view->Document().Document().Questionnaire();
    ui::ExportDialog exportDialog(q, &window);
    ok = Save(exportDialog, folder, QStringLiteral("export-dialog.png")) && ok;
    exportDialog.hide();
    ui::ImportDialog importDialog(q, &window);
    ok = Save(importDialog, folder, QStringLiteral("import-dialog.png")) && ok;
    importDialog.hide();

    // A row whose English text is known in one entry and whose French text in another.
    CDictionary dictionary;
    dictionary.AddEntry(
        {{1033, QStringLiteral("Very satisfied")}, {1031, QStringLiteral("Sehr zufrieden")}});
    dictionary.AddEntry(
        {{1036, QStringLiteral("Très satisfait")}, {1031, QStringLiteral("Äußerst zufrieden")}});
    const CDicEntry::Texts row = {{1033, QStringLiteral("Very satisfied")},
                                  {1036, QStringLiteral("Très satisfait")}};
    const ConflictList list({0, 1}, row, dictionary);
    ui::ConflictDialog conflict(list, nullptr, &window);
    ok = Save(conflict, folder, QStringLiteral("conflict-dialog.png")) && ok;
    conflict.hide();

    // The dictionary window over a memory filled from the questionnaire's rows.
    {
        CDictionary memory;
        const questionnaire::CaptionTable& table = view->Document().Captions();
        for (qsizetype r = 0; r < table.RowCount(); ++r) {
            CDicEntry::Texts texts;
            for (int c = 0; c < table.ColumnCount(); ++c)
                if (const QString text = table.Text(r, c); !text.isEmpty())
                    texts[table.ColumnLanguage(c)] = text;
            if (texts.size() > 1)
                memory.AddEntry(texts);
        }
        util::NoMessages silent;
        if (!memory.Save(context.dictionaryPath, silent))
            return 1;
    }
    window.ToggleDictionary();
    ok = Save(window, folder, QStringLiteral("dictionary-window.png")) && ok;
    ui::AboutDialog about(context.versionInfo, &window);
    ok = Save(about, folder, QStringLiteral("about-box.png")) && ok;
    return ok ? 0 : 1;
}
