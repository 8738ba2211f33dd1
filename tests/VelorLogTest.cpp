#include "TestHelpers.h"

#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorLogFiles.h>
#include <Velor.Base/VelorVectors.h>

#include <gmock/gmock.h>

#include <QtCore/QDateTime>
#include <QtCore/QDebug>
#include <QtCore/QPoint>

#include <atomic>
#include <ctime>
#include <functional>
#include <iomanip>
#include <thread>
#include <tuple>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

namespace {

/// The content of a log file, a text file, whose line ends differ between the systems.
std::string textOf(const std::string& path)
{
    std::ifstream file(filePath(path));
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string withoutDigits(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '#');
    return text;
}

class Recorder : public LogListener
{
public:
    void onLogMessage(const std::string& message, VelorLog::Level level, bool skipConsole,
                      const std::string& logName, bool& skipOutput) override
    {
        received.push_back(std::to_string(level) + (skipConsole ? " quiet " : " ") + message);
        lastLog = logName;
        reaction(skipOutput);
    }

    std::vector<std::string> received;
    std::string lastLog;
    std::function<void(bool&)> reaction = [](bool&) {};
};

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

class VelorLogTest : public testing::Test
{
protected:
    std::string path(const std::string& name) const { return folder.narrowPath(name); }

    /// What `action` writes on standard output, on standard error and in the file of a default log of its
    /// own, which puts no time in front.
    std::vector<std::string> outputsOf(const std::function<void(VelorLog&)>& action)
    {
        VelorLog log(path("a.log"));
        log.setTimeStampEnabled(false);
        manager.setDefaultLog(&log);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        action(log);
        manager.setDefaultLog(nullptr);
        const std::string out = testing::internal::GetCapturedStdout();
        return {out, testing::internal::GetCapturedStderr(), textOf(log.getName())};
    }

