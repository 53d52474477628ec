#include "TreeIcons.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {

void drawFolder(QPainter &p, const QRectF &r)
{
    const QColor body(0xE8, 0xB3, 0x3C);
    QPainterPath tab;
    tab.addRoundedRect(QRectF(r.left(), r.top(), r.width() * 0.45, r.height() * 0.3), 1.5, 1.5);
    p.setPen(Qt::NoPen);
    p.setBrush(body.darker(115));
    p.drawPath(tab);
    p.setBrush(body);
    p.setPen(QPen(body.darker(140), r.width() / 16.0));
    p.drawRoundedRect(QRectF(r.left(), r.top() + r.height() * 0.18, r.width(), r.height() * 0.82), 1.5, 1.5);
}

void drawBox(QPainter &p, const QRectF &r, bool filled)
{
    // Green, not the palette's highlight: the mark must still show on a selected row.
    const QColor accent(0x2B, 0x8A, 0x3E);
    p.setPen(QPen(filled ? accent.darker(130) : QColor(0x70, 0x70, 0x70), r.width() / 9.0));
    p.setBrush(filled ? accent : QColor(Qt::white));
    p.drawRoundedRect(r, r.width() / 6.0, r.width() / 6.0);
}

void drawMark(QPainter &p, const QRectF &r, bool partial)
{
    p.setPen(QPen(Qt::white, r.width() / 6.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    if (partial) {
        p.drawLine(QPointF(r.left() + r.width() * 0.25, r.center().y()),
                   QPointF(r.right() - r.width() * 0.25, r.center().y()));
        return;
    }
    QPainterPath tick;
    tick.moveTo(r.left() + r.width() * 0.22, r.top() + r.height() * 0.52);
    tick.lineTo(r.left() + r.width() * 0.42, r.top() + r.height() * 0.72);
    tick.lineTo(r.left() + r.width() * 0.78, r.top() + r.height() * 0.30);
    p.drawPath(tick);
}

// A red disc with a white bar and dot in the lower right corner: the feed failed.
void drawFailureBadge(QPainter &p, int size)
{
    const qreal unit = size / 16.0;
    const QRectF disc(unit * 7.5, unit * 7.5, unit * 8.5, unit * 8.5);
    p.setPen(QPen(Qt::white, unit));
    p.setBrush(TreeIcons::kFailedColor);
    p.drawEllipse(disc);
    p.setPen(QPen(Qt::white, unit * 1.4, Qt::SolidLine, Qt::RoundCap));
    const qreal x = disc.center().x();
    p.drawLine(QPointF(x, disc.top() + unit * 2), QPointF(x, disc.center().y() + unit * 0.6));
    p.drawPoint(QPointF(x, disc.bottom() - unit * 1.9));
}

QPixmap paint(int size, bool folder, bool hasMark, bool filled, bool partial, bool failed)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal unit = size / 16.0;
    QRectF box(unit * 1.5, unit * 1.5, unit * 13, unit * 13);
    if (folder) {
        drawFolder(p, QRectF(unit * 0.5, unit * 1.5, unit * 13, unit * 11));
        box = QRectF(unit * 7, unit * 7, unit * 8.5, unit * 8.5);
    }
    if (hasMark) {
        drawBox(p, box, filled);
        if (filled)
            drawMark(p, box, partial);
    }
    if (failed)
        drawFailureBadge(p, size);
    return pixmap;
}

} // namespace

QIcon TreeIcons::Make(bool folder, Mark mark, bool failed)
{
    const bool hasMark = mark != Mark::None;
    const bool filled = mark == Mark::Checked || mark == Mark::Partial;
    QIcon icon;
    for (const int size : {16, 24, 32, 48})
        icon.addPixmap(paint(size, folder, hasMark, filled, mark == Mark::Partial, failed));
    return icon;
}

QIcon TreeIcons::ForImage(const QString &imageName, bool isCategory, bool failed)
{
    static QHash<QString, QIcon> cache;
    const QString key = (isCategory ? QStringLiteral("c") : QStringLiteral("s")) +
                        (failed ? QStringLiteral("!:") : QStringLiteral(":")) + imageName;
    const auto found = cache.constFind(key);
    if (found != cache.constEnd())
        return *found;
    Mark mark = Mark::Unchecked;
    if (imageName == QLatin1String("checked") || imageName == QLatin1String("checked_folder"))
        mark = Mark::Checked;
    else if (imageName == QLatin1String("partial_folder"))
        mark = Mark::Partial;
    else if (isCategory && imageName != QLatin1String("unchecked_folder"))
        mark = Mark::None;
    const QIcon icon = Make(isCategory, mark, failed);
    cache.insert(key, icon);
    return icon;
}
