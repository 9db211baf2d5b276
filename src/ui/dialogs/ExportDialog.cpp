#include "ui/dialogs/ExportDialog.h"

#include "exchange/XliffFile.h"
#include "questionnaire/Questionnaire.h"
#include "ui/dialogs/ArrowIcon.h"
#include "ui/dialogs/FileField.h"
#include "ui/dialogs/Strings.h"
#include "ui/dialogs/VersionComboBox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace ui {

using dialogs::Tr;
namespace strings = dialogs::strings;

namespace {

constexpr int kLanguageIdRole = Qt::UserRole;

QToolButton* MoveButton(Qt::ArrowType direction, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setIcon(ArrowIcon(direction));
    const int size = button->style()->pixelMetric(QStyle::PM_ButtonIconSize) * 3 / 2;
    button->setIconSize(QSize(size, size));
    return button;
}

} // namespace

ExportDialog::ExportDialog(const CQuestionnaire& q, QWidget* parent) : QDialog(parent), m_q(q) {
    setWindowTitle(Tr(strings::kExportTitle));

    m_path = new QLineEdit(this);
    m_path->setObjectName(QStringLiteral("path"));
    QPushButton* browse = BrowseButton(this);
    m_versions = new VersionComboBox(this);
    m_versions->setObjectName(QStringLiteral("versions"));
    m_versions->Fill(q, {});

    m_format = new QComboBox(this);
    m_format->setObjectName(QStringLiteral("format"));
    m_format->addItem(Tr(strings::kFormatText), int(Format::TabSeparated));
    m_format->addItem(Tr(strings::kFormatXliff12), int(Format::Xliff12));
    m_format->addItem(Tr(strings::kFormatXliff20), int(Format::Xliff20));
    // The file's ending follows the format, so that the file opens in the right program.
    connect(m_format, &QComboBox::currentIndexChanged, this, [this] {
        const bool xliff = ChosenFormat() != Format::TabSeparated;
        const QString path = Path();
        const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
        const QString ending = dot < 0 ? QString() : path.mid(dot).toLower();
        const bool known = ending == QLatin1String(".txt") || ending == QLatin1String(".xlf") ||
                           ending == QLatin1String(".xliff");
        if (known && xliff != (ending != QLatin1String(".txt")))
            m_path->setText(path.left(dot) +
                            (xliff ? QStringLiteral(".xlf") : QStringLiteral(".txt")));
    });

    // And a typed ending chooses the format (as does a chosen one, in Browse).
    connect(m_path, &QLineEdit::textEdited, this, &ExportDialog::FormatFromEnding);

    auto* outputLabel = new QLabel(Tr(strings::kOutputFile), this);
    outputLabel->setBuddy(m_path);
    auto* versionsLabel = new QLabel(Tr(strings::kVersions), this);
    versionsLabel->setBuddy(m_versions);
    auto* fileGrid = new QGridLayout;
    fileGrid->addWidget(outputLabel, 0, 0);
    fileGrid->addWidget(m_path, 0, 1);
    fileGrid->addWidget(browse, 0, 2);
    auto* formatLabel = new QLabel(Tr(strings::kFormat), this);
    formatLabel->setBuddy(m_format);
    fileGrid->addWidget(formatLabel, 1, 0);
    fileGrid->addWidget(m_format, 1, 1, 1, 2);
    fileGrid->addWidget(versionsLabel, 2, 0);
    fileGrid->addWidget(m_versions, 2, 1, 1, 2);

    auto box = [this](const char* text) { return new QCheckBox(Tr(text), this); };
    m_excludeTranslated = box(strings::kExcludeTranslated);
    m_excludeDuplicates = box(strings::kExcludeDuplicates);
    m_excludeNonVisible = box(strings::kExcludeNonVisible);
    m_excludeSystemMessages = box(strings::kExcludeSystemMessages);
    m_excludeRoutings = box(strings::kExcludeRoutings);
    m_excludeLongCaptions = box(strings::kExcludeLongCaptions);
    m_excludeShortCaptions = box(strings::kExcludeShortCaptions);
    m_excludeInstructions = box(strings::kExcludeInstructions);
    m_excludeComments = box(strings::kExcludeComments);
    m_excludeResponses = box(strings::kExcludeResponses);
    m_showShortcuts = box(strings::kShowShortcuts);
    QCheckBox* const left[] = {m_excludeTranslated, m_excludeDuplicates, m_excludeNonVisible,
                               m_excludeSystemMessages, m_excludeRoutings};
    QCheckBox* const right[] = {m_excludeLongCaptions, m_excludeShortCaptions,
                                m_excludeInstructions, m_excludeComments, m_excludeResponses};
    auto* boxGrid = new QGridLayout;
    for (int row = 0; row < 5; ++row) {
        boxGrid->addWidget(left[row], row, 0);
        boxGrid->addWidget(right[row], row, 1);
    }
    boxGrid->addWidget(m_showShortcuts, 5, 0, 1, 2);

    m_languages = new QTreeWidget(this);
    m_languages->setObjectName(QStringLiteral("languages"));
    m_languages->setRootIsDecorated(false);
    m_languages->setUniformRowHeights(true);
    m_languages->setAllColumnsShowFocus(true);
    m_languages->setSelectionMode(QAbstractItemView::SingleSelection);
    m_languages->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_languages->setHeaderLabels({Tr(strings::kAbbreviation), Tr(strings::kLanguage)});
    m_languages->header()->setStretchLastSection(false);
    m_languages->setColumnWidth(0, 100);
    m_languages->setColumnWidth(1, 200);
    for (int i = 0; i < q.GetLanguageCount(); ++i) {
        const CLanguage& language = q.GetLanguage(i);
        auto* item = new QTreeWidgetItem(m_languages, {language.m_shortName, language.m_name});
        item->setData(0, kLanguageIdRole, language.m_id);
        item->setCheckState(0, Qt::Checked);
    }
    QToolButton* up = MoveButton(Qt::UpArrow, this);
    up->setObjectName(QStringLiteral("moveUp"));
    QToolButton* down = MoveButton(Qt::DownArrow, this);
    down->setObjectName(QStringLiteral("moveDown"));

    auto* order = new QGroupBox(Tr(strings::kOrderOfLanguages), this);
    auto* moveColumn = new QVBoxLayout;
    moveColumn->addWidget(up);
    moveColumn->addWidget(down);
    moveColumn->addStretch();
    auto* orderLayout = new QHBoxLayout(order);
    orderLayout->addWidget(m_languages);
    orderLayout->addLayout(moveColumn);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fileGrid);
    layout->addLayout(boxGrid);
    layout->addWidget(order, 1);
    layout->addWidget(buttons);

    connect(browse, &QPushButton::clicked, this, &ExportDialog::Browse);
    connect(up, &QToolButton::clicked, this, [this] { MoveSelected(-1); });
    connect(down, &QToolButton::clicked, this, [this] { MoveSelected(1); });
    connect(buttons, &QDialogButtonBox::accepted, this, &ExportDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ExportDialog::reject);
}

