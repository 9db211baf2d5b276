#pragma once

#include <QStringList>
#include <QWidget>

#include <memory>

class QPrinter;

namespace ui {

class CaptionGrid;
class CaptionModel;
class DictionaryHolder;
class OpenDocument;

// One window on an open questionnaire: the caption grid, every caption by every language, and
// the commands that work on the whole questionnaire (export, import, the dictionary passes,
// printing). Several views may show one document; an edit in one shows in all.
class TranslatorView : public QWidget {
    Q_OBJECT
public:
    TranslatorView(std::shared_ptr<OpenDocument> document, DictionaryHolder& dictionary,
                   QWidget* parent = nullptr);
    ~TranslatorView() override;

    OpenDocument& Document() const { return *m_document; }
    const std::shared_ptr<OpenDocument>& SharedDocument() const { return m_document; }
    CaptionGrid& Grid() const { return *m_grid; }
    CaptionModel& Model() const { return *m_model; }

    // The commands; each works as its menu entry does. After an export the view offers to open
    // the file in the program that edits it (or to show it in its folder), and when that program
    // ends with the file changed, to import it.
    void ExportStrings();
    void ImportTranslation(const QString& path = {});
    void SendToDictionary();
    void AutoTranslate();
    // Shows why when the printer could not be opened.
    bool PrintTo(QPrinter& printer);

    // "Send to dictionary" needs cells to send.
    bool CanSendToDictionary() const;

    // The program exported files are opened in; empty for the one the desktop associates with
    // the file's type. The file's path is appended to it.
    void SetEditorCommand(const QStringList& command) { m_editorCommand = command; }

    // What the user chose after an export.
    enum class AfterExport { Open, ShowFolder, Nothing };

Q_SIGNALS:
    // The selection changed: the commands that depend on it may change their state.
    void SelectionChanged();
    void ContextMenuWanted(const QPoint& globalPosition);

private:
    AfterExport AskAfterExport(const QString& path);
    void OpenExported(const QString& path);

    std::shared_ptr<OpenDocument> m_document;
    DictionaryHolder& m_dictionary;
    CaptionGrid* m_grid;
    CaptionModel* m_model;
    QStringList m_editorCommand;
};

} // namespace ui
