#include "ui/RowIcons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <array>

namespace ui {

namespace {

using questionnaire::RowKind;

// A sheet of paper with lines of text: long and short captions differ by the number of lines.
void DrawPage(QPainter& p, const QColor& ink, int lines) {
    p.setPen(QPen(QColor(90, 90, 90), 1));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(2.5, 1.5, 11, 13));
    p.setPen(QPen(ink, 1.4));
    for (int i = 0; i < lines; ++i) {
        const double y = 4.5 + i * 2.5;
        p.drawLine(QPointF(4.5, y), QPointF(i == lines - 1 ? 8.5 : 11.5, y));
    }
}

QPixmap Draw(RowKind kind, int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 16.0, size / 16.0);
    switch (kind) {
    case RowKind::LongCaption:
        DrawPage(p, QColor(30, 80, 180), 4);
        break;
    case RowKind::ShortCaption:
        DrawPage(p, QColor(30, 140, 60), 2);
        break;
    case RowKind::Response: {
        // A ticked answer box.
        p.setPen(QPen(QColor(60, 60, 60), 1.2));
        p.setBrush(Qt::white);
        p.drawRoundedRect(QRectF(2.5, 2.5, 11, 11), 1.5, 1.5);
        p.setPen(QPen(QColor(20, 130, 40), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        QPainterPath tick;
        tick.moveTo(4.5, 8);
        tick.lineTo(7, 10.5);
        tick.lineTo(11.5, 5);
        p.setBrush(Qt::NoBrush);
        p.drawPath(tick);
        break;
    }
    case RowKind::SystemMessage: {
        // A warning triangle: the messages the survey shows when an answer is refused.
        QPainterPath triangle;
        triangle.moveTo(8, 1.5);
        triangle.lineTo(14.5, 14);
        triangle.lineTo(1.5, 14);
        triangle.closeSubpath();
        p.setPen(QPen(QColor(150, 100, 0), 1));
        p.setBrush(QColor(250, 200, 40));
        p.drawPath(triangle);
        p.setPen(QPen(Qt::black, 1.8, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(8, 5.5), QPointF(8, 9.5));
        p.drawPoint(QPointF(8, 12));
        break;
    }
    case RowKind::Routing: {
        // A fork: the questionnaire takes one way or another.
        p.setPen(QPen(QColor(150, 40, 150), 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.setBrush(Qt::NoBrush);
        p.drawLine(QPointF(3, 8), QPointF(7, 8));
        p.drawLine(QPointF(7, 8), QPointF(12, 3.5));
        p.drawLine(QPointF(7, 8), QPointF(12, 12.5));
        p.setBrush(QColor(150, 40, 150));
        p.drawEllipse(QPointF(12.5, 3.5), 1.5, 1.5);
        p.drawEllipse(QPointF(12.5, 12.5), 1.5, 1.5);
        break;
    }
    case RowKind::Instructions: {
        // An "i" in a circle.
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(30, 110, 200));
        p.drawEllipse(QRectF(1.5, 1.5, 13, 13));
        p.setBrush(Qt::white);
        p.drawEllipse(QPointF(8, 4.8), 1.3, 1.3);
        p.drawRoundedRect(QRectF(6.9, 7, 2.2, 5.8), 0.8, 0.8);
        break;
    }
    case RowKind::Comments: {
        // A speech balloon.
        QPainterPath balloon;
        balloon.addRoundedRect(QRectF(1.5, 2, 13, 9), 2.5, 2.5);
        QPainterPath tail;
        tail.moveTo(4.5, 10.5);
        tail.lineTo(3.5, 14.5);
        tail.lineTo(8, 10.5);
        tail.closeSubpath();
        p.setPen(QPen(QColor(120, 90, 20), 1));
        p.setBrush(QColor(255, 240, 170));
        p.drawPath(balloon.united(tail));
        p.setPen(QPen(QColor(120, 90, 20), 1.2, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(4.5, 5.5), QPointF(11.5, 5.5));
        p.drawLine(QPointF(4.5, 8), QPointF(9.5, 8));
        break;
    }
    }
    return pixmap;
}

QIcon Make(RowKind kind) {
    QIcon icon;
    for (int size : {16, 32})
        icon.addPixmap(Draw(kind, size));
    return icon;
}

QPixmap DrawCommand(CommandIcon command, int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 16.0, size / 16.0);
    const QPen outline(QColor(70, 70, 70), 1);
    switch (command) {
    case CommandIcon::Cut:
        // Scissors: two blades crossing above two handles.
        p.setPen(QPen(QColor(80, 80, 80), 1.4, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(4.5, 1.5), QPointF(10, 10));
        p.drawLine(QPointF(11.5, 1.5), QPointF(6, 10));
        p.setPen(QPen(QColor(190, 30, 30), 1.5));
        p.setBrush(Qt::NoBrush);
        p.drawEllipse(QPointF(5, 12.3), 2.3, 2.3);
        p.drawEllipse(QPointF(11, 12.3), 2.3, 2.3);
        break;
    case CommandIcon::Copy:
        for (const QPointF& corner : {QPointF(1.5, 1.5), QPointF(5.5, 4.5)}) {
            p.setPen(outline);
            p.setBrush(Qt::white);
            p.drawRect(QRectF(corner, QSizeF(9, 11)));
            p.setPen(QPen(QColor(30, 80, 180), 1));
            for (int i = 0; i < 3; ++i)
                p.drawLine(corner + QPointF(2, 3 + 2.5 * i), corner + QPointF(7, 3 + 2.5 * i));
        }
        break;
    case CommandIcon::Paste:
        p.setPen(outline);
        p.setBrush(QColor(190, 140, 70));
        p.drawRoundedRect(QRectF(2.5, 2.5, 10, 12.5), 1, 1);
        p.setBrush(QColor(200, 200, 200));
        p.drawRect(QRectF(5, 1, 5, 3));
        p.setBrush(Qt::white);
        p.drawRect(QRectF(7.5, 6.5, 7, 8.5));
        p.setPen(QPen(QColor(30, 80, 180), 1));
        p.drawLine(QPointF(9, 9), QPointF(13, 9));
        p.drawLine(QPointF(9, 11.5), QPointF(13, 11.5));
        break;
    case CommandIcon::Print:
        p.setPen(outline);
        p.setBrush(Qt::white);
        p.drawRect(QRectF(4.5, 1.5, 7, 5));
        p.setBrush(QColor(150, 150, 150));
        p.drawRoundedRect(QRectF(1.5, 6.5, 13, 6), 1, 1);
        p.setBrush(Qt::white);
        p.drawRect(QRectF(4.5, 10.5, 7, 4.5));
        p.setPen(QPen(QColor(40, 160, 60), 1));
        p.drawPoint(QPointF(12.5, 8.5));
        break;
    case CommandIcon::About:
        // A question mark in a circle.
        p.setPen(QPen(QColor(30, 90, 170), 1));
        p.setBrush(QColor(225, 238, 255));
        p.drawEllipse(QRectF(1.5, 1.5, 13, 13));
        p.setPen(QPen(QColor(30, 90, 170), 1.8, Qt::SolidLine, Qt::RoundCap));
        p.setBrush(Qt::NoBrush);
        p.drawArc(QRectF(5.5, 3.8, 5, 4.5), 150 * 16, -240 * 16);
        p.drawLine(QPointF(8, 8.3), QPointF(8, 9.5));
        p.drawPoint(QPointF(8, 12));
        break;
    case CommandIcon::Dictionary:
        // A closed book with two language marks on its cover.
        p.setPen(QPen(QColor(90, 40, 20), 1));
        p.setBrush(QColor(170, 60, 40));
        p.drawRoundedRect(QRectF(3, 1.5, 10.5, 13), 1, 1);
        p.setBrush(QColor(245, 240, 225));
        p.drawRect(QRectF(3, 12.5, 10.5, 2));
        p.setPen(QPen(QColor(255, 235, 160), 1.2));
        p.drawLine(QPointF(5.5, 5), QPointF(11, 5));
        p.drawLine(QPointF(5.5, 8), QPointF(9.5, 8));
        break;
    }
    return pixmap;
}

} // namespace

QIcon DrawnIcon(CommandIcon command) {
    QIcon icon;
    for (int size : {16, 32})
        icon.addPixmap(DrawCommand(command, size));
    return icon;
}

const QIcon& RowIcon(RowKind kind) {
    static const std::array<QIcon, 7> icons = [] {
        std::array<QIcon, 7> made;
        for (int k = 0; k < 7; ++k)
            made[size_t(k)] = Make(RowKind(k));
        return made;
    }();
    return icons[size_t(kind)];
}

} // namespace ui
