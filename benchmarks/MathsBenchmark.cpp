#include "LiteralMaths.h"

#include <Velor.Base/VelorRandom.h>

#include <benchmark/benchmark.h>

#include <QtGui/QPainterPath>

// GLM counts the spline among its experimental functions.
#define GLM_ENABLE_EXPERIMENTAL
#include <glm/gtx/spline.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using Vec2 = TVec2d<float>;
using Vec3 = TVec3d<float>;

constexpr std::size_t InputCount = 1024;
constexpr int DroppedOutputs = 37;

/// Numbers in -1..1 from a table, so that no compiler works anything out beforehand.
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

/// One pass calls `evaluate` with the number of each input.
template <typename Evaluate>
void measure(benchmark::State& state, Evaluate evaluate)
{
    for (auto _ : state) {
        for (std::size_t i = 0; i < InputCount; ++i) {
            benchmark::DoNotOptimize(evaluate(i));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(InputCount));
}

/// The points of a long path; curve `i` takes four of them from the i-th on.
template <typename Point3>
std::vector<Point3> pathInSpace()
{
    std::vector<Point3> path;
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

void drawVelorRandom(benchmark::State& state)
{
    VelorRandom random(1);
    measure(state, [&](std::size_t) { return random.next(); });
}

void drawStandard(benchmark::State& state)
{
    std::mt19937 engine(1);
    measure(state, [&](std::size_t) { return static_cast<double>(engine()) * 0x1p-32; });
}

void makeVelorRandom(benchmark::State& state)
{
    int seed = 0;
    for (auto _ : state) {
        VelorRandom random(++seed);
        benchmark::DoNotOptimize(random);
    }
}

void makeStandard(benchmark::State& state)
{
    std::uint32_t seed = 0;
    for (auto _ : state) {
        std::mt19937 engine(++seed);
        engine.discard(DroppedOutputs);
        benchmark::DoNotOptimize(engine);
    }
}

template <typename Point3, typename Curve>
void measureInSpace(benchmark::State& state, Curve curve)
{
    const auto p = pathInSpace<Point3>();
    measure(state, [&](std::size_t i) { return curve(p[i], p[i + 1], p[i + 2], p[i + 3], parameter(i)); });
}

template <typename Curve>
void measureOnPlane(benchmark::State& state, Curve curve)
{
    const auto p = pathOnPlane();
    measure(state, [&](std::size_t i) { return curve(p[i], p[i + 1], p[i + 2], p[i + 3], parameter(i)); });
}

void catmullRomVelor(benchmark::State& state) { measureInSpace<Vec3>(state, VelorMath::catmullRom3D); }
void catmullRomGlm(benchmark::State& state)
{
    measureInSpace<glm::vec3>(state, [](const auto&... input) { return glm::catmullRom(input...); });
}

/// GLM where it costs what a function of a library costs.
[[gnu::noinline]] glm::vec3 calledCatmullRom(glm::vec3 p0, glm::vec3 p1, glm::vec3 p2, glm::vec3 p3, float t)
{
    return glm::catmullRom(p0, p1, p2, p3, t);
}
void catmullRomCalledGlm(benchmark::State& state) { measureInSpace<glm::vec3>(state, calledCatmullRom); }

void bezierVelor(benchmark::State& state) { measureOnPlane(state, VelorMath::bezierCubic2D); }
void bezierLiteral(benchmark::State& state) { measureOnPlane(state, literal::bezierCubic2D); }

/// Qt goes by the share of the curve's length, and searches for the parameter: more work than its peers do.
void bezierQt(benchmark::State& state)
{
    const auto point = [](const Vec2& p) { return QPointF(double(p.x), double(p.y)); };
    const auto p = pathOnPlane();
    std::vector<QPainterPath> curves;
    for (std::size_t i = 0; i < InputCount; ++i) {
        curves.emplace_back(point(p[i])).cubicTo(point(p[i + 1]), point(p[i + 2]), point(p[i + 3]));
    }
    measure(state, [&](std::size_t i) { return curves[i].pointAtPercent(double(parameter(i))); });
}

constexpr int TurningSegments = 1000;

template <typename Turn>
void measureKnots(benchmark::State& state, Turn turn)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(turn(Vec2(), Vec2(10, 0), Vec2(0, 1), 0.5F, 2.0F, 1.0F, TurningSegments));
    }
    state.SetItemsProcessed(state.iterations() * (TurningSegments + 2));
}

void turningVelor(benchmark::State& state) { measureKnots(state, VelorMath::turningCurve); }
void turningLiteral(benchmark::State& state) { measureKnots(state, literal::turningCurve); }

} // namespace

BENCHMARK(drawVelorRandom)->Name("draw numbers/VelorRandom");
BENCHMARK(drawStandard)->Name("draw numbers/std::mt19937");
BENCHMARK(makeVelorRandom)->Name("make a generator/VelorRandom");
BENCHMARK(makeStandard)->Name("make a generator/std::mt19937, discard(37)");
BENCHMARK(catmullRomVelor)->Name("Catmull-Rom/VelorMath");
BENCHMARK(catmullRomGlm)->Name("Catmull-Rom/glm::catmullRom, inlined");
BENCHMARK(catmullRomCalledGlm)->Name("Catmull-Rom/glm::catmullRom, called");
BENCHMARK(bezierVelor)->Name("cubic Bezier/VelorMath");
BENCHMARK(bezierLiteral)->Name("cubic Bezier/literal with pow");
BENCHMARK(bezierQt)->Name("cubic Bezier/QPainterPath::pointAtPercent");
BENCHMARK(turningVelor)->Name("turning curve in knots/VelorMath");
BENCHMARK(turningLiteral)->Name("turning curve in knots/literal with pow");
