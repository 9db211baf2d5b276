#pragma once

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

    // The commands; each works as its menu entry does.
    void ExportStrings();
    void ImportTranslation();
    void SendToDictionary();
    void AutoTranslate();
    // Shows why when the printer could not be opened.
    bool PrintTo(QPrinter& printer);

    // "Send to dictionary" needs cells to send.
    bool CanSendToDictionary() const;

Q_SIGNALS:
    // The selection changed: the commands that depend on it may change their state.
    void SelectionChanged();
    void ContextMenuWanted(const QPoint& globalPosition);

private:
    std::shared_ptr<OpenDocument> m_document;
    DictionaryHolder& m_dictionary;
    CaptionGrid* m_grid;
    CaptionModel* m_model;
};

} // namespace ui
