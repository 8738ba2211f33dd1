#include "Pairs.h"

#include <QtCore/QDate>
#include <QtCore/QTemporaryDir>
#include <QtGui/QGuiApplication>

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

namespace {

constexpr std::size_t Pairs = 9;
constexpr int Turns = 15; // of each side for a pair, so that other work on the machine meets both alike
constexpr double ShortestTurn = 0.002; // in seconds
constexpr double LongTurn = 0.03;      // one of them is a pair

struct Measurements
{
    void (*pairs)();
    void (*growths)();
};

std::map<std::string, Measurements>& families()
{
    static std::map<std::string, Measurements> all;
    return all;
}

std::optional<QTemporaryDir> scratchFolder;
const char* currentFamily = "";

double processorSeconds()
{
    double sum = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage used{};
        demand(getrusage(who, &used) == 0);
        for (const timeval& time : {used.ru_utime, used.ru_stime}) {
            sum += double(time.tv_sec) + double(time.tv_usec) * 1e-6;
        }
    }
    return sum;
}

double seconds(const Work& work, int times)
{
    const double start = processorSeconds();
    for (int i = 0; i < times; ++i) {
        work();
    }
    return processorSeconds() - start;
}

/// How often the work must run so that the clock is exact enough.
int enough(const Work& work)
{
    int times = 1;
    while (seconds(work, times) < ShortestTurn) {
        times *= 2;
    }
    return times;
}

/// Counts the time of one side of a pair.
class Side
{
public:
    explicit Side(const Work& work)
        : mWork(work)
        , mTimes(enough(work))
    {}

    void takeTurn() { mSeconds += seconds(mWork, mTimes) / mTimes; }
    double takeSeconds() { return std::exchange(mSeconds, 0); }

private:
    const Work& mWork;
    int mTimes;
    double mSeconds = 0;
};

/// The slope of the straight line through the logarithms.
double exponent(const std::vector<double>& sizes, const std::vector<double>& times)
{
    double x = 0, y = 0, xx = 0, xy = 0;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const double logSize = std::log(sizes[i]);
        const double logTime = std::log(times[i]);
        x += logSize;
        y += logTime;
        xx += logSize * logSize;
        xy += logSize * logTime;
    }
    const double count = double(sizes.size());
    return (count * xy - x * y) / (count * xx - x * x);
}

std::string withUnit(double time)
{
    std::array<char, 32> text;
    const double scaled = time >= 1 ? time : time >= 1e-3 ? time * 1e3 : time * 1e6;
    std::snprintf(text.data(), text.size(), "%.3g %s", scaled, time >= 1 ? "s" : time >= 1e-3 ? "ms" : "µs");
    return text.data();
}

} // namespace

void pair(const char* work, const char* peer, const Work& ours, const Work& theirs)
{
    Side our(ours);
    Side their(theirs);
    our.takeTurn();
    const double once = our.takeSeconds();
    const int turns = once < LongTurn ? Turns : 1;
    std::array<double, Pairs> ratios;
    for (double& ratio : ratios) {
        for (int turn = 0; turn < turns; ++turn) {
            our.takeTurn();
            their.takeTurn();
        }
        ratio = their.takeSeconds() / our.takeSeconds();
    }
    std::sort(ratios.begin(), ratios.end());
    std::printf("| %s | %s | %.2f | %.2f to %.2f | %s | `%s` |\n", work, peer, ratios[Pairs / 2], ratios[1],
                ratios[Pairs - 2], withUnit(once).c_str(), currentFamily);
    std::fflush(stdout);
}

void growth(const char* work, std::initializer_list<int> sizes, const std::function<Work(int)>& prepare)
{
    std::vector<double> doubleSizes;
    std::vector<double> times;
    std::string text;
    for (const int size : sizes) {
        const Work prepared = prepare(size);
        const int repetitions = enough(prepared);
        double least = seconds(prepared, repetitions);
        for (int i = 0; i < 2; ++i) {
            least = std::min(least, seconds(prepared, repetitions));
        }
        doubleSizes.push_back(size);
        times.push_back(least / repetitions);
        text += (text.empty() ? "" : ", ") + std::to_string(size) + ": " + withUnit(times.back());
    }
    std::printf("| %s | %s | %.2f |\n", work, text.c_str(), exponent(doubleSizes, times));
    std::fflush(stdout);
}

void demand(bool isDone, std::source_location where)
{
    if (!isDone) {
        std::fprintf(stderr, "%s:%u: a step of the benchmark failed\n", where.file_name(), where.line());
        std::exit(1);
    }
}

std::string scratch(const std::string& name)
{
    return scratchFolder->filePath(QString::fromStdString(name)).toStdString();
}

Family::Family(const char* name, void (*pairs)(), void (*growths)())
{
    families().emplace(name, Measurements{pairs, growths});
}

} // namespace bench

/// `VelorBenchmarks [--growth] [NAME...]`: measures the families of these names, or all.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen"); // pixmaps need an application object; no window is shown
    const QGuiApplication application(argc, argv);
    bench::scratchFolder.emplace(QStringLiteral("benchmark_XXXXXX"));
    bench::demand(bench::scratchFolder->isValid());

    std::vector<std::string> names(argv + 1, argv + argc);
    const bool isGrowth = std::erase(names, "--growth") != 0;
    for (const std::string& name : names) {
        if (!bench::families().contains(name)) {
            std::fprintf(stderr, "There is no benchmark '%s'.\n", name.c_str());
            return 2;
        }
    }
    std::printf("%s, compiler %s, Qt %s\n\n", qPrintable(QDate::currentDate().toString(Qt::ISODate)),
                BENCHMARK_COMPILER, qVersion());
    std::printf(
        "%s",
        isGrowth
            ? "| Work | Processor time by size | Exponent |\n|---|---|---:|\n"
            : "| Work | Peer | Ratio | Most of nine | Ours takes | `NAME` |\n|---|---|---:|---:|---:|---|\n");
    for (const auto& [name, measured] : bench::families()) {
        const auto measure = isGrowth ? measured.growths : measured.pairs;
        if (measure && (names.empty() || std::count(names.begin(), names.end(), name) != 0)) {
            bench::currentFamily = name.c_str();
            measure();
        }
    }
    bench::scratchFolder.reset();
    return 0;
}