    TestFolder folder;
    VelorLogManager& manager = VelorLogManager::getSingleton();
};

TEST_F(VelorLogTest, EachLevelHasItsPrefixColourAndConsoleStream)
{
    const auto logAll = [this](VelorLog& log) {
        log.setMaxLogLevel(static_cast<VelorLog::Level>(7));
        for (const int level : {-1, 0, 3, 7}) {
            manager.logMessage(std::to_string(level), static_cast<VelorLog::Level>(level));
        }
        manager.logError("1");
        manager.logWarning("2");
        manager.logDebug0("4");
        manager.logDebug1("5");
        manager.logDebug2("6");
    };
    EXPECT_THAT(
        outputsOf(logAll),
        ElementsAre("-1\033[0m\n0\033[0m\n\033[31;1m[ERROR] - 1\033[0m\n",
                    "3\033[0m\n7\033[0m\n\033[33;1m[WARNING] - 2\033[0m\n\033[32;1m[DBG0] - 4\033[0m\n"
                    "\033[36;1m[DBG1] - 5\033[0m\n\033[34;1m[DBG2] - 6\033[0m\n",
                    "-1\n0\n3\n7\n[ERROR] - 1\n[WARNING] - 2\n[DBG0] - 4\n[DBG1] - 5\n[DBG2] - 6\n"));
}

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

TEST_F(VelorLogTest, TheLastListenerDecidesAndAllAreCalled)
{
    Recorder first;
    Recorder second;
    first.reaction = [](bool& skipOutput) { skipOutput = true; };
    second.reaction = [](bool& skipOutput) { skipOutput = !skipOutput; };
    const auto logToListeners = [&](VelorLog& log) {
        log.addListener(&first);
        log.addListener(&second);
        log.logMessage("shown again by the second");
        log.removeListener(&first);
        log.logMessage("hidden by the second");
        log.removeListener(&first);
        log.removeListener(&second);
        log.logMessage("without a listener");
    };
    EXPECT_THAT(outputsOf(logToListeners),
                ElementsAre("", "shown again by the second\033[0m\nwithout a listener\033[0m\n",
                            "shown again by the second\nwithout a listener\n"));
    EXPECT_EQ(first.received.size(), 1U);
    EXPECT_EQ(second.received.size(), 2U);
}

TEST_F(VelorLogTest, AStreamDeliversOneMessageForEachFlush)
{
    const auto logStreams = [](VelorLog& log) {
        log.setDebugOutputEnabled(false);
        log.stream() << "read " << 3 << ' ' << std::hex << 255 << std::boolalpha << true;
        log.stream(VelorLog::Error).flush();
        log.stream(VelorLog::Error);
        VelorLog::Stream stream = log.stream(VelorLog::Warning);
        stream << "a";
        stream.flush() << static_cast<std::streambuf*>(nullptr) << "lost with the error";
        stream.flush() << "b";
        VelorLog::Stream moved = std::move(stream);
        stream << "lost";
        stream.flush();
        moved << "c";
        VelorLog::Stream other = log.stream();
        moved = std::move(other);
        other << "lost";
        other.flush();
        moved << "d";
        moved.flush();
    };
    EXPECT_THAT(
        outputsOf(logStreams),
        ElementsAre("", "", "read 3 fftrue\n[ERROR] - \n[WARNING] - a\n[WARNING] - \n[WARNING] - bc\nd\n"));
}

TEST_F(VelorLogTest, AStreamWithoutALogWarnsUntilOneIsAssigned)
{
    const auto logLate = [](VelorLog& log) {
        VelorLog::Stream(nullptr, VelorLog::Info, false);
        VelorLog::Stream stream(nullptr, VelorLog::Info, false);
        stream << "lost";
        stream = log.stream(VelorLog::Error, true);
        stream << "text";
    };
    EXPECT_THAT(outputsOf(logLate), ElementsAre("", "Warning: Log is null!\n", "[ERROR] - text\n"));
}

TEST_F(VelorLogTest, AStreamTakesTheTextsOfQtAsUtf8AndOtherValuesInTheirDebugForm)
{
    const auto logTexts = [](VelorLog& log) {
        log.setDebugOutputEnabled(false);
        log.stream() << u"\u0416\u00E9"_s << QStringView(u"\u0417") << QLatin1StringView("\xE9") << u"\u0418"
                     << std::u16string(u"\u0419") << u8"\u041A" << QChar(u'\u041B') << QString();
        log.stream() << std::setw(6) << u"right"_s << QByteArray("\xFFraw\0", 5) << "text"
                     << std::string("s");
        log.stream() << TVec2d<float>{1, 2} << QPoint(1, 2);
        log.stream() << VelorLog::Error << std::hex << 255 << QStringList{u"a b"_s, u"c"_s} << Qt::Horizontal;
    };
    EXPECT_EQ(outputsOf(logTexts)[2], "\u0416\u00E9\u0417\u00E9\u0418\u0419\u041A\u041B\n" +
                                          std::string(" right\xFFraw\0texts\n", 17) +
                                          "TVec2d(1, 2)QPoint(1,2)\n"
                                          "1ffQList(\"a b\", \"c\")1\n");
}

TEST_F(VelorLogTest, AListenerThatChangesTheCallersStringChangesNoOutput)
{
    Recorder listener;
    std::string status = "saved";
    listener.reaction = [&](bool&) { status = "changed"; };
    const auto logStatus = [&](VelorLog& log) {
        log.addListener(&listener);
        log.logMessage(status, VelorLog::Error);
    };
    EXPECT_THAT(outputsOf(logStatus),
                ElementsAre("\033[31;1m[ERROR] - saved\033[0m\n", "", "[ERROR] - saved\n"));
}

TEST_F(VelorLogTest, AListenerThatThrowsGetsAMessageOnceAndKeepsItFromNobody)
{
    Recorder first;
    Recorder second;
    first.reaction = [](bool& skipOutput) {
        skipOutput = false;
        throw 1;
    };
    second.reaction = [](bool&) { throw 2; };
    const auto logAll = [&](VelorLog& log) {
        log.addListener(&first);
        log.addListener(&second);
        VelorLog::Stream stream = log.stream();
        stream << "flushed";
        EXPECT_THROW(stream.flush(), int);
        stream << "assigned over";
        EXPECT_THROW(stream = log.stream(VelorLog::Error), int);
        log.stream() << "destroyed";
        EXPECT_THAT([&] { manager.logError("managed"); }, testing::Throws<int>(1));
        stream << "still of its own level";
    };
    const std::string lines =
        "flushed\nassigned over\ndestroyed\n[ERROR] - managed\nstill of its own level\n";
    EXPECT_EQ(outputsOf(logAll)[2], lines);
    EXPECT_THAT(first.received, ElementsAre("3 flushed", "3 assigned over", "3 destroyed",
                                            "1 [ERROR] - managed", "3 still of its own level"));
    EXPECT_EQ(second.received, first.received);
}

TEST_F(VelorLogTest, AFileThatFailsStopsNothingAndIsTriedAgainOnDemandAlone)
{
    const std::string name = path("missing/b.log");
    const std::string full = std::filesystem::exists("/dev/full") ? "/dev/full" : path("c.log");
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
        VelorLog(full).logMessage("5");
    };
    EXPECT_EQ(outputsOf(logWithoutFile)[1],
              error + "1\033[0m\n2\033[0m\n" + error + "3\033[0m\n4\033[0m\n5\033[0m\n");
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
    std::string stamp = "initial";
    std::time_t second = -1;
    // Two messages of one second, midnight, and the night in which 01:59:59 is followed by 03:00:00.
    for (const std::time_t now :
         {1767221998L, 1767221999L, 1767221999L, 1767222000L, 1743296399L, 1743296400L}) {
        char expected[16];
        std::strftime(expected, sizeof expected, "%H:%M:%S - ", std::localtime(&now));
        updateTimeStamp(stamp, second, now, std::locale::classic());
        EXPECT_EQ(stamp, expected) << now;
    }
    VelorLog log(path("a.log"));
    log.logMessage("text", VelorLog::Error, true);
    EXPECT_EQ(withoutDigits(textOf(log.getName())), "##:##:## - [ERROR] - text\n");
}

