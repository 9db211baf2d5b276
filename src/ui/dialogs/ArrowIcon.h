#pragma once

#include <QIcon>

namespace ui {

// A block arrow pointing the given way, drawn in the button text colour at the usual icon sizes;
// empty for Qt::NoArrow. Serves buttons that move things up and down.
QIcon ArrowIcon(Qt::ArrowType direction);

} // namespace ui
