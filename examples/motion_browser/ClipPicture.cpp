#include "ClipPicture.h"

#include <Velor.Base/VelorMath.h>
#include <Velor.Base/VelorRandom.h>

#include <QtGui/QPainter>
#include <QtGui/QPainterPath>
#include <QtGui/QPixmapCache>

#include <cmath>
#include <numbers>

namespace {

constexpr double Margin = 0.2;
constexpr double CornerRadius = 0.1;
constexpr double LineWidth = 0.045;
constexpr double DotRadius = 0.055;
constexpr double ArrowLength = 0.15;

/// What the name of a clip decides. The same generator on every machine makes the same picture there.
struct Motion
{
    explicit Motion(const QString& name)
    {
        VelorRandom random(qChecksum(name.toUtf8()));
        const auto between = [&random](double low, double high) {
            return static_cast<float>(low + (high - low) * random.next());
        };
        const float turn = between(0.6, 2.8) * (random.nextInt(2) == 0 ? 1.0F : -1.0F);
        const float direction = between(0.0, 2.0 * std::numbers::pi);
        const TVec2d<float> target{std::cos(direction), std::sin(direction)};
        const TVec2d<float> heading{std::cos(direction + turn), std::sin(direction + turn)};
        path = VelorMath::turningCurve({}, target, heading, between(0.5, 1.3), between(0.2, 0.6),
                                       between(0.05, 0.3), Segments);
        hue = random.nextInt(360);
    }

    static constexpr int Segments = 32;
    QList<VelorCurveKnot> path;
    int hue = 0;
};

QPolygonF positions(const QList<VelorCurveKnot>& path)
{
    QPolygonF points;
    for (const VelorCurveKnot& knot : path) {
        points.append(QPointF(knot.position.x, knot.position.y));
    }
    return points;
}

/// `points` moved and scaled into the middle of a square from 0 to 1.
QPolygonF fitted(const QPolygonF& points)
{
    const QRectF bounds = points.boundingRect();
    const double scale = (1.0 - 2.0 * Margin) / std::max({bounds.width(), bounds.height(), 1e-6});
    QTransform fit;
    fit.translate(0.5, 0.5);
    fit.scale(scale, scale);
    fit.translate(-bounds.center().x(), -bounds.center().y());
    return fit.map(points);
}

QPolygonF arrowHead(const QPointF& tip, const TVec2d<float>& heading)
{
    const QPointF along = QPointF(heading.x, heading.y) * ArrowLength;
    const QPointF across = QPointF(-along.y(), along.x()) * 0.5;
    return QPolygonF({tip + along * 0.5, tip - along * 0.5 + across, tip - along * 0.5 - across});
}

void paintCard(QPainter& painter, const Motion& motion, bool isDark)
{
    const QColor ground = QColor::fromHsl(motion.hue, isDark ? 70 : 130, isDark ? 50 : 232);
    const QColor edge = QColor::fromHsl(motion.hue, isDark ? 80 : 90, isDark ? 95 : 180);
    const QColor line = QColor::fromHsl(motion.hue, isDark ? 190 : 170, isDark ? 175 : 90);
    const double inset = 0.01;

    painter.setPen(QPen(edge, 2.0 * inset));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(0, 0, 1, 1).adjusted(inset, inset, -inset, -inset), CornerRadius,
                            CornerRadius);

    const QPolygonF points = fitted(positions(motion.path));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(line, LineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(points);
    painter.setPen(Qt::NoPen);
    painter.setBrush(line);
    painter.drawEllipse(points.first(), DotRadius, DotRadius);
    painter.drawPolygon(arrowHead(points.last(), motion.path.last().tangent));
}

} // namespace

QPixmap clipPicture(const QString& name, int side, double ratio, const QPalette& palette)
{
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    const QString key = QStringLiteral("clip %1 %2 %3 %4").arg(side).arg(ratio).arg(isDark).arg(name);
    QPixmap picture;
    if (QPixmapCache::find(key, &picture)) {
        return picture;
    }
    const int pixels = static_cast<int>(std::lround(side * ratio));
    picture = QPixmap(pixels, pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels, pixels);
    paintCard(painter, Motion(name), isDark);
    painter.end();
    picture.setDevicePixelRatio(ratio);
    QPixmapCache::insert(key, picture);
    return picture;
}
