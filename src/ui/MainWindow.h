#pragma once

#include <QMainWindow>

#include <memory>
#include <vector>

class QAction;
class QLabel;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QToolBar;

namespace app {
class AppContext;
}
namespace util {
class Messages;
}

namespace ui {

class CaptionGrid;
class DictionaryHolder;
class DictionaryView;
class OpenDocument;
class TranslatorView;

// The program's main window: open questionnaires as child windows, menus that follow the active
// child, a toolbar, a status bar with the lock-key panes, and the recent files.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(app::AppContext& app, QWidget* parent = nullptr);
    ~MainWindow() override;

    // Opens a questionnaire in a new child window, or brings forward the one that shows it.
    // False when it could not be opened (the reason was shown).
    bool OpenFile(const QString& path);

    QMdiArea* Area() const { return m_area; }
    // The view of the active child window, null when none or when it is the dictionary's.
    TranslatorView* ActiveView() const;
    // The dictionary window's view, null while it is closed.
    DictionaryView* Dictionary() const;
    // Opens the dictionary window, or closes it when it is open.
    void ToggleDictionary();
    // A command by its menu text without accelerators, for tests and scripting.
    QAction* Action(const char* text) const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void CreateActions();
    void BuildMenus();
    void UpdateCommands();
    void UpdateRecentFiles();
    void UpdateLockPanes();
    void UpdateTitles();
    QMdiSubWindow* AddView(const std::shared_ptr<OpenDocument>& document);
    // Asks about unsaved changes when `window` is the last one on its document. False when
    // the user cancelled or the save failed: the window stays.
    bool MayClose(QMdiSubWindow* window);
    // Asks whether a modified document is saved; false when the user cancelled or it failed.
    bool AskToSave(OpenDocument& document);
    // Ends the edits open in any grid, the dictionary's too, keeping their text.
    void FinishEdits();
    bool SaveDocument(OpenDocument& document, const QString& target);
    void Open();
    void OpenFromServer();
    void Save();
    void SaveAs();
    void SaveToServer();
    // Asks for a server URI; empty when the user cancelled or gave something else.
    QString AskServerLocation(const char* title, const QString& proposed);
    void NewWindow();
    void PrintWithDialog();
    void PrintDirect();
    void PrintPreview();
    void ShowContextMenu(const QPoint& globalPosition);
    std::vector<QMdiSubWindow*> WindowsOf(const OpenDocument& document) const;
    // The grid of the active child, whichever kind it is.
    CaptionGrid* ActiveGrid() const;
    void ShowAbout();

    app::AppContext& m_app;
    std::unique_ptr<util::Messages> m_messages; // boxes over this window
    std::unique_ptr<DictionaryHolder> m_dictionary;
    QMdiArea* m_area;
    QToolBar* m_toolbar = nullptr;
    QLabel* m_capsPane = nullptr;
    QLabel* m_numPane = nullptr;
    QLabel* m_scrollPane = nullptr;

    QAction* m_open = nullptr;
    QAction* m_close = nullptr;
    QAction* m_save = nullptr;
    QAction* m_saveAs = nullptr;
    QAction* m_openServer = nullptr;
    QAction* m_saveServer = nullptr;
    QAction* m_export = nullptr;
    QAction* m_import = nullptr;
    QAction* m_print = nullptr;
    QAction* m_printDirect = nullptr;
    QAction* m_printPreview = nullptr;
    QAction* m_recentNone = nullptr;
    std::vector<QAction*> m_recent;
    QAction* m_exit = nullptr;
    QAction* m_undo = nullptr;
    QAction* m_cut = nullptr;
    QAction* m_copy = nullptr;
    QAction* m_paste = nullptr;
    QAction* m_selectAll = nullptr;
    QAction* m_showToolbar = nullptr;
    QAction* m_showStatusBar = nullptr;
    QAction* m_newWindow = nullptr;
    QAction* m_cascade = nullptr;
    QAction* m_tile = nullptr;
    QAction* m_arrange = nullptr;
    QAction* m_nextPane = nullptr;
    QAction* m_previousPane = nullptr;
    QAction* m_sendToDictionary = nullptr;
    QAction* m_autoTranslate = nullptr;
    QAction* m_dictionaryToggle = nullptr;
    QAction* m_delete = nullptr;
    QAction* m_about = nullptr;
    QMdiSubWindow* m_dictionaryWindow = nullptr;
    bool m_closingAll = false;
};

} // namespace ui
