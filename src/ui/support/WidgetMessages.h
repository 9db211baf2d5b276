#pragma once

#include "util/Messages.h"

#include <QPointer>

class QWidget;

namespace ui {

// Messages of the core shown as message boxes over a window of the program.
class WidgetMessages : public util::Messages {
public:
    // `parent` may be null: the boxes are then centred on the screen.
    explicit WidgetMessages(QWidget* parent);

    util::Answer Show(util::MessageKind kind, const QString& text,
                      const QList<util::Answer>& answers) override;

private:
    QPointer<QWidget> m_parent; // a window closed meanwhile leaves the boxes without a parent
};

} // namespace ui
