#include "selection/MapSelectionArt.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <stdexcept>

namespace brevant::selection {

namespace {

constexpr int kCursorSize = 32;
constexpr int kIconSize = 24;

QPixmap blank(int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

/// A white shape with a black outline reads on any map colour.
void outlined(QPainter& painter, const QPainterPath& path)
{
    painter.setPen(QPen(Qt::black, 1.2));
    painter.setBrush(Qt::white);
    painter.drawPath(path);
}

void arrow(QPainter& painter, QPointF tip, double scale)
{
    QPainterPath path(tip);
    const QPointF offsets[] = {{0, 16}, {4, 12}, {7, 18}, {9, 17}, {6, 11}, {11, 11}};
    for (const auto& offset : offsets) {
        path.lineTo(tip + offset * scale);
    }
    path.closeSubpath();
    outlined(painter, path);
}

/// A magnifying glass whose lens centre is `centre`, with "+", "-" or nothing in it.
void magnifier(QPainter& painter, QPointF centre, double radius, char sign)
{
    painter.setPen(QPen(Qt::black, 3, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(centre + QPointF(radius * 0.7, radius * 0.7),
                     centre + QPointF(radius * 1.9, radius * 1.9));
    painter.setPen(QPen(Qt::black, 1.5));
    painter.setBrush(QColor(230, 242, 255));
    painter.drawEllipse(centre, radius, radius);
    painter.setPen(QPen(Qt::black, 1.8));
    const double arm = radius * 0.55;
    if (sign == '+' || sign == '-') {
        painter.drawLine(centre - QPointF(arm, 0), centre + QPointF(arm, 0));
    }
    if (sign == '+') {
        painter.drawLine(centre - QPointF(0, arm), centre + QPointF(0, arm));
    }
}

/// An open hand, or a closed one while it drags the map.
void hand(QPainter& painter, double size, bool closed)
{
    const double s = size / 32.0;
    QPainterPath palm;
    palm.addRoundedRect(QRectF(8 * s, 14 * s, 16 * s, 13 * s), 4 * s, 4 * s);
    const double fingerTop = closed ? 11 : 5;
    for (int i = 0; i < 4; ++i) {
        palm.addRoundedRect(QRectF((8.5 + i * 4) * s, fingerTop * s, 3.4 * s, 12 * s), 1.7 * s,
                            1.7 * s);
    }
    palm.addRoundedRect(QRectF(4 * s, (closed ? 15 : 13) * s, 6 * s, 3.4 * s), 1.7 * s, 1.7 * s);
    palm.setFillRule(Qt::WindingFill);
    outlined(painter, palm.simplified());
}

void information(QPainter& painter, QPointF centre, double radius)
{
    painter.setPen(QPen(Qt::black, 1.2));
    painter.setBrush(QColor(40, 90, 200));
    painter.drawEllipse(centre, radius, radius);
    painter.setPen(QPen(Qt::white, radius * 0.28, Qt::SolidLine, Qt::RoundCap));
    painter.drawPoint(centre - QPointF(0, radius * 0.5));
    painter.drawLine(centre - QPointF(0, radius * 0.05), centre + QPointF(0, radius * 0.55));
}

void dashedBox(QPainter& painter, const QRectF& box)
{
    painter.setPen(QPen(Qt::black, 1, Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(box);
}

QCursor cursorFrom(const QPixmap& pixmap, int hotX, int hotY)
{
    return QCursor(pixmap, hotX, hotY);
}

/// Three small squares, filled as `fill` says (one flag per square).
void units(QPainter& painter, const bool (&fill)[3], QColor colour)
{
    const QRectF boxes[] = {{3, 3, 8, 8}, {13, 3, 8, 8}, {8, 13, 8, 8}};
    for (int i = 0; i < 3; ++i) {
        painter.setPen(QPen(Qt::black, 1));
        painter.setBrush(fill[i] ? QBrush(colour) : QBrush(Qt::white));
        painter.drawRect(boxes[i]);
    }
}

} // namespace

QCursor selectionCursor(const std::string& name)
{
    QPixmap pixmap = blank(kCursorSize);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    if (name == "DEFAULT") {
        arrow(painter, {1, 1}, 1.0);
        return cursorFrom(pixmap, 1, 1);
    }
    if (name == "ZOOMIN" || name == "ZOOMOUT" || name == "ZOOMINMOVE" || name == "ZOOMOUTMOVE") {
        const bool moving = name.ends_with("MOVE");
        if (moving) {
            // A band is being drawn: the corner of the band marks the hot spot.
            dashedBox(painter, QRectF(1, 1, 12, 12));
        }
        magnifier(painter, {12, 12}, 8, name.starts_with("ZOOMIN") ? '+' : '-');
        return cursorFrom(pixmap, moving ? 1 : 12, moving ? 1 : 12);
    }
    if (name == "PAN" || name == "PANMOVE") {
        hand(painter, kCursorSize, name == "PANMOVE");
        return cursorFrom(pixmap, 16, 16);
    }
    if (name == "IDENTIFY") {
        arrow(painter, {1, 1}, 0.9);
        information(painter, {22, 22}, 8);
        return cursorFrom(pixmap, 1, 1);
    }
    if (name == "SELECTFEATURES" || name == "SELECTFEATURESMOVE") {
        arrow(painter, {1, 1}, 0.9);
        if (name == "SELECTFEATURESMOVE") {
            dashedBox(painter, QRectF(12, 14, 17, 14));
        } else {
            painter.setPen(QPen(Qt::black, 1));
            painter.setBrush(QColor(190, 255, 232));
            painter.drawRect(QRectF(14, 18, 14, 10));
        }
        return cursorFrom(pixmap, 1, 1);
    }
    throw std::invalid_argument("no cursor named " + name);
}

QIcon toolIcon(const std::string& key)
{
    QPixmap pixmap = blank(kIconSize);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    if (key == "ZoomIn" || key == "ZoomOut") {
        magnifier(painter, {9, 9}, 6.5, key == "ZoomIn" ? '+' : '-');
    } else if (key == "Pan") {
        hand(painter, kIconSize, false);
    } else if (key == "FullExtent") {
        painter.setPen(QPen(QColor(20, 90, 40), 1.2));
        painter.setBrush(QColor(120, 200, 140));
        painter.drawEllipse(QPointF(12, 12), 9, 9);
        painter.setPen(QPen(QColor(20, 60, 140), 1));
        painter.drawLine(QPointF(3, 12), QPointF(21, 12));
        painter.drawEllipse(QPointF(12, 12), 4, 9);
    } else if (key == "Identify") {
        information(painter, {12, 12}, 9);
    } else if (key == "SelectElement") {
        arrow(painter, {5, 2}, 1.0);
    } else if (key == "SelectFeatures") {
        painter.setPen(QPen(Qt::black, 1));
        painter.setBrush(QColor(190, 255, 232));
        painter.drawRect(QRectF(9, 11, 13, 10));
        arrow(painter, {3, 2}, 0.8);
    } else if (key == "SelectAll") {
        units(painter, {true, true, true}, QColor(0, 200, 200));
    } else if (key == "DeSelectAll") {
        units(painter, {false, false, false}, Qt::white);
        painter.setPen(QPen(Qt::red, 2));
        painter.drawLine(QPointF(4, 20), QPointF(20, 4));
    } else if (key == "SwitchSelection") {
        units(painter, {true, false, true}, QColor(0, 200, 200));
    } else if (key == "Layers") {
        const QColor colours[] = {QColor(90, 140, 220), QColor(120, 190, 120),
                                  QColor(230, 200, 90)};
        for (int i = 0; i < 3; ++i) {
            const double y = 15 - i * 5;
            const QPointF diamond[] = {{2, y}, {12, y - 4}, {22, y}, {12, y + 4}};
            painter.setPen(QPen(Qt::black, 1));
            painter.setBrush(colours[i]);
            painter.drawPolygon(diamond, 4);
        }
    } else if (key == "AddData") {
        painter.setPen(QPen(Qt::black, 1));
        painter.setBrush(QColor(250, 220, 120));
        painter.drawRect(QRectF(2, 5, 15, 15));
        painter.setPen(QPen(QColor(0, 140, 0), 3));
        painter.drawLine(QPointF(18, 3), QPointF(18, 13));
        painter.drawLine(QPointF(13, 8), QPointF(23, 8));
    } else {
        return {};
    }
    return QIcon(pixmap);
}

} // namespace brevant::selection
