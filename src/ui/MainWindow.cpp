#include "ui/MainWindow.h"

#include "app/AppContext.h"
#include "campaign/store/CampaignQuestionnaire.h"
#include "ui/AboutDialog.h"
#include "ui/CaptionGrid.h"
#include "ui/DictionaryView.h"
#include "ui/OpenDocument.h"
#include "ui/RowIcons.h"
#include "ui/Strings.h"
#include "ui/TranslatorView.h"
#include "util/FileSystem.h"
#include "util/SqlConnection.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QInputDialog>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>

#ifdef TRANSLATOR_HAVE_X11
#include <X11/XKBlib.h>
#endif

namespace ui {

namespace {

// A child window: asks about unsaved changes before it closes.
class ChildFrame : public QMdiSubWindow {
public:
    ChildFrame(std::function<bool(QMdiSubWindow*)> mayClose) : m_mayClose(std::move(mayClose)) {
        setAttribute(Qt::WA_DeleteOnClose);
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        if (!m_mayClose(this)) {
            event->ignore();
            return;
        }
        QMdiSubWindow::closeEvent(event);
    }

private:
    std::function<bool(QMdiSubWindow*)> m_mayClose;
};

TranslatorView* ViewOf(QMdiSubWindow* window) {
    return window ? qobject_cast<TranslatorView*>(window->widget()) : nullptr;
}

// The menu text without its accelerator marks and the shortcut shown after the tab.
QString Plain(QString text) {
    const qsizetype tab = text.indexOf(QLatin1Char('\t'));
    if (tab >= 0)
        text.truncate(tab);
    return text.remove(QLatin1Char('&'));
}

// Lock-key states as the display server tells them; false where it cannot.
struct LockKeys {
    bool caps = false, num = false, scroll = false;
};

LockKeys ReadLockKeys() {
    LockKeys keys;
#ifdef TRANSLATOR_HAVE_X11
    if (auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        unsigned int state = 0;
        if (Display* display = x11->display();
            display && XkbGetIndicatorState(display, XkbUseCoreKbd, &state) == Success) {
            keys.caps = state & 0x1;
            keys.num = state & 0x2;
            keys.scroll = state & 0x4;
        }
    }
#endif
    return keys;
}

// The file dialog separates the patterns of a filter with spaces; the program's filter texts
// separate them with semicolons.
QString FileDialogFilters() {
    QString files = Tr(strings::kOpenFilter);
    const qsizetype open = files.lastIndexOf(QLatin1Char('('));
    if (open >= 0)
        files.replace(open, files.size() - open,
                      files.mid(open).replace(QLatin1Char(';'), QLatin1Char(' ')));
    return files + QStringLiteral(";;") + Tr(strings::kAllFilesFilter);
}

} // namespace

MainWindow::MainWindow(app::AppContext& app, QWidget* parent)
    : QMainWindow(parent), m_app(app), m_messages(std::make_unique<WidgetMessages>(this)),
      m_dictionary(std::make_unique<DictionaryHolder>(app, this)), m_area(new QMdiArea(this)) {
    setWindowTitle(QCoreApplication::applicationName());
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_area->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(m_area);
    CreateActions();

    m_toolbar = addToolBar(QStringLiteral("Standard"));
    m_toolbar->setObjectName(QStringLiteral("StandardToolbar"));
    m_toolbar->setIconSize(QSize(16, 16));
    m_toolbar->addAction(m_open);
    m_toolbar->addAction(m_save);
    m_toolbar->addSeparator();
    m_toolbar->addAction(m_cut);
    m_toolbar->addAction(m_copy);
    m_toolbar->addAction(m_paste);
    m_toolbar->addSeparator();
    m_toolbar->addAction(m_print);
    m_toolbar->addSeparator();
    m_toolbar->addAction(m_about);

    m_capsPane = new QLabel(this);
    m_numPane = new QLabel(this);
    m_scrollPane = new QLabel(this);
    for (QLabel* pane : {m_capsPane, m_numPane, m_scrollPane}) {
        pane->setAlignment(Qt::AlignCenter);
        pane->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("SCRL")) + 12);
        statusBar()->addPermanentWidget(pane);
    }
    // The message pane says "Ready" whenever nothing else is shown there.
    connect(statusBar(), &QStatusBar::messageChanged, this, [this](const QString& message) {
        if (message.isEmpty())
            statusBar()->showMessage(Tr(strings::kReady));
    });
    statusBar()->showMessage(Tr(strings::kReady));
    UpdateLockPanes();
    auto* lockTimer = new QTimer(this);
    connect(lockTimer, &QTimer::timeout, this, &MainWindow::UpdateLockPanes);
    lockTimer->start(300);

    connect(m_area, &QMdiArea::subWindowActivated, this, [this] {
        BuildMenus();
        UpdateCommands();
        UpdateTitles();
    });
    connect(QApplication::clipboard(), &QClipboard::dataChanged, this, &MainWindow::UpdateCommands);
    BuildMenus();
    UpdateCommands();
    resize(1000, 700);
}