TEST_F(VelorLogTest, MessagesOfManyThreadsStayWholeAndOneNameIsOneLog)
{
    std::atomic<VelorLog*> seen = nullptr;
    std::vector<std::jthread> threads;
    for (char letter = 'a'; letter < 'i'; ++letter) {
        threads.emplace_back([&, line = std::string(50, letter)] {
            VelorLog* log = manager.createLog("shared", path("."));
            VelorLog* expected = nullptr;
            EXPECT_TRUE(seen.compare_exchange_strong(expected, log) || expected == log);
            log->setTimeStampEnabled(false);
            for (int k = 0; k < 100; ++k) {
                manager.logMessage(line, VelorLog::Info, true, "shared");
            }
        });
    }
    threads.clear();
    manager.destroyLog("shared");
    const std::string text = textOf(path("shared.log"));
    EXPECT_EQ(text.size(), 8U * 100 * 51);
    for (std::size_t at = 0; at < text.size(); at += 51) {
        EXPECT_EQ(text.substr(at, 51), std::string(50, text[at]) + '\n');
    }
}

TEST_F(VelorLogTest, TheManagerFilesLogsAndKeepsOneDefault)
{
    VelorLog* first = manager.createLog("first", path("."));
    VelorLog* second = manager.createLog("second", path("."));
    EXPECT_EQ(manager.getDefaultLog(), first) << "the first log is the default";
    EXPECT_EQ(manager.getLog("first"), first);
    EXPECT_EQ(manager.createLog("second", "/elsewhere", true), second);
    EXPECT_EQ(manager.getDefaultLog(), second);
    manager.setMaxLogLevel(VelorLog::Error);
    EXPECT_EQ(first->getMinLogLevel(), VelorLog::Debug2);
    EXPECT_EQ(second->getMinLogLevel(), VelorLog::Error);
    manager.destroyLog("second");
    EXPECT_EQ(manager.getDefaultLog(), nullptr) << "the default points to a destroyed log";
    EXPECT_EQ(manager.getLog("second"), nullptr);
    VelorLog own(path("own.log"));
    EXPECT_EQ(manager.setDefaultLog(&own), nullptr);
    manager.destroyLog(&own);
    EXPECT_EQ(manager.setDefaultLog(first), &own);
    manager.destroyLog(first);
    EXPECT_EQ(manager.getDefaultLog(), nullptr);
}

