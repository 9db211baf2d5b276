#pragma once

#include <QDialog>

class QLabel;

namespace app {
class VersionInfo;
}

namespace ui {

// "About Translator": the product and its file version, the legal notice, and the date of the
// program's file in the user's locale.
class AboutDialog : public QDialog {
    Q_OBJECT
public:
    explicit AboutDialog(const app::VersionInfo& version, QWidget* parent = nullptr);

    QString ProductLine() const;
    QString LegalLine() const;
    QString DateLine() const;

    // The date line for a version's file date.
    static QString FormatDate(const app::VersionInfo& version);

private:
    QLabel* m_product;
    QLabel* m_legal;
    QLabel* m_date;
};

} // namespace ui
