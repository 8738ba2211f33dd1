#include "Pairs.h"
#include "Peers.h"

#include <Velor.Base/VelorMath.h>
#include <Velor.Base/VelorRandom.h>

#include <QtGui/QPainterPath>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

// Curves and numbers. Each work goes through a table of inputs, so that no compiler works anything out
// beforehand. All peers are called as a function of a library is: what a caller's compiler makes of an
// inlined formula in its own loop is another question.

namespace {

using Vec2 = TVec2d<float>;
using Vec3 = TVec3d<float>;

constexpr std::size_t InputCount = 1024;
constexpr int DroppedOutputs = 37;

/// Numbers in -1..1.
const std::vector<float>& numbers()
{
    static const auto values = [] {
        std::vector<float> result(InputCount * 3 + 12);
        std::mt19937 engine(4);
        std::uniform_real_distribution<float> unit(-1, 1);
        for (float& value : result) {
            value = unit(engine);
        }
        return result;
    }();
    return values;
}

float parameter(std::size_t i) { return std::abs(numbers()[i]); }

/// Calls `evaluate` with the number of each input.
template <typename Evaluate>
bench::Work forEachInput(Evaluate evaluate)
{
    return [evaluate] {
        for (std::size_t i = 0; i < InputCount; ++i) {
            bench::keep(evaluate(i));
        }
    };
}

/// One segment after the other of the path through `points`, with four points each.
template <typename Point, typename Curve>
bench::Work along(std::vector<Point> points, Curve curve)
{
    return forEachInput([points = std::move(points), curve](std::size_t i) {
        return curve(points[i], points[i + 1], points[i + 2], points[i + 3], parameter(i));
    });
}

template <typename Point>
std::vector<Point> pathInSpace()
{
    std::vector<Point> path;
    for (std::size_t i = 0; i < InputCount + 4; ++i) {
        path.push_back({numbers()[3 * i], numbers()[3 * i + 1], numbers()[3 * i + 2]});
    }
    return path;
}

std::vector<Vec2> pathOnPlane()
{
    std::vector<Vec2> path;
    for (std::size_t i = 0; i < InputCount + 4; ++i) {
        path.push_back({numbers()[2 * i], numbers()[2 * i + 1]});
    }
    return path;
}

std::vector<QPainterPath> qtCurves()
{
    const auto point = [](const Vec2& p) { return QPointF(double(p.x), double(p.y)); };
    const auto p = pathOnPlane();
    std::vector<QPainterPath> curves;
    for (std::size_t i = 0; i < InputCount; ++i) {
        curves.emplace_back(point(p[i])).cubicTo(point(p[i + 1]), point(p[i + 2]), point(p[i + 3]));
    }
    return curves;
}

constexpr int Segments = 1000;

QList<VelorCurveKnot> knotsWithPow()
{
    QList<VelorCurveKnot> knots;
    for (int i = 0; i <= Segments; ++i) {
        const float t = float(i) / float(Segments);
        knots.append({peers::bezierWithPow({0, 0}, {7, -2}, {10, -3}, {10, -1}, t),
                      peers::tangentWithPow({0, 0}, {7, -2}, {10, -3}, {10, -1}, t)});
    }
    return knots;
}

void pairs()
{
    bench::pair("`catmullRom3D`, a point", "`glm::catmullRom`, called",
                along(pathInSpace<Vec3>(), VelorMath::catmullRom3D),
                along(pathInSpace<glm::vec3>(), peers::glmCatmullRom));
    bench::pair("`bezierCubic2D`, a point", "the formula with `pow`, same bits",
                along(pathOnPlane(), VelorMath::bezierCubic2D), along(pathOnPlane(), peers::bezierWithPow));
    bench::pair("`bezierCubic2D`, a point", "`QPainterPath::pointAtPercent`, by length",
                along(pathOnPlane(), VelorMath::bezierCubic2D),
                forEachInput([curves = qtCurves()](std::size_t i) {
                    return curves[i].pointAtPercent(double(parameter(i)));
                }));
    bench::pair(
        "`turningCurve`, 1,000 segments", "as many knots by the formula with `pow`",
        [] {
            bench::keep(VelorMath::turningCurve({}, {10, 0}, {0, 1}, 0.5F, 2, 1, Segments));
        },
        [] { bench::keep(knotsWithPow()); });

    // Both on the heap: a state on the stack costs more on some runs than on others.
    VelorRandom random(1);
    const auto engine = std::make_unique<std::mt19937>(1);
    bench::pair("drawing a number", "`std::mt19937`",
                forEachInput([&random](std::size_t) { return random.next(); }),
                forEachInput([&engine](std::size_t) { return double((*engine)()) * 0x1p-32; }));
    bench::pair("making a generator", "`std::mt19937`, `discard(37)`",
                forEachInput([](std::size_t i) { return VelorRandom(int(i)).next(); }),
                forEachInput([](std::size_t i) {
                    std::mt19937 standard{unsigned(i)};
                    standard.discard(DroppedOutputs);
                    return standard();
                }));
}

const bench::Family maths("Maths", pairs);

} // namespace
