#include "Pairs.h"

#include <Velor.Base/VelorLog.h>

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <fcntl.h>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

// Lines of a log file, each handed to the operating system before the call returns. All writers of a pair
// write the same bytes, but for the time.

namespace {

constexpr int Lines = 200;
const std::string Message(60, 'm');
const std::string TimeStamp = "14:03:27 - ";

class Descriptor
{
public:
    explicit Descriptor(const std::string& name)
        : mNumber(open(bench::scratch(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644))
    {
        bench::demand(mNumber >= 0);
    }
    ~Descriptor() { close(mNumber); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void put(const std::string& text) const
    {
        bench::demand(write(mNumber, text.data(), text.size()) == ssize_t(text.size()));
    }
    int number() const { return mNumber; }

private:
    int mNumber;
};

/// `line` as often as a work consists of.
template <typename Line>
bench::Work lines(Line line)
{
    return [line] {
        for (int i = 0; i < Lines; ++i) {
            line(i);
        }
    };
}

std::shared_ptr<spdlog::logger> spdlogOf(const std::string& name, const std::string& pattern)
{
    auto logger = std::make_shared<spdlog::logger>(
        name, std::make_shared<spdlog::sinks::basic_file_sink_mt>(bench::scratch(name), true));
    logger->set_pattern(pattern);
    logger->flush_on(spdlog::level::trace);
    return logger;
}

/// `work` with the standard error, which is the console of all but errors, going to a file.
bench::Work onConsole(const bench::Work& work, const Descriptor& console)
{
    return [&work, &console] {
        const int terminal = dup(STDERR_FILENO);
        bench::demand(terminal >= 0 && dup2(console.number(), STDERR_FILENO) >= 0);
        work();
        bench::demand(dup2(terminal, STDERR_FILENO) >= 0 && close(terminal) == 0);
    };
}

void pairWithBareOutput(VelorLog& log)
{
    const Descriptor file("bare");
    const auto ours = lines([&log](int) { log.logMessage(Message, VelorLog::Info, true); });
    bench::pair("a line of a log file, flushed", "a bare `write` of the same bytes", ours,
                lines([&file](int) { file.put(TimeStamp + Message + "\n"); }));
    std::ofstream stream(bench::scratch("stream"));
    bench::pair("a line of a log file, flushed", "`std::ofstream` with `std::endl`", ours,
                lines([&stream](int) { stream << TimeStamp << Message << std::endl; }));

    const Descriptor console("console");
    const auto bothOurs = lines([&log](int) { log.logMessage(Message); });
    const auto bothBare = lines([&file](int) {
        bench::demand(write(STDERR_FILENO, Message.data(), Message.size()) > 0);
        file.put(TimeStamp + Message + "\n");
    });
    bench::pair("a console line and a file line", "two bare `write`", onConsole(bothOurs, console),
                onConsole(bothBare, console));
}

void pairWithSpdlog(VelorLog& log)
{
    const auto spdlog = spdlogOf("spdlog", "%H:%M:%S - %v");
    bench::pair("a line of a log file, flushed", "spdlog, same pattern",
                lines([&log](int) { log.logMessage(Message, VelorLog::Info, true); }),
                lines([&spdlog](int) { spdlog->info(Message); }));
    bench::pair("a streamed message, flushed", "spdlog formatting the same", lines([&log](int i) {
                    log.stream(VelorLog::Info, true) << "read " << i << " clips in " << 3.25 << " ms";
                }),
                lines([&spdlog](int i) { spdlog->info("read {} clips in {} ms", i, 3.25); }));
    const auto warning = spdlogOf("warning", "%H:%M:%S - [WARNING] - %v");
    bench::pair("a `[WARNING]` line, flushed", "spdlog, same pattern",
                lines([&log](int) { log.logMessage(Message, VelorLog::Warning, true); }),
                lines([&warning](int) { warning->warn(Message); }));

    VelorLogManager& manager = VelorLogManager::getSingleton();
    bench::demand(!manager.createLog("managed", bench::scratch("."), true)->isFileOutputSuppressed());
    spdlog::set_default_logger(spdlogOf("default", "%H:%M:%S - %v"));
    bench::pair("a line through the manager, flushed", "spdlog's default logger, same pattern",
                lines([&manager](int) { manager.logMessage(Message, VelorLog::Info, true); }),
                lines([](int) { spdlog::info(Message); }));
}

void pairs()
{
    VelorLog log(bench::scratch("log"));
    pairWithBareOutput(log);
    pairWithSpdlog(log);
    VelorLog quiet(bench::scratch("quiet"));
    quiet.setMaxLogLevel(VelorLog::Warning);
    const auto spdlog = spdlogOf("off", "%v");
    spdlog->set_level(spdlog::level::warn);
    bench::pair("a message below the level", "spdlog",
                lines([&quiet](int) { quiet.logMessage(Message, VelorLog::Debug2, true); }),
                lines([&spdlog](int) { spdlog->debug(Message); }));
}

void growths()
{
    VelorLog log(bench::scratch("log"));
    bench::growth("2,000 log lines from each of n threads", {1, 2, 4, 8, 16}, [&log](int count) {
        return [&log, count] {
            std::vector<std::thread> threads;
            for (int i = 0; i < count; ++i) {
                threads.emplace_back([&log] {
                    for (int line = 0; line < 2000; ++line) {
                        log.logMessage(Message, VelorLog::Info, true);
                    }
                });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
        };
    });
}

const bench::Family logging("Logging", pairs, growths);

} // namespace
