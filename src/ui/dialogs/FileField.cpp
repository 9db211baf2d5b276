#include "ui/dialogs/FileField.h"

#include "ui/dialogs/Strings.h"

#include <QFileDialog>
#include <QPushButton>

namespace ui {

using dialogs::Tr;
namespace strings = dialogs::strings;

QPushButton* BrowseButton(QWidget* parent) {
    auto* button = new QPushButton(Tr(strings::kBrowse), parent);
    button->setObjectName(QStringLiteral("browse"));
    // Enter in the path's edit box means OK, not browse.
    button->setAutoDefault(false);
    const int text = button->fontMetrics().horizontalAdvance(button->text());
    button->setFixedWidth(qMax(text + 16, button->sizeHint().height() * 3 / 2));
    return button;
}

QString AskTextFile(QWidget* parent, bool save, const QString& current, ExchangeFileKind kind) {
    QFileDialog dialog(parent);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setDefaultSuffix(kind == ExchangeFileKind::Xliff ? QStringLiteral("xlf")
                                                            : QStringLiteral("txt"));
    switch (kind) {
    case ExchangeFileKind::Text:
        dialog.setNameFilters({Tr(strings::kTextFiles), Tr(strings::kAllFiles)});
        break;
    case ExchangeFileKind::Xliff:
        dialog.setNameFilters({Tr(strings::kXliffFiles), Tr(strings::kAllFiles)});
        break;
    case ExchangeFileKind::Any:
        dialog.setNameFilters({Tr(strings::kTranslationFiles), Tr(strings::kTextFiles),
                               Tr(strings::kXliffFiles), Tr(strings::kAllFiles)});
        break;
    }
    if (!current.isEmpty())
        dialog.selectFile(current);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return QString();
    return dialog.selectedFiles().constFirst();
}

} // namespace ui
