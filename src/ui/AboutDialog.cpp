#include "ui/AboutDialog.h"

#include "app/VersionInfo.h"
#include "ui/Strings.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QStyle>

namespace ui {

QString AboutDialog::FormatDate(const app::VersionInfo& version) {
    switch (version.dateStatus) {
    case app::VersionInfo::DateStatus::Null:
        return {};
    case app::VersionInfo::DateStatus::Invalid:
        return Tr(strings::kInvalidDate);
    case app::VersionInfo::DateStatus::Valid:
        break;
    }
    return QLocale().toString(version.fileDate, QLocale::ShortFormat);
}

AboutDialog::AboutDialog(const app::VersionInfo& version, QWidget* parent) : QDialog(parent) {
    setWindowTitle(Tr(strings::kAboutTitle));
    auto* icon = new QLabel(this);
    const QIcon programIcon = QApplication::windowIcon().isNull()
                                  ? style()->standardIcon(QStyle::SP_MessageBoxInformation)
                                  : QApplication::windowIcon();
    icon->setPixmap(programIcon.pixmap(48, 48));
    icon->setAlignment(Qt::AlignTop);
    m_product = new QLabel(version.productName + QLatin1Char(' ') + version.fileVersionText, this);
    m_legal = new QLabel(version.legalCopyright, this);
    m_date = new QLabel(FormatDate(version), this);
    for (QLabel* line : {m_product, m_legal, m_date})
        line->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QGridLayout(this);
    layout->setHorizontalSpacing(16);
    layout->addWidget(icon, 0, 0, 3, 1);
    layout->addWidget(m_product, 0, 1);
    layout->addWidget(m_legal, 1, 1);
    layout->addWidget(m_date, 2, 1);
    layout->addWidget(buttons, 3, 0, 1, 2);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

QString AboutDialog::ProductLine() const {
    return m_product->text();
}

QString AboutDialog::LegalLine() const {
    return m_legal->text();
}

QString AboutDialog::DateLine() const {
    return m_date->text();
}

} // namespace ui