MainWindow::~MainWindow() {
    // The children go first: their views hold the documents.
    for (QMdiSubWindow* window : m_area->subWindowList())
        delete window;
}

void MainWindow::CreateActions() {
    auto make = [this](const char* text, auto slot, QList<QKeySequence> keys = {}) {
        auto* action = new QAction(Tr(text), this);
        action->setShortcuts(keys);
        connect(action, &QAction::triggered, this, slot);
        addAction(action); // the shortcuts work whichever menu is shown
        action->setToolTip(Plain(action->text()));
        action->setStatusTip(Plain(action->text()));
        return action;
    };
    auto onView = [this](void (TranslatorView::*command)()) {
        return [this, command] {
            if (TranslatorView* view = ActiveView())
                (view->*command)();
        };
    };
    auto onGrid = [this](void (CaptionGrid::*command)()) {
        return [this, command] {
            if (CaptionGrid* grid = ActiveGrid())
                (grid->*command)();
        };
    };
    const QStyle* s = style();
    m_open = make(strings::kOpen, &MainWindow::Open, {QKeySequence(Qt::CTRL | Qt::Key_O)});
    m_open->setIcon(s->standardIcon(QStyle::SP_DialogOpenButton));
    m_close = make(strings::kClose, [this] {
        if (QMdiSubWindow* window = m_area->activeSubWindow())
            window->close();
    });
    m_save = make(strings::kSave, &MainWindow::Save, {QKeySequence(Qt::CTRL | Qt::Key_S)});
    m_save->setIcon(s->standardIcon(QStyle::SP_DialogSaveButton));
    m_saveAs = make(strings::kSaveAs, &MainWindow::SaveAs);
    m_openServer = make(strings::kOpenServer, &MainWindow::OpenFromServer);
    m_saveServer = make(strings::kSaveServer, &MainWindow::SaveToServer);
    m_export = make(strings::kExport, onView(&TranslatorView::ExportStrings));
    m_import = make(strings::kImport, onView(&TranslatorView::ImportTranslation));
    m_print =
        make(strings::kPrint, &MainWindow::PrintWithDialog, {QKeySequence(Qt::CTRL | Qt::Key_P)});
    m_print->setIcon(
        QIcon::fromTheme(QStringLiteral("document-print"), DrawnIcon(CommandIcon::Print)));
    m_printDirect = make(strings::kPrintDirect, &MainWindow::PrintDirect);
    m_printPreview = make(strings::kPrintPreview, &MainWindow::PrintPreview);
    m_recentNone = new QAction(Tr(strings::kRecentFile), this);
    m_recentNone->setEnabled(false);
    for (int i = 0; i < app::RecentFiles::kMaxFiles; ++i) {
        auto* action = new QAction(this);
        connect(action, &QAction::triggered, this,
                [this, action] { OpenFile(action->data().toString()); });
        m_recent.push_back(action);
    }
    m_exit = make(strings::kExit, &QWidget::close);
    // Nothing can be undone: the entry is there, and stays disabled.
    m_undo = make(strings::kUndo, [] {},
                  {QKeySequence(Qt::CTRL | Qt::Key_Z), QKeySequence(Qt::ALT | Qt::Key_Backspace)});
    m_undo->setEnabled(false);
    m_cut = make(strings::kCut, onGrid(&CaptionGrid::Cut),
                 {QKeySequence(Qt::CTRL | Qt::Key_X), QKeySequence(Qt::SHIFT | Qt::Key_Delete)});
    m_cut->setIcon(QIcon::fromTheme(QStringLiteral("edit-cut"), DrawnIcon(CommandIcon::Cut)));
    m_copy = make(strings::kCopy, onGrid(&CaptionGrid::Copy),
                  {QKeySequence(Qt::CTRL | Qt::Key_C), QKeySequence(Qt::CTRL | Qt::Key_Insert)});
    m_copy->setIcon(QIcon::fromTheme(QStringLiteral("edit-copy"), DrawnIcon(CommandIcon::Copy)));
    m_paste = make(strings::kPaste, onGrid(&CaptionGrid::Paste),
                   {QKeySequence(Qt::CTRL | Qt::Key_V), QKeySequence(Qt::SHIFT | Qt::Key_Insert)});
    m_paste->setIcon(QIcon::fromTheme(QStringLiteral("edit-paste"), DrawnIcon(CommandIcon::Paste)));
    m_selectAll = make(strings::kSelectAll, onGrid(&CaptionGrid::SelectAllCells),
                       {QKeySequence(Qt::CTRL | Qt::Key_A)});
    m_showToolbar = new QAction(Tr(strings::kToolbar), this);
    m_showToolbar->setCheckable(true);
    m_showToolbar->setChecked(true);
    connect(m_showToolbar, &QAction::toggled, this, [this](bool on) { m_toolbar->setVisible(on); });
    m_showStatusBar = new QAction(Tr(strings::kStatusBar), this);
    m_showStatusBar->setCheckable(true);
    m_showStatusBar->setChecked(true);
    connect(m_showStatusBar, &QAction::toggled, this,
            [this](bool on) { statusBar()->setVisible(on); });
    m_newWindow = make(strings::kNewWindow, &MainWindow::NewWindow);
    m_cascade = make(strings::kCascade, [this] { m_area->cascadeSubWindows(); });
    m_tile = make(strings::kTile, [this] { m_area->tileSubWindows(); });
    m_arrange = make(strings::kArrangeIcons, [this] {
        // Minimised children line up along the bottom edge, as icons do.
        int x = 0;
        for (QMdiSubWindow* window : m_area->subWindowList()) {
            if (!window->isMinimized())
                continue;
            window->move(x, m_area->viewport()->height() - window->height());
            x += window->width();
        }
    });
    m_nextPane = make(QT_TRANSLATE_NOOP("ui", "Next Pane"),
                      [this] { m_area->activateNextSubWindow(); }, {QKeySequence(Qt::Key_F6)});
    m_previousPane = make(QT_TRANSLATE_NOOP("ui", "Previous Pane"),
                          [this] { m_area->activatePreviousSubWindow(); },
                          {QKeySequence(Qt::SHIFT | Qt::Key_F6)});
    m_sendToDictionary =
        make(strings::kSendToDictionary, onView(&TranslatorView::SendToDictionary));
    m_autoTranslate = make(strings::kAutoTranslate, onView(&TranslatorView::AutoTranslate));
    m_dictionaryToggle = make(strings::kDictionary, &MainWindow::ToggleDictionary);
    m_delete = make(strings::kDelete, [this] {
        if (DictionaryView* view = Dictionary();
            view && m_area->activeSubWindow() == m_dictionaryWindow)
            view->DeleteSelected();
    });
    m_about = make(strings::kAbout, &MainWindow::ShowAbout);
    m_about->setIcon(DrawnIcon(CommandIcon::About));
    UpdateRecentFiles();
}

