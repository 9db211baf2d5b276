#pragma once

#include <QDialog>
#include <QString>

class CQuestionnaire;
class QCheckBox;
class QComboBox;
class QLineEdit;

namespace ui {

// Chooses the translated file to import, the two import options and the reference language.
// Nothing is checked on OK: the import itself reports a path it cannot open.
class ImportDialog : public QDialog {
    Q_OBJECT

public:
    ImportDialog(const CQuestionnaire& q, QWidget* parent = nullptr);
    QString Path() const;
    bool OnlyUnchanged() const;
    bool CopyIdentical() const;
    // The chosen reference language's id, 0 when none is selected. Handed over even while the
    // list is disabled.
    qint32 ReferenceLanguage() const;

protected:
    // Asks for an existing file to read, starting from `current`; empty when the user cancels.
    virtual QString ChooseFile(const QString& current);

private:
    void Browse();
    void UpdateReferenceList();

    QLineEdit* m_path = nullptr;
    QCheckBox* m_onlyUnchanged = nullptr;
    QCheckBox* m_copyIdentical = nullptr;
    QComboBox* m_reference = nullptr;
};

} // namespace ui