QString ExportDialog::Path() const {
    return m_path->text();
}

ExportDialog::Format ExportDialog::ChosenFormat() const {
    return Format(m_format->currentData().toInt());
}

exchange::ExportOptions ExportDialog::Options() const {
    exchange::ExportOptions options;
    options.excludeTranslated = m_excludeTranslated->isChecked();
    options.excludeDuplicates = m_excludeDuplicates->isChecked();
    options.excludeNonVisible = m_excludeNonVisible->isChecked();
    options.kinds.excludeSystemMessages = m_excludeSystemMessages->isChecked();
    options.kinds.excludeLongCaptions = m_excludeLongCaptions->isChecked();
    options.kinds.excludeShortCaptions = m_excludeShortCaptions->isChecked();
    options.kinds.excludeInstructions = m_excludeInstructions->isChecked();
    options.kinds.excludeComments = m_excludeComments->isChecked();
    options.kinds.excludeResponses = m_excludeResponses->isChecked();
    options.kinds.excludeRoutings = m_excludeRoutings->isChecked();
    options.showShortcuts = m_showShortcuts->isChecked();
    for (int row = 0; row < m_languages->topLevelItemCount(); ++row) {
        const QTreeWidgetItem* item = m_languages->topLevelItem(row);
        if (item->checkState(0) == Qt::Checked)
            options.languages.append(item->data(0, kLanguageIdRole).toInt());
    }
    options.versions = m_versions->ChosenVersions(m_q);
    return options;
}

void ExportDialog::accept() {
    if (Path().isEmpty()) {
        ShowMessage(Tr(strings::kSelectOutputFile));
        return;
    }
    if (Options().languages.size() < 2) {
        ShowMessage(Tr(strings::kSelectTwoLanguages));
        return;
    }
    QDialog::accept();
}

void ExportDialog::ShowMessage(const QString& text) {
    QMessageBox::warning(this, QGuiApplication::applicationDisplayName(), text);
}

QString ExportDialog::ChooseFile(const QString& current) {
    return AskTextFile(this, true, current,
                       ChosenFormat() == Format::TabSeparated ? ExchangeFileKind::Text
                                                              : ExchangeFileKind::Xliff);
}

void ExportDialog::Browse() {
    const QString chosen = ChooseFile(Path());
    if (chosen.isEmpty())
        return;
    m_path->setText(chosen);
    // setText() emits no textEdited: without this the file would be written in the old format,
    // which the import, choosing its reader by the ending, then refuses.
    FormatFromEnding(chosen);
}

void ExportDialog::FormatFromEnding(const QString& path) {
    const bool xliff = exchange::IsXliffPath(path);
    const bool text = path.endsWith(QLatin1String(".txt"), Qt::CaseInsensitive);
    const bool chosenXliff = ChosenFormat() != Format::TabSeparated;
    QSignalBlocker keepPath(m_format);
    if (xliff && !chosenXliff)
        m_format->setCurrentIndex(m_format->findData(int(Format::Xliff12)));
    else if (text && chosenXliff)
        m_format->setCurrentIndex(m_format->findData(int(Format::TabSeparated)));
}

void ExportDialog::MoveSelected(int step) {
    const QList<QTreeWidgetItem*> selected = m_languages->selectedItems();
    if (selected.isEmpty())
        return;
    const int row = m_languages->indexOfTopLevelItem(selected.constFirst());
    const int target = row + step;
    if (target < 0 || target >= m_languages->topLevelItemCount())
        return;
    QTreeWidgetItem* item = m_languages->takeTopLevelItem(row);
    m_languages->insertTopLevelItem(target, item);
    m_languages->setCurrentItem(item);
    item->setSelected(true);
    m_languages->scrollToItem(item);
}

} // namespace ui
