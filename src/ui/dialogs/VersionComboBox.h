#pragma once

#include <QComboBox>
#include <QList>
#include <QString>

class CQuestionnaire;

namespace ui {

// A drop-down list of the questionnaire's versions with a check mark on each, so that several can
// be chosen at once. Item 0 is "All versions"; checking it clears the others and checking a
// version clears it. The list stays open while items are toggled by mouse or space bar; the
// closed box shows the checked names.
class VersionComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit VersionComboBox(QWidget* parent = nullptr);

    // Lists "All versions" and the questionnaire's versions; checks the preselected ones that
    // exist, or "All versions" when none does.
    void Fill(const CQuestionnaire& q, const QList<qint32>& preselected);

    bool IsChecked(int item) const;
    // Applies the rules between "All versions" and the versions.
    void SetChecked(int item, bool checked);
    void Toggle(int item) { SetChecked(item, !IsChecked(item)); }

    // The ids of the checked versions in questionnaire order; empty, meaning all versions, when
    // every version or none is checked.
    QList<qint32> ChosenVersions(const CQuestionnaire& q) const;

    // The checked names in item order, joined by the user's list separator, as the closed box
    // shows them.
    QString DisplayText() const;

    // The list separator of a locale named as QLocale names it ("de_DE"), as the locale table
    // gives it; empty for a locale the table lacks.
    static QString ListSeparator(const QString& localeName);
    // The separator shown between names: the locale's, ";" when it has none, with its trailing
    // spaces replaced by exactly one.
    static QString JoinSeparator(const QString& localeSeparator);

Q_SIGNALS:
    // An item was checked or unchecked.
    void ChecksChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ui
