#pragma once

#include "app/QuestionnaireDocument.h"
#include "questionnaire/CaptionTable.h"
#include "ui/support/ProgressDialog.h"
#include "ui/support/WidgetMessages.h"

#include <QObject>

#include <memory>

class CDictionary;

namespace app {
class AppContext;
}

namespace ui {

// An open questionnaire file shared by the views that show it, with the message boxes and
// progress dialog its loads and saves report through.
class OpenDocument : public QObject, private questionnaire::CaptionTableListener {
    Q_OBJECT
public:
    OpenDocument(app::AppContext& app, QWidget* window);
    ~OpenDocument() override;

    app::QuestionnaireDocument& Document() { return m_document; }
    questionnaire::CaptionTable& Captions() { return m_document.Captions(); }
    util::Messages& Messages() { return m_messages; }
    ProgressDialog& Progress() { return m_progress; }
    bool IsModified() const { return m_document.IsModified(); }
    void SetModified(bool modified);
    // The file name as window titles show it.
    QString Title() const;

Q_SIGNALS:
    // The modified flag or the path changed.
    void StateChanged();

private:
    void QuestionnaireModified() override;

    WidgetMessages m_messages;
    ProgressDialog m_progress;
    app::QuestionnaireDocument m_document;
};

// The dictionary of the run, loaded on first use and offered for saving at exit.
class DictionaryHolder : public QObject {
    Q_OBJECT
public:
    DictionaryHolder(app::AppContext& app, QWidget* window);
    ~DictionaryHolder() override;
    // Loads the dictionary the first time; a missing file is an empty dictionary.
    CDictionary& Get();
    bool IsLoaded() const { return m_dictionary != nullptr; }
    // At exit: asks whether a modified dictionary is saved. False when the user cancelled or
    // the save failed, and the program then stays open.
    bool CloseQuery();
    // Rows were sent to the dictionary; `entriesAdded` when some became new entries.
    void NotifySent(bool entriesAdded) { Q_EMIT Sent(entriesAdded); }

Q_SIGNALS:
    void Sent(bool entriesAdded);

private:
    app::AppContext& m_app;
    QWidget* m_window;
    std::unique_ptr<CDictionary> m_dictionary;
};

} // namespace ui
