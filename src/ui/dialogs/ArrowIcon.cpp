#include "ui/dialogs/ArrowIcon.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>
#include <QPolygonF>
#include <QTransform>

namespace ui {

namespace {

// The upward arrow in a unit square: a head over a shaft, with a margin all round.
QPolygonF UpArrow() {
    return QPolygonF({{0.50, 0.10},
                      {0.90, 0.52},
                      {0.65, 0.52},
                      {0.65, 0.90},
                      {0.35, 0.90},
                      {0.35, 0.52},
                      {0.10, 0.52}});
}

qreal QuarterTurns(Qt::ArrowType direction) {
    switch (direction) {
    case Qt::RightArrow:
        return 1;
    case Qt::DownArrow:
        return 2;
    case Qt::LeftArrow:
        return 3;
    default:
        return 0;
    }
}

QPixmap DrawArrow(Qt::ArrowType direction, int size, const QColor& colour) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    // Rotate the upward arrow about the centre of the unit square, then scale it to the pixmap.
    QTransform transform;
    transform.scale(size, size);
    transform.translate(0.5, 0.5);
    transform.rotate(90 * QuarterTurns(direction));
    transform.translate(-0.5, -0.5);
    QPainterPath path;
    path.addPolygon(transform.map(UpArrow()));
    path.closeSubpath();
    painter.fillPath(path, colour);
    return pixmap;
}

} // namespace

QIcon ArrowIcon(Qt::ArrowType direction) {
    QIcon icon;
    if (direction == Qt::NoArrow)
        return icon;
    const QColor colour = QGuiApplication::palette().color(QPalette::Active, QPalette::ButtonText);
    for (int size : {16, 24, 32, 48})
        icon.addPixmap(DrawArrow(direction, size, colour));
    return icon;
}

} // namespace ui