void MainWindow::BuildMenus() {
    QMenuBar* bar = menuBar();
    bar->clear();
    const bool questionnaire = ActiveView() != nullptr;
    QMenu* file = bar->addMenu(Tr(strings::kFileMenu));
    file->addAction(m_open);
    file->addAction(m_openServer);
    if (questionnaire) {
        file->addAction(m_close);
        file->addAction(m_save);
        file->addAction(m_saveAs);
        file->addAction(m_saveServer);
        file->addSeparator();
        file->addAction(m_export);
        file->addAction(m_import);
        file->addSeparator();
        file->addAction(m_print);
        file->addAction(m_printDirect);
        file->addAction(m_printPreview);
    }
    file->addSeparator();
    const QStringList recent = m_app.recentFiles.Files();
    if (recent.isEmpty())
        file->addAction(m_recentNone);
    for (size_t i = 0; i < m_recent.size() && i < size_t(recent.size()); ++i)
        file->addAction(m_recent[i]);
    file->addSeparator();
    file->addAction(m_exit);
    if (questionnaire) {
        QMenu* edit = bar->addMenu(Tr(strings::kEditMenu));
        edit->addAction(m_undo);
        edit->addSeparator();
        edit->addAction(m_cut);
        edit->addAction(m_copy);
        edit->addAction(m_paste);
        connect(edit, &QMenu::aboutToShow, this, &MainWindow::UpdateCommands);
    }
    QMenu* view = bar->addMenu(Tr(strings::kViewMenu));
    view->addAction(m_showToolbar);
    view->addAction(m_showStatusBar);
    view->addAction(m_dictionaryToggle);
    if (questionnaire) {
        QMenu* window = bar->addMenu(Tr(strings::kWindowMenu));
        window->addAction(m_newWindow);
        window->addAction(m_cascade);
        window->addAction(m_tile);
        window->addAction(m_arrange);
        window->addSeparator();
        // The open windows, the active one checked, as a window menu lists them.
        connect(window, &QMenu::aboutToShow, this, [this, window] {
            for (QAction* action : window->actions())
                if (action->data().canConvert<QObject*>() && action->property("child").toBool())
                    delete action;
            int n = 0;
            for (QMdiSubWindow* child : m_area->subWindowList()) {
                QAction* action =
                    window->addAction(QStringLiteral("&%1 %2").arg(++n).arg(child->windowTitle()));
                action->setProperty("child", true);
                action->setData(QVariant::fromValue<QObject*>(child));
                action->setCheckable(true);
                action->setChecked(child == m_area->activeSubWindow());
                connect(action, &QAction::triggered, this,
                        [this, child] { m_area->setActiveSubWindow(child); });
            }
        });
    }
    QMenu* help = bar->addMenu(Tr(strings::kHelpMenu));
    help->addAction(m_about);
}

