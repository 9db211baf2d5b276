#pragma once

#include <QCoreApplication>

// The main window's texts that users read, kept together so that they are easy to find and
// translate ("%1" is filled by QString::arg).
namespace ui::strings {

inline constexpr char kContext[] = "ui";

// Menus. "\t" separates an entry from the shortcut shown beside it.
inline constexpr char kFileMenu[] = QT_TRANSLATE_NOOP("ui", "&File");
inline constexpr char kEditMenu[] = QT_TRANSLATE_NOOP("ui", "&Edit");
inline constexpr char kViewMenu[] = QT_TRANSLATE_NOOP("ui", "&View");
inline constexpr char kWindowMenu[] = QT_TRANSLATE_NOOP("ui", "&Window");
inline constexpr char kOpen[] = QT_TRANSLATE_NOOP("ui", "&Open...\tCtrl+O");
inline constexpr char kClose[] = QT_TRANSLATE_NOOP("ui", "&Close");
inline constexpr char kSave[] = QT_TRANSLATE_NOOP("ui", "&Save\tCtrl+S");
inline constexpr char kSaveAs[] = QT_TRANSLATE_NOOP("ui", "Save &As...");
inline constexpr char kOpenServer[] = QT_TRANSLATE_NOOP("ui", "Open from Se&rver...");
inline constexpr char kSaveServer[] = QT_TRANSLATE_NOOP("ui", "Save to Ser&ver...");
inline constexpr char kReplaceServerCampaign[] = QT_TRANSLATE_NOOP(
    "ui", "The database '%1' already holds a campaign.\nDo you want to replace it?");
inline constexpr char kServerLocation[] =
    QT_TRANSLATE_NOOP("ui", "Campaign database on a PostgreSQL server\n"
                            "(postgresql://user@host:port/database):");
inline constexpr char kNotServerLocation[] =
    QT_TRANSLATE_NOOP("ui", "'%1' is not a server location: it begins with postgresql://.");
inline constexpr char kExport[] = QT_TRANSLATE_NOOP("ui", "Export strings for translation...");
inline constexpr char kImport[] = QT_TRANSLATE_NOOP("ui", "Import from translation...");
inline constexpr char kPrint[] = QT_TRANSLATE_NOOP("ui", "&Print...\tCtrl+P");
inline constexpr char kPrintDirect[] = QT_TRANSLATE_NOOP("ui", "Print &Direct");
inline constexpr char kPrintPreview[] = QT_TRANSLATE_NOOP("ui", "Print Pre&view");
inline constexpr char kRecentFile[] = QT_TRANSLATE_NOOP("ui", "Recent File");
inline constexpr char kExit[] = QT_TRANSLATE_NOOP("ui", "E&xit");
inline constexpr char kUndo[] = QT_TRANSLATE_NOOP("ui", "&Undo\tCtrl+Z");
inline constexpr char kCut[] = QT_TRANSLATE_NOOP("ui", "Cu&t\tCtrl+X");
inline constexpr char kCopy[] = QT_TRANSLATE_NOOP("ui", "&Copy\tCtrl+C");
inline constexpr char kPaste[] = QT_TRANSLATE_NOOP("ui", "&Paste\tCtrl+V");
inline constexpr char kSelectAll[] = QT_TRANSLATE_NOOP("ui", "Select &All\tCtrl+A");
inline constexpr char kToolbar[] = QT_TRANSLATE_NOOP("ui", "&Toolbar");
inline constexpr char kStatusBar[] = QT_TRANSLATE_NOOP("ui", "&Status Bar");
inline constexpr char kNewWindow[] = QT_TRANSLATE_NOOP("ui", "&New Window");
inline constexpr char kCascade[] = QT_TRANSLATE_NOOP("ui", "&Cascade");
inline constexpr char kTile[] = QT_TRANSLATE_NOOP("ui", "&Tile");
inline constexpr char kArrangeIcons[] = QT_TRANSLATE_NOOP("ui", "&Arrange Icons");
inline constexpr char kSendToDictionary[] = QT_TRANSLATE_NOOP("ui", "Send to dictionary");
inline constexpr char kAutoTranslate[] = QT_TRANSLATE_NOOP("ui", "Auto-translate");

inline constexpr char kHelpMenu[] = QT_TRANSLATE_NOOP("ui", "&Help");
inline constexpr char kAbout[] = QT_TRANSLATE_NOOP("ui", "&About Translator...");
inline constexpr char kDictionary[] = QT_TRANSLATE_NOOP("ui", "Dictionary");
inline constexpr char kDelete[] = QT_TRANSLATE_NOOP("ui", "Delete");

// The about box and the dictionary window.
inline constexpr char kAboutTitle[] = QT_TRANSLATE_NOOP("ui", "About Translator");
inline constexpr char kInvalidDate[] = QT_TRANSLATE_NOOP("ui", "Invalid DateTime");
inline constexpr char kDictionaryTitle[] = QT_TRANSLATE_NOOP("ui", "Dictionary");
inline constexpr char kDeleteEntries[] =
    QT_TRANSLATE_NOOP("ui", "Are you sure you want to delete these entrie(s) ?");

// Status bar.
inline constexpr char kReady[] = QT_TRANSLATE_NOOP("ui", "Ready");
inline constexpr char kCapsLock[] = QT_TRANSLATE_NOOP("ui", "CAP");
inline constexpr char kNumLock[] = QT_TRANSLATE_NOOP("ui", "NUM");
inline constexpr char kScrollLock[] = QT_TRANSLATE_NOOP("ui", "SCRL");

// Files and questions.
inline constexpr char kOpenFilter[] =
    QT_TRANSLATE_NOOP("ui", "Varnel files (*.qes;*.qex;*.qew;*.xml)");
inline constexpr char kAllFilesFilter[] = QT_TRANSLATE_NOOP("ui", "All files (*.*)");
inline constexpr char kSaveChanges[] = QT_TRANSLATE_NOOP("ui", "Save changes to %1?");
inline constexpr char kSaveDictionary[] =
    QT_TRANSLATE_NOOP("ui", "Dictionary has been modified. Do you want to save?");
inline constexpr char kCannotPrint[] =
    QT_TRANSLATE_NOOP("ui", "Cannot print: the printer '%1' could not be opened.");
inline constexpr char kNoDisplay[] = QT_TRANSLATE_NOOP(
    "ui", "Translator cannot open its window: no display could be reached%1. Run it in a desktop "
          "session, or give it a batch operation (translator --help).");

} // namespace ui::strings

namespace ui {
// A text of the window in the user's language.
inline QString Tr(const char* text) {
    return QCoreApplication::translate(strings::kContext, text);
}
} // namespace ui
