#include "ui/dialogs/VersionComboBox.h"

#include "questionnaire/Questionnaire.h"
#include "ui/dialogs/Strings.h"
#include "util/LocaleTable.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QStyledItemDelegate>

namespace ui {

VersionComboBox::VersionComboBox(QWidget* parent) : QComboBox(parent) {
    // A plain item delegate draws the check mark each item carries; the menu-like one of some
    // styles would show the current item instead.
    setItemDelegate(new QStyledItemDelegate(this));
    // Installed after the popup's own filters, so these see the clicks first and keep the popup
    // open while items are toggled.
    view()->installEventFilter(this);
    view()->viewport()->installEventFilter(this);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
}

void VersionComboBox::Fill(const CQuestionnaire& q, const QList<qint32>& preselected) {
    clear();
    addItem(dialogs::Tr(dialogs::strings::kAllVersions));
    setItemData(0, Qt::Unchecked, Qt::CheckStateRole);
    bool any = false;
    for (int i = 0; i < q.GetVersionCount(); ++i) {
        const CVersion& version = q.GetVersion(i);
        const bool checked = preselected.contains(version.GetId());
        any = any || checked;
        addItem(version.GetName(), version.GetId());
        setItemData(i + 1, checked ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
    }
    if (!any)
        setItemData(0, Qt::Checked, Qt::CheckStateRole);
    setToolTip(DisplayText());
    update();
}

bool VersionComboBox::IsChecked(int item) const {
    return itemData(item, Qt::CheckStateRole).toInt() == Qt::Checked;
}

void VersionComboBox::SetChecked(int item, bool checked) {
    if (item < 0 || item >= count())
        return;
    setItemData(item, checked ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
    if (checked && item == 0) {
        for (int i = 1; i < count(); ++i)
            setItemData(i, Qt::Unchecked, Qt::CheckStateRole);
    } else if (checked && IsChecked(0)) {
        setItemData(0, Qt::Unchecked, Qt::CheckStateRole);
    }
    setToolTip(DisplayText());
    update();
    view()->viewport()->update();
    Q_EMIT ChecksChanged();
}

QList<qint32> VersionComboBox::ChosenVersions(const CQuestionnaire& q) const {
    QList<qint32> ids;
    for (int i = 1; i < count() && i <= q.GetVersionCount(); ++i)
        if (IsChecked(i))
            ids.append(q.GetVersion(i - 1).GetId());
    if (ids.size() == q.GetVersionCount())
        ids.clear();
    return ids;
}

QString VersionComboBox::DisplayText() const {
    QStringList names;
    for (int i = 0; i < count(); ++i)
        if (IsChecked(i))
            names.append(itemText(i));
    return names.join(JoinSeparator(ListSeparator(QLocale::system().name())));
}

QString VersionComboBox::ListSeparator(const QString& localeName) {
    // Qt's locales carry no list separator; the locale table does.
    const util::LocaleInfo* info = util::LocaleTable::Instance().FindByTag(localeName);
    return info == nullptr ? QString() : info->listSeparator;
}

QString VersionComboBox::JoinSeparator(const QString& localeSeparator) {
    QString separator = localeSeparator.isEmpty() ? QStringLiteral(";") : localeSeparator;
    while (separator.endsWith(QLatin1Char(' ')))
        separator.chop(1);
    return separator + QLatin1Char(' ');
}

bool VersionComboBox::eventFilter(QObject* watched, QEvent* event) {
    QAbstractItemView* list = view();
    if (watched == list->viewport()) {
        if (event->type() == QEvent::MouseButtonPress) {
            const auto* mouse = static_cast<QMouseEvent*>(event);
            if (mouse->button() != Qt::LeftButton)
                return false;
            const QModelIndex index = list->indexAt(mouse->position().toPoint());
            if (index.isValid()) {
                list->setCurrentIndex(index);
                Toggle(index.row());
            }
            return true;
        }
        // The popup closes on a release over an item; swallowing it keeps the list open.
        if (event->type() == QEvent::MouseButtonRelease ||
            event->type() == QEvent::MouseButtonDblClick)
            return static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
    } else if (watched == list && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Space) {
            if (list->currentIndex().isValid())
                Toggle(list->currentIndex().row());
            return true;
        }
    }
    return QComboBox::eventFilter(watched, event);
}

void VersionComboBox::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    // One item's text and icon would show otherwise: the box shows every checked name.
    option.currentIcon = QIcon();
    option.currentText = fontMetrics().elidedText(DisplayText(), Qt::ElideRight, field.width() - 4);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

} // namespace ui