QAction* MainWindow::Action(const char* text) const {
    const QString wanted = Plain(Tr(text));
    for (QAction* action : findChildren<QAction*>())
        if (Plain(action->text()) == wanted)
            return action;
    return nullptr;
}

TranslatorView* MainWindow::ActiveView() const {
    return ViewOf(m_area->activeSubWindow());
}

DictionaryView* MainWindow::Dictionary() const {
    return m_dictionaryWindow ? qobject_cast<DictionaryView*>(m_dictionaryWindow->widget())
                              : nullptr;
}

CaptionGrid* MainWindow::ActiveGrid() const {
    if (TranslatorView* view = ActiveView())
        return &view->Grid();
    if (m_dictionaryWindow && m_area->activeSubWindow() == m_dictionaryWindow)
        return &Dictionary()->Grid();
    return nullptr;
}

void MainWindow::ToggleDictionary() {
    if (m_dictionaryWindow) {
        m_dictionaryWindow->close();
        return;
    }
    CDictionary& dictionary = m_dictionary->Get();
    auto* view = new DictionaryView(dictionary, *m_messages, nullptr);
    auto* frame = new QMdiSubWindow;
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->setWidget(view);
    frame->setWindowTitle(Tr(strings::kDictionaryTitle));
    frame->setWindowIcon(DrawnIcon(CommandIcon::Dictionary));
    m_area->addSubWindow(frame);
    m_dictionaryWindow = frame;
    connect(view, &DictionaryView::SelectionChanged, this, &MainWindow::UpdateCommands);
    connect(view, &DictionaryView::ContextMenuWanted, this, [this](const QPoint& at) {
        UpdateCommands();
        QMenu menu(this);
        menu.addAction(m_delete);
        menu.exec(at);
    });
    connect(m_dictionary.get(), &DictionaryHolder::Sent, view, &DictionaryView::DictionaryChanged);
    connect(frame, &QObject::destroyed, this, [this] {
        m_dictionaryWindow = nullptr;
        QTimer::singleShot(0, this, [this] {
            BuildMenus();
            UpdateCommands();
        });
    });
    frame->showMaximized();
    view->setFocus();
}