TEST_F(VelorLogTest, MessagesGoToTheLogOfTheirNameAndWarnOnlyWithoutADefaultLog)
{
    const auto logByName = [this](VelorLog&) {
        manager.createLog("named", path("."))->setTimeStampEnabled(false);
        manager.logError("1", true, "named");
        manager.stream(VelorLog::Error, true, "named") << "2";
        manager.logError("lost", false, "unknown");
        manager.stream(VelorLog::Error, false, "unknown") << "lost";
        manager.stream(VelorLog::Error) << "to the default";
        manager.setDefaultLog(nullptr);
        manager.logError("lost");
        VelorLog::_LogErrorMsg("lost", "f", 1);
        manager.destroyLog("named");
    };
    EXPECT_THAT(outputsOf(logByName),
                ElementsAre("\033[31;1m[ERROR] - to the default\033[0m\n",
                            "Warning: Log is null!\nWarning: not logger found\nWarning: Log is null!\n",
                            "[ERROR] - to the default\n"));
    EXPECT_EQ(textOf(path("named.log")), "[ERROR] - 1\n[ERROR] - 2\n");
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

TEST_F(VelorLogTest, SetupMakesADatedDefaultLogAndReportsDeletedOnesThere)
{
    const std::string old = path("App_2020-01-01_00-00-00.log");
    writeFile(old, "");
    writeFile(path("file"), "");
    // On Windows a path without a drive is not absolute.
    const std::filesystem::path readOnly = "/proc/self";
    const std::string refused = readOnly.is_absolute() && std::filesystem::exists(readOnly)
                                    ? "Failed to create writable path:  \"/proc/self\""
                                    : "";
    // On Windows, more than the code page can express.
    const std::string cyrillic = "new/\u041B\u043E\u0433\u0438 \u540D";
    std::string text;
    const auto setUp = [&](VelorLog& log) {
        EXPECT_FALSE(VelorLogManager::setupDefaultLog("App", path("file/logs")));
        EXPECT_TRUE(refused.empty() || !VelorLogManager::setupDefaultLog("App", "/proc/self"));
        EXPECT_EQ(manager.getDefaultLog(), &log);
        for (const std::string& logs : {path(cyrillic), path(".")}) {
            EXPECT_TRUE(VelorLogManager::setupDefaultLog("App", logs));
            VelorLog* made = manager.getDefaultLog();
            EXPECT_EQ(withoutDigits(made->getName()), withoutDigits(logs) + "/App_####-##-##_##-##-##.log");
            EXPECT_EQ(manager.createLog("plain")->getName(), logs + "/plain.log");
            text += textOf(made->getName());
            manager.destroyLog("plain");
            manager.destroyLog(made);
        }
    };
    EXPECT_THAT(outputsOf(setUp)[1], testing::HasSubstr(refused));
    EXPECT_THAT(text, EndsWith(" - Deleted log file: App_2020-01-01_00-00-00.log\n"));
    EXPECT_EQ(fileBytes(old), "(missing)");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(filePath(path(cyrillic))), {}), 2)
        << "the probe of the folder stays";
}

TEST_F(VelorLogTest, OnlyFilesOfTheStatedFormAreOldLogFilesAfterADay)
{
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"exactly a day old", "A+b_2025-06-09_12-00-00.log", true},
        {"leap day", "A+b_2024-02-29_00-00-00.log", true},
        {"86399 seconds old", "A+b_2025-06-09_12-00-01.log", false},
        {"in the future", "A+b_2026-01-01_00-00-00.log", false},
        {"impossible month", "A+b_2025-13-01_00-00-00.log", false},
        {"another prefix that ends alike", "xA+b_2025-01-01_00-00-00.log", false},
        {"prefix is no expression", "AAb_2025-01-01_00-00-00.log", false},
        {"name of the form up to the first dot", "A+b_2025-01-01_00-00-00.backup.log", true},
        {"suffix in capitals", "A+b_2025-01-01_00-00-00.LOG", true},
        {"another suffix", "A+b_2025-01-01_00-00-00.txt", false},
        {"number behind the time", "A+b_2025-01-01_00-00-00_1.log", false},
    };
    for (const auto& [rule, name, isOld] : rows) {
        writeFile(path(name), "");
    }
    const QFileInfoList files = oldLogFiles("A+b", path("."), QDateTime(QDate(2025, 6, 10), QTime(12, 0)));
    for (const auto& [rule, name, isOld] : rows) {
        EXPECT_EQ(files.contains(QFileInfo(folder.path(QString::fromStdString(name)))), isOld) << rule;
    }
}

TEST_F(VelorLogTest, AnOldFileThatCannotBeDeletedIsReportedAsAWarning)
{
    const std::string names[] = {"A_2020-01-01_00-00-00.log", "A_2020-01-02_00-00-00.log"};
    for (const std::string& name : names) {
        writeFile(path(name), "");
    }
    Recorder recorder;
    recorder.reaction = [&](bool&) { // Leaves nothing to delete behind the first.
        for (const std::string& name : names) {
            std::filesystem::remove(filePath(path(name)));
        }
    };
    outputsOf([&](VelorLog& log) {
        log.addListener(&recorder);
        VelorLogManager::deleteOldLogFiles("A", path("."));
    });
    EXPECT_THAT(recorder.received,
                ElementsAre(StartsWith("3 Deleted log file: A_2020"),
                            StartsWith("2 [WARNING] - Failed to delete old log file: A_2020")));
}

} // namespace
