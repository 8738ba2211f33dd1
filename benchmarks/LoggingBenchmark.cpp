#include <Velor.Base/VelorLog.h>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <fstream>
#include <string>
#include <unistd.h>

// One line of a log file, flushed to the operating system: a log channel beside the bare system call and
// beside the standard file stream, all with the same bytes. Run from a folder on a real disk.

namespace {

const std::string Message(60, 'm');
const std::string Line = "14:03:27 - " + Message + "\n";

void LogLine(benchmark::State& state)
{
    VelorLog log("log.bench");
    log.setDebugOutputEnabled(false);
    for (auto _ : state) {
        log.logMessage(Message, VelorLog::Info, true);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(LogLine);

void BareWrite(benchmark::State& state)
{
    const int file = open("write.bench", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(file, Line.data(), Line.size()));
    }
    close(file);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BareWrite);

void StreamWithEndl(benchmark::State& state)
{
    std::ofstream file("stream.bench");
    for (auto _ : state) {
        file << "14:03:27 - " << Message << std::endl;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(StreamWithEndl);

void DisabledMessage(benchmark::State& state)
{
    VelorLog log("disabled.bench");
    log.setMaxLogLevel(VelorLog::Warning);
    for (auto _ : state) {
        log.logMessage(Message, VelorLog::Debug2, true);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(DisabledMessage);

} // namespace