void MainWindow::ShowAbout() {
    AboutDialog about(m_app.versionInfo, this);
    about.exec();
}

void MainWindow::UpdateCommands() {
    TranslatorView* view = ActiveView();
    CaptionGrid* grid = ActiveGrid();
    const bool selection = grid && grid->HasSelection();
    for (QAction* action :
         {m_close, m_save, m_saveAs, m_export, m_import, m_print, m_printDirect, m_printPreview,
          m_selectAll, m_newWindow, m_cascade, m_tile, m_arrange, m_autoTranslate})
        action->setEnabled(view != nullptr);
    m_cut->setEnabled(selection);
    m_copy->setEnabled(selection);
    m_sendToDictionary->setEnabled(view && selection);
    m_delete->setEnabled(!view && selection);
    m_paste->setEnabled(grid && !QApplication::clipboard()->text().isEmpty());
}

void MainWindow::UpdateRecentFiles() {
    const QStringList files = m_app.recentFiles.Files();
    for (size_t i = 0; i < m_recent.size(); ++i) {
        QAction* action = m_recent[i];
        if (int(i) < files.size()) {
            action->setText(
                QStringLiteral("&%1 %2").arg(i + 1).arg(QDir::toNativeSeparators(files[int(i)])));
            action->setData(files[int(i)]);
            action->setVisible(true);
        } else {
            action->setVisible(false);
        }
    }
}

void MainWindow::UpdateLockPanes() {
    const LockKeys keys = ReadLockKeys();
    m_capsPane->setText(keys.caps ? Tr(strings::kCapsLock) : QString());
    m_numPane->setText(keys.num ? Tr(strings::kNumLock) : QString());
    m_scrollPane->setText(keys.scroll ? Tr(strings::kScrollLock) : QString());
}

std::vector<QMdiSubWindow*> MainWindow::WindowsOf(const OpenDocument& document) const {
    std::vector<QMdiSubWindow*> windows;
    for (QMdiSubWindow* window : m_area->subWindowList())
        if (TranslatorView* view = ViewOf(window); view && &view->Document() == &document)
            windows.push_back(window);
    return windows;
}

void MainWindow::UpdateTitles() {
    // A maximised child adds its title to the main window's, as "Translator - [survey.xml]".
    for (QMdiSubWindow* window : m_area->subWindowList()) {
        TranslatorView* view = ViewOf(window);
        if (!view)
            continue;
        const std::vector<QMdiSubWindow*> siblings = WindowsOf(view->Document());
        QString title = view->Document().Title();
        if (siblings.size() > 1) {
            const auto at = std::find(siblings.begin(), siblings.end(), window);
            title += QStringLiteral(":%1").arg(at - siblings.begin() + 1);
        }
        window->setWindowTitle(title);
    }
}

