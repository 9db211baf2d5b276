#pragma once

#include "exchange/ExportFile.h"

#include <QDialog>
#include <QList>
#include <QString>

class CQuestionnaire;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QTreeWidget;

namespace ui {

class VersionComboBox;

// Chooses what an export of captions for translation writes: the output file, the caption
// filters, the versions, and the languages with their column order. Every run starts from the
// defaults; nothing is remembered.
class ExportDialog : public QDialog {
    Q_OBJECT

public:
    // The questionnaire must outlive the dialog.
    ExportDialog(const CQuestionnaire& q, QWidget* parent = nullptr);

    enum class Format { TabSeparated, Xliff12, Xliff20 };

    QString Path() const;
    Format ChosenFormat() const;
    // The choices as the export takes them: the checked languages in list order, the chosen
    // versions (empty for all), no column titles.
    exchange::ExportOptions Options() const;

    // Refuses, with a message, an empty output path or fewer than two languages.
    void accept() override;

protected:
    // Shows a refusal of OK; the dialog stays open.
    virtual void ShowMessage(const QString& text);
    // Asks for the file to write, starting from `current`; empty when the user cancels.
    virtual QString ChooseFile(const QString& current);

private:
    void Browse();
    // Switches the format to the one a ".txt", ".xlf" or ".xliff" path names; an XLIFF version
    // already chosen stays, and another ending changes nothing.
    void FormatFromEnding(const QString& path);
    // Moves the selected language one row up (-1) or down (+1), keeping its check and selection.
    void MoveSelected(int step);

    const CQuestionnaire& m_q;
    QLineEdit* m_path = nullptr;
    QComboBox* m_format = nullptr;
    VersionComboBox* m_versions = nullptr;
    QCheckBox* m_excludeTranslated = nullptr;
    QCheckBox* m_excludeDuplicates = nullptr;
    QCheckBox* m_excludeNonVisible = nullptr;
    QCheckBox* m_excludeSystemMessages = nullptr;
    QCheckBox* m_excludeRoutings = nullptr;
    QCheckBox* m_excludeLongCaptions = nullptr;
    QCheckBox* m_excludeShortCaptions = nullptr;
    QCheckBox* m_excludeInstructions = nullptr;
    QCheckBox* m_excludeComments = nullptr;
    QCheckBox* m_excludeResponses = nullptr;
    QCheckBox* m_showShortcuts = nullptr;
    QTreeWidget* m_languages = nullptr;
};

} // namespace ui
