#include "ui/OpenDocument.h"

#include "app/AppContext.h"
#include "dictionary/Dictionary.h"
#include "ui/Strings.h"

#include "util/SqlConnection.h"

#include <QFileInfo>

namespace ui {

OpenDocument::OpenDocument(app::AppContext& app, QWidget* window)
    : m_messages(window), m_progress(window), m_document(app, m_messages, &m_progress) {
    m_document.Captions().AddListener(this);
}

OpenDocument::~OpenDocument() {
    m_document.Captions().RemoveListener(this);
}

void OpenDocument::SetModified(bool modified) {
    m_document.SetModified(modified);
    Q_EMIT StateChanged();
}

QString OpenDocument::Title() const {
    const QString& path = m_document.Path();
    return util::sql::IsServerLocation(path) ? util::sql::PrintableLocation(path)
                                             : QFileInfo(path).fileName();
}

void OpenDocument::QuestionnaireModified() {
    // The document sets its own flag; the windows only need to hear of it.
    Q_EMIT StateChanged();
}

DictionaryHolder::DictionaryHolder(app::AppContext& app, QWidget* window)
    : m_app(app), m_window(window) {}

DictionaryHolder::~DictionaryHolder() = default;

CDictionary& DictionaryHolder::Get() {
    if (!m_dictionary) {
        m_dictionary = std::make_unique<CDictionary>();
        WidgetMessages messages(m_window);
        ProgressDialog progress(m_window, ProgressDialog::Cancel::NotOffered);
        m_dictionary->Load(m_app.dictionaryPath, messages, &progress);
    }
    return *m_dictionary;
}

bool DictionaryHolder::CloseQuery() {
    if (!m_dictionary || !m_dictionary->IsModified())
        return true;
    WidgetMessages messages(m_window);
    const util::Answer answer = messages.Ask(
        Tr(strings::kSaveDictionary), {util::Answer::Yes, util::Answer::No, util::Answer::Cancel});
    if (answer == util::Answer::Cancel)
        return false;
    if (answer == util::Answer::No)
        return true;
    ProgressDialog progress(m_window, ProgressDialog::Cancel::NotOffered);
    return m_dictionary->Save(m_app.dictionaryPath, messages, &progress);
}

} // namespace ui