QMdiSubWindow* MainWindow::AddView(const std::shared_ptr<OpenDocument>& document) {
    auto* view = new TranslatorView(document, *m_dictionary);
    auto* frame = new ChildFrame([this](QMdiSubWindow* window) { return MayClose(window); });
    frame->setWidget(view);
    frame->setWindowIcon(RowIcon(questionnaire::RowKind::LongCaption));
    m_area->addSubWindow(frame);
    connect(view, &TranslatorView::SelectionChanged, this, &MainWindow::UpdateCommands);
    connect(view, &TranslatorView::ContextMenuWanted, this, &MainWindow::ShowContextMenu);
    connect(&view->Document(), &OpenDocument::StateChanged, this, &MainWindow::UpdateTitles,
            Qt::UniqueConnection);
    connect(frame, &QObject::destroyed, this, [this] {
        // Titles renumber and the menus follow the child that is active now.
        QTimer::singleShot(0, this, [this] {
            UpdateTitles();
            BuildMenus();
            UpdateCommands();
        });
    });
    frame->showMaximized();
    view->setFocus();
    UpdateTitles();
    return frame;
}

bool MainWindow::OpenFile(const QString& path) {
    const QString wanted = app::AbsoluteLocation(path);
    for (QMdiSubWindow* window : m_area->subWindowList())
        if (TranslatorView* view = ViewOf(window);
            view &&
            util::SameFile(app::AbsoluteLocation(view->Document().Document().Path()), wanted)) {
            m_area->setActiveSubWindow(window);
            return true;
        }
    auto document = std::make_shared<OpenDocument>(m_app, this);
    document->Progress().SetCancel(ProgressDialog::Cancel::NotOffered);
    if (!document->Document().Open(wanted))
        return false;
    AddView(document);
    UpdateRecentFiles();
    BuildMenus();
    return true;
}

void MainWindow::Open() {
    const QString path =
        QFileDialog::getOpenFileName(this, QString(), QString(), FileDialogFilters());
    if (!path.isEmpty())
        OpenFile(path);
}

QString MainWindow::AskServerLocation(const char* title, const QString& proposed) {
    QInputDialog dialog(this);
    dialog.setWindowTitle(Tr(title).remove(QLatin1Char('&')).remove(QStringLiteral("...")));
    dialog.setLabelText(Tr(strings::kServerLocation));
    dialog.setTextValue(proposed);
    // Room for a whole location with its socket folder.
    dialog.resize(fontMetrics().horizontalAdvance(QLatin1Char('x')) * 70,
                  dialog.sizeHint().height());
    if (dialog.exec() != QDialog::Accepted)
        return {};
    const QString location = dialog.textValue().trimmed();
    if (location.isEmpty())
        return {};
    if (!util::sql::IsServerLocation(location)) {
        m_messages->Error(Tr(strings::kNotServerLocation).arg(location));
        return {};
    }
    return location;
}

void MainWindow::OpenFromServer() {
    const QString location = AskServerLocation(strings::kOpenServer, QString());
    if (!location.isEmpty())
        OpenFile(location);
}

