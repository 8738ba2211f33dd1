#include "support/VelorLogFixture.h"

#include <Velor.Base/VelorLogFiles.h>

#include <QtCore/QString>

#include <ctime>

using testing::ElementsAre;
using testing::StartsWith;

namespace {

/// How many of the operations that may keep off the console compile with a `Flag` there.
template <typename Flag>
constexpr int callsWithFlag = [] {
    constexpr VelorLog::Level Level = VelorLog::Info;
    using Stream = VelorLog::Stream;
    return int(requires(VelorLog& log, Flag flag) { log.logMessage("", Level, flag); }) +
           int(requires(VelorLog& log, Flag flag) { log.stream(Level, flag); }) +
           int(requires(VelorLog& log, Flag flag) { Stream(&log, Level, flag); }) +
           int(requires(VelorLogManager& manager, Flag flag) { manager.logMessage("", Level, flag); }) +
           int(requires(VelorLogManager& manager, Flag flag) { manager.logError("", flag); }) +
           int(requires(VelorLogManager& manager, Flag flag) { manager.logWarning("", flag, "name"); }) +
           int(requires(VelorLogManager& manager, Flag flag) { manager.logDebug0("", flag, "name"); }) +
           int(requires(VelorLogManager& manager, Flag flag) { manager.logDebug1("", flag); }) +
           int(requires(VelorLogManager& manager, Flag flag) { manager.logDebug2("", flag); }) +
           int(requires(VelorLogManager& manager, Flag flag) { manager.stream(Level, flag, "name"); });
}();
static_assert(callsWithFlag<bool> == 10 && callsWithFlag<int> == 10 && callsWithFlag<std::true_type> == 10);
static_assert(callsWithFlag<const char (&)[7]> + callsWithFlag<char*> + callsWithFlag<QString> == 0);
static_assert(callsWithFlag<std::nullptr_t> + callsWithFlag<VelorLog*> + callsWithFlag<VelorLog::Level> == 0);

TEST_F(VelorLogTest, SwitchesDecideWhichOutputsGetAMessage)
{
    Recorder recorder;
    const auto logSwitched = [&](VelorLog& log) {
        log.addListener(&recorder);
        log.addListener(&recorder);
        log.setMaxLogLevel(VelorLog::Warning);
        EXPECT_EQ(log.getMinLogLevel(), VelorLog::Warning);
        log.logMessage("above the threshold", VelorLog::Info);
        log.setMaxLogLevel(VelorLog::None);
        log.logMessage("all silent", VelorLog::Error);
        log.setMaxLogLevel(VelorLog::Debug2);
        log.logMessage("no console", VelorLog::Debug2, true);
        log.setDebugOutputEnabled(false);
        log.logMessage("no echo");
        log.setDebugOutputEnabled(true);
        log.setFileOutputSuppressedEnabled(true);
        log.logMessage("no file");
        log.setFileOutputSuppressedEnabled(false);
        log.logMessage("two\nlines", VelorLog::Error);
    };
    EXPECT_THAT(outputsOf(logSwitched),
                ElementsAre("\033[31;1m[ERROR] - two\nlines\033[0m\n", "no file\033[0m\n",
                            "[DBG2] - no console\nno echo\n[ERROR] - two\nlines\n"));
    EXPECT_THAT(recorder.received, ElementsAre("6 quiet [DBG2] - no console", "3 no echo", "3 no file",
                                               "1 [ERROR] - two\nlines"));
    EXPECT_EQ(recorder.lastLog, path("a.log"));
}

TEST_F(VelorLogTest, TheLastListenerDecidesAndNoneChangesTheText)
{
    std::string status = "saved";
    Recorder first;
    Recorder second;
    first.reaction = [&](bool& skipOutput) {
        skipOutput = true;
        status = "changed";
    };
    second.reaction = [](bool& skipOutput) { skipOutput = !skipOutput; };
    const auto logToListeners = [&](VelorLog& log) {
        log.addListener(&first);
        log.addListener(&second);
        log.logMessage(status);
        log.removeListener(&first);
        log.logMessage("hidden by the second");
    };
    EXPECT_THAT(outputsOf(logToListeners), ElementsAre("", "saved\033[0m\n", "saved\n"));
    EXPECT_THAT(first.received, ElementsAre("3 saved"));
    EXPECT_THAT(second.received, ElementsAre("3 saved", "3 hidden by the second"));
}

TEST_F(VelorLogTest, AListenerThatThrowsGetsAMessageOnceAndKeepsItFromNobody)
{
    Recorder first;
    Recorder second;
    first.reaction = [](bool&) { throw 1; };
    second.reaction = [](bool&) { throw 2; };
    const auto logAll = [&](VelorLog& log) {
        log.addListener(&first);
        log.addListener(&second);
        log.stream() << "destroyed";
        VelorLog::Stream stream = log.stream();
        stream << "flushed";
        EXPECT_THROW(stream.flush(), int);
        EXPECT_THAT([&] { manager.logError("managed"); }, testing::Throws<int>(1));
    };
    EXPECT_EQ(outputsOf(logAll)[2], "destroyed\nflushed\n[ERROR] - managed\n");
    EXPECT_THAT(first.received, ElementsAre("3 destroyed", "3 flushed", "1 [ERROR] - managed"));
    EXPECT_EQ(second.received, first.received);
}

TEST_F(VelorLogTest, AFileThatFailsStopsNothingAndIsTriedAgainOnDemandAlone)
{
    const std::string name = path("missing/b.log");
    const std::string error = "Error: Impossible log file from: " + name + "\n";
    const auto logWithoutFile = [&](VelorLog&) {
        VelorLog log(name);
        log.setTimeStampEnabled(false);
        log.logMessage("1");
        log.setFileOutputSuppressedEnabled(false);
        log.logMessage("2");
        EXPECT_TRUE(log.isFileOutputSuppressed());
        std::filesystem::create_directory(filePath(path("missing")));
        log.logMessage("3");
        log.setFileOutputSuppressedEnabled(false);
        log.logMessage("4");
    };
    EXPECT_EQ(outputsOf(logWithoutFile)[1], error + "1\033[0m\n2\033[0m\n" + error + "3\033[0m\n4\033[0m\n");
    EXPECT_EQ(textOf(name), "4\n");
    const VelorLog second(name);
    EXPECT_EQ(textOf(name), "") << "an earlier file is not truncated";
    const std::string noUtf8 = path(".") + "/\xFF.log";
    EXPECT_FALSE(VelorLog(noUtf8).isFileOutputSuppressed());
    EXPECT_TRUE(std::ifstream(noUtf8).is_open());
}

TEST_F(VelorLogTest, TheTimeStampFollowsTheLocalClock)
{
    qputenv("TZ", "Europe/Berlin");
    // Midnight, and the night in which 01:59:59 is followed by 03:00:00.
    for (const std::time_t now : {1767221999L, 1767222000L, 1743296399L, 1743296400L}) {
        char expected[16];
        std::strftime(expected, sizeof expected, "%H:%M:%S - ", std::localtime(&now));
        EXPECT_EQ(timeStampOf(now, std::locale::classic()), expected) << now;
    }
    VelorLog log(path("a.log"));
    log.logMessage("text", VelorLog::Error, true);
    EXPECT_EQ(withoutDigits(textOf(log.getName())), "##:##:## - [ERROR] - text\n");
}

TEST_F(VelorLogTest, ClientMessagesNameTheirFunctionAndLine)
{
    const std::string long5000(5000, 'x');
    const auto logAsClient = [&](VelorLog&) {
        VelorLog::_LogMsg("KIND", "t", "f", -3);
        VelorLog::_LogDebugMsg("t", "f", 0);
        VelorLog::_LogErrorMsg("T", "F", 120);
        VelorLog::_LogfDebugMsg("f", 7, "%s", long5000.c_str());
    };
    EXPECT_THAT(outputsOf(logAsClient),
                ElementsAre("", StartsWith("KIND: t (Function: f at line -3)\033[0m\n"),
                            "KIND: t (Function: f at line -3)\nDEBUG: t (Function: f at line 0)\n"
                            "ERROR: T (Function: F at line 120)\nDEBUG: " +
                                std::string(4095, 'x') + " (Function: f at line 7)\n"));
}

} // namespace
