#include "ui/dialogs/ImportDialog.h"

#include "questionnaire/Questionnaire.h"
#include "ui/dialogs/FileField.h"
#include "ui/dialogs/Strings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace ui {

using dialogs::Tr;
namespace strings = dialogs::strings;

ImportDialog::ImportDialog(const CQuestionnaire& q, QWidget* parent) : QDialog(parent) {
    setWindowTitle(Tr(strings::kImportTitle));

    m_path = new QLineEdit(this);
    m_path->setObjectName(QStringLiteral("path"));
    QPushButton* browse = BrowseButton(this);
    m_onlyUnchanged = new QCheckBox(Tr(strings::kOnlyUnchanged), this);
    m_copyIdentical = new QCheckBox(Tr(strings::kCopyIdentical), this);
    m_reference = new QComboBox(this);
    m_reference->setObjectName(QStringLiteral("reference"));
    int main = -1;
    for (int i = 0; i < q.GetLanguageCount(); ++i) {
        const CLanguage& language = q.GetLanguage(i);
        m_reference->addItem(Tr(strings::kLanguageItem).arg(language.m_shortName, language.m_name),
                             language.m_id);
        if (language.m_isMain)
            main = i;
    }
    // Only the flagged main language is preselected (the later of two, as the grid's first
    // column); without one the list starts with no choice.
    m_reference->setCurrentIndex(main);

    auto* fileLabel = new QLabel(Tr(strings::kTranslatedFile), this);
    fileLabel->setBuddy(m_path);
    auto* referenceLabel = new QLabel(Tr(strings::kReferenceLanguage), this);
    referenceLabel->setBuddy(m_reference);
    auto* grid = new QGridLayout;
    grid->addWidget(fileLabel, 0, 0);
    grid->addWidget(m_path, 0, 1);
    grid->addWidget(browse, 0, 2);
    grid->addWidget(m_onlyUnchanged, 1, 0, 1, 3);
    grid->addWidget(m_copyIdentical, 2, 0, 1, 3);
    grid->addWidget(referenceLabel, 3, 0);
    grid->addWidget(m_reference, 3, 1, 1, 2);
    grid->setColumnStretch(1, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addStretch();
    layout->addWidget(buttons);

    connect(browse, &QPushButton::clicked, this, &ImportDialog::Browse);
    connect(m_onlyUnchanged, &QCheckBox::toggled, this, &ImportDialog::UpdateReferenceList);
    connect(m_copyIdentical, &QCheckBox::toggled, this, &ImportDialog::UpdateReferenceList);
    connect(buttons, &QDialogButtonBox::accepted, this, &ImportDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ImportDialog::reject);
    UpdateReferenceList();
    resize(qMax(sizeHint().width(), 440), sizeHint().height());
}

QString ImportDialog::Path() const {
    return m_path->text();
}

bool ImportDialog::OnlyUnchanged() const {
    return m_onlyUnchanged->isChecked();
}

bool ImportDialog::CopyIdentical() const {
    return m_copyIdentical->isChecked();
}

qint32 ImportDialog::ReferenceLanguage() const {
    return m_reference->currentIndex() < 0 ? 0 : m_reference->currentData().toInt();
}

QString ImportDialog::ChooseFile(const QString& current) {
    return AskTextFile(this, false, current, ExchangeFileKind::Any);
}

void ImportDialog::Browse() {
    const QString chosen = ChooseFile(Path());
    if (!chosen.isEmpty())
        m_path->setText(chosen);
}

void ImportDialog::UpdateReferenceList() {
    m_reference->setEnabled(m_onlyUnchanged->isChecked() || m_copyIdentical->isChecked());
}

} // namespace ui