void MainWindow::SaveToServer() {
    TranslatorView* view = ActiveView();
    if (!view)
        return;
    const QString current = view->Document().Document().Path();
    const QString location = AskServerLocation(
        strings::kSaveServer, util::sql::IsServerLocation(current) ? current : QString());
    if (location.isEmpty())
        return;
    // As a file dialog asks before replacing a file: a mistyped database name would otherwise
    // replace a colleague's campaign without a word.
    if (location != current && campaign::HoldsCampaign(location) &&
        QMessageBox::question(
            this, QGuiApplication::applicationDisplayName(),
            Tr(strings::kReplaceServerCampaign).arg(util::sql::PrintableLocation(location)),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;
    SaveDocument(view->Document(), location);
}

bool MainWindow::SaveDocument(OpenDocument& document, const QString& target) {
    FinishEdits();
    document.Progress().SetCancel(ProgressDialog::Cancel::NotOffered);
    const bool saved = document.Document().Save(target);
    if (saved) {
        m_app.recentFiles.Add(document.Document().Path());
        UpdateRecentFiles();
        BuildMenus();
    }
    Q_EMIT document.StateChanged();
    return saved;
}

void MainWindow::Save() {
    if (TranslatorView* view = ActiveView())
        SaveDocument(view->Document(), view->Document().Document().Path());
}

void MainWindow::SaveAs() {
    TranslatorView* view = ActiveView();
    if (!view)
        return;
    const QString target = QFileDialog::getSaveFileName(
        this, QString(), view->Document().Document().Path(), FileDialogFilters());
    if (!target.isEmpty())
        SaveDocument(view->Document(), target);
}

bool MainWindow::MayClose(QMdiSubWindow* window) {
    TranslatorView* view = ViewOf(window);
    if (!view || WindowsOf(view->Document()).size() > 1)
        return true; // another window still shows the document
    return AskToSave(view->Document());
}

void MainWindow::FinishEdits() {
    for (QMdiSubWindow* window : m_area->subWindowList())
        if (TranslatorView* view = ViewOf(window))
            view->Grid().FinishEdit();
    if (DictionaryView* dictionary = Dictionary())
        dictionary->Grid().FinishEdit();
}

bool MainWindow::AskToSave(OpenDocument& document) {
    FinishEdits();
    if (!document.IsModified())
        return true;
    const util::Answer answer =
        document.Messages().Ask(Tr(strings::kSaveChanges).arg(document.Title()),
                                {util::Answer::Yes, util::Answer::No, util::Answer::Cancel});
    if (answer == util::Answer::Cancel)
        return false;
    if (answer == util::Answer::No)
        return true;
    return SaveDocument(document, document.Document().Path());
}

void MainWindow::NewWindow() {
    if (TranslatorView* view = ActiveView())
        AddView(view->SharedDocument());
}

void MainWindow::ShowContextMenu(const QPoint& globalPosition) {
    UpdateCommands();
    QMenu menu(this);
    menu.addAction(m_cut);
    menu.addAction(m_copy);
    menu.addAction(m_paste);
    menu.addSeparator();
    menu.addAction(m_sendToDictionary);
    menu.addAction(m_autoTranslate);
    menu.exec(globalPosition);
}

void MainWindow::PrintWithDialog() {
    TranslatorView* view = ActiveView();
    if (!view)
        return;
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted)
        view->PrintTo(printer);
}

void MainWindow::PrintDirect() {
    if (TranslatorView* view = ActiveView()) {
        QPrinter printer(QPrinter::HighResolution);
        view->PrintTo(printer);
    }
}

void MainWindow::PrintPreview() {
    TranslatorView* view = ActiveView();
    if (!view)
        return;
    QPrinter printer(QPrinter::HighResolution);
    QPrintPreviewDialog preview(&printer, this);
    connect(&preview, &QPrintPreviewDialog::paintRequested, view,
            [view](QPrinter* target) { view->PrintTo(*target); });
    preview.exec();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    FinishEdits();
    // The dictionary is offered first, then each document once, whatever the number of its
    // windows; Cancel anywhere, or a failed save, keeps the program open.
    if (!m_dictionary->CloseQuery()) {
        event->ignore();
        return;
    }
    std::vector<OpenDocument*> documents;
    for (QMdiSubWindow* window : m_area->subWindowList())
        if (TranslatorView* view = ViewOf(window);
            view &&
            std::find(documents.begin(), documents.end(), &view->Document()) == documents.end())
            documents.push_back(&view->Document());
    for (OpenDocument* document : documents)
        if (!AskToSave(*document)) {
            event->ignore();
            return;
        }
    for (QMdiSubWindow* window : m_area->subWindowList())
        delete window; // the questions were asked above
    event->accept();
}

} // namespace ui
