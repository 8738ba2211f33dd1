#include <Velor.Base/VelorLog.h>

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <gmock/gmock.h>

#include <atomic>
#include <ctime>
#include <functional>
#include <thread>

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

struct VelorLogTestAccess
{
    static std::string timeStamp(VelorLog& log, std::time_t now) { return log.timeStamp(now); }
    static void deleteOldLogFiles(const std::string& name, const QString& folder, const QDateTime& now)
    {
        VelorLogManager::deleteOldLogFiles(name, folder.toStdString(), now);
    }
};

namespace {

struct Output
{
    std::string out;
    std::string err;
};

Output consoleOf(const std::function<void()>& action)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

std::string content(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << path;
    return file.readAll().toStdString();
}

class Recorder : public LogListener
{
public:
    void onLogMessage(const std::string& message, VelorLog::Level level, bool skipConsole,
                      const std::string& logName, bool& skipOutput) override
    {
        heard.push_back(std::to_string(level) + (skipConsole ? " quiet " : " ") + message);
        skipCame = skipOutput;
        lastLog = logName;
        skipOutput = skipLeaves;
        if (reaction) {
            reaction(message);
        }
    }

    std::vector<std::string> heard;
    bool skipCame = false;
    bool skipLeaves = false;
    std::string lastLog;
    std::function<void(const std::string&)> reaction;
};

class VelorLogTest : public testing::Test
{
protected:
    std::string path(const char* name) const
    {
        return folder.filePath(QString::fromUtf8(name)).toStdString();
    }
    void TearDown() override
    {
        manager.setDefaultLog(nullptr);
        for (const std::string& name : filed) {
            manager.destroyLog(name);
        }
    }
    VelorLog* file(const std::string& name, bool makeDefault = false)
    {
        filed.push_back(name);
        return manager.createLog(name, folder.path().toStdString(), makeDefault);
    }

    QTemporaryDir folder;
    VelorLogManager& manager = VelorLogManager::getSingleton();
    std::vector<std::string> filed;
};

TEST_F(VelorLogTest, EachLevelHasItsPrefixColourAndConsoleStream)
{
    struct Row
    {
        int level;
        const char* text;
        const char* colour;
        bool toStandardOutput;
    };
    const Row rows[] = {{-1, "T", "", true},
                        {0, "T", "", true},
                        {1, "[ERROR] - T", "\033[31;1m", true},
                        {2, "[WARNING] - T", "\033[33;1m", false},
                        {3, "T", "", false},
                        {4, "[DBG0] - T", "\033[32;1m", false},
                        {5, "[DBG1] - T", "\033[36;1m", false},
                        {6, "[DBG2] - T", "\033[34;1m", false},
                        {7, "T", "", false}};
    for (const Row& row : rows) {
        VelorLog log(path("levels.log"));
        log.setMaxLogLevel(static_cast<VelorLog::Level>(7));
        const Output console =
            consoleOf([&] { log.logMessage("T", static_cast<VelorLog::Level>(row.level), false); });
        const std::string line = std::string(row.colour) + row.text + "\033[0m\n";
        EXPECT_EQ(console.out, row.toStandardOutput ? line : "") << row.level;
        EXPECT_EQ(console.err, row.toStandardOutput ? "" : line) << row.level;
        EXPECT_THAT(content(log.getName()), testing::MatchesRegex("[0-9]+:[0-9]+:[0-9]+ - .*\n"));
        EXPECT_THAT(content(log.getName()), EndsWith(std::string(" - ") + row.text + "\n"));
    }
}

TEST_F(VelorLogTest, SwitchesDecideWhichOutputsHearAMessage)
{
    VelorLog log(path("a.log"));
    log.setTimeStampEnabled(false);
    Recorder recorder;
    log.addListener(&recorder);
    log.addListener(&recorder);
    const auto say = [&](const char* text, VelorLog::Level level, bool skipConsole) {
        return consoleOf([&] { log.logMessage(text, level, skipConsole); });
    };
    log.setMaxLogLevel(VelorLog::Warning);
    EXPECT_EQ(log.getMinLogLevel(), VelorLog::Warning);
    EXPECT_EQ(say("above the threshold", VelorLog::Info, false).err, "");
    log.setMaxLogLevel(VelorLog::None);
    EXPECT_EQ(say("all silent", VelorLog::Error, false).out, "");
    log.setMaxLogLevel(VelorLog::Debug2);
    EXPECT_EQ(say("no console", VelorLog::Debug2, true).err, "");
    log.setDebugOutputEnabled(false);
    EXPECT_EQ(say("no echo", VelorLog::Info, false).err, "");
    log.setDebugOutputEnabled(true);
    log.setFileOutputSuppressedEnabled(true);
    EXPECT_EQ(say("no file", VelorLog::Info, false).err, "no file\033[0m\n");
    log.setFileOutputSuppressedEnabled(false);
    EXPECT_EQ(say("two\nlines", VelorLog::Error, false).out, "\033[31;1m[ERROR] - two\nlines\033[0m\n");
    EXPECT_EQ(content(log.getName()), "[DBG2] - no console\nno echo\n[ERROR] - two\nlines\n");
    EXPECT_THAT(recorder.heard, ElementsAre("6 quiet [DBG2] - no console", "3 no echo", "3 no file",
                                            "1 [ERROR] - two\nlines"));
    EXPECT_EQ(recorder.lastLog, log.getName());
}

TEST_F(VelorLogTest, TheLastListenerDecidesAndAllAreCalled)
{
    VelorLog log(path("a.log"));
    Recorder first;
    Recorder second;
    first.skipLeaves = true;
    log.addListener(&first);
    log.addListener(&second);
    EXPECT_EQ(consoleOf([&] { log.logMessage("1"); }).err, "1\033[0m\n");
    EXPECT_TRUE(second.skipCame);
    second.skipLeaves = true;
    EXPECT_EQ(consoleOf([&] { log.logMessage("2"); }).err, "");
    log.removeListener(&second);
    log.removeListener(&second);
    log.removeListener(&first);
    EXPECT_EQ(consoleOf([&] { log.logMessage("3"); }).err, "3\033[0m\n");
    EXPECT_EQ(first.heard.size(), 2U);
    EXPECT_EQ(content(log.getName()).find(" - 2\n"), std::string::npos);
}

TEST_F(VelorLogTest, AStreamDeliversOneMessageForEachFlush)
{
    VelorLog log(path("a.log"));
    log.setTimeStampEnabled(false);
    log.setDebugOutputEnabled(false);
    log.stream(VelorLog::Info, false) << "read " << 3 << ' ' << std::hex << 255 << std::boolalpha << true;
    log.stream(VelorLog::Error, false).flush();
    {
        const VelorLog::Stream untouched = log.stream(VelorLog::Error, false);
    }
    VelorLog::Stream stream = log.stream(VelorLog::Warning, true);
    stream << "a";
    stream.flush() << "b";
    VelorLog::Stream moved = std::move(stream);
    stream << "lost";
    stream.flush();
    moved << "c";
    moved = log.stream(VelorLog::Info, false);
    moved << "d";
    moved.flush();
    EXPECT_EQ(content(log.getName()), "read 3 fftrue\n[ERROR] - \n[WARNING] - a\n[WARNING] - bc\nd\n");
    const std::string err = consoleOf([] {
                                VelorLog::Stream(nullptr, VelorLog::Info, false) << "text";
                                VelorLog::Stream(nullptr, VelorLog::Info, false);
                            }).err;
    EXPECT_EQ(err, "Warning: Log is null!\n");
}

TEST_F(VelorLogTest, AFileThatFailsLeavesALogThatRetriesOnDemandAlone)
{
    const std::string name = path("missing/a.log");
    const std::string error = "Error: Impossible log file from: " + name + "\n";
    std::unique_ptr<VelorLog> log;
    EXPECT_EQ(consoleOf([&] { log = std::make_unique<VelorLog>(name); }).err, error);
    EXPECT_TRUE(log->isFileOutputSuppressed());
    EXPECT_EQ(consoleOf([&] { log->logMessage("1"); }).err, "1\033[0m\n");
    log->setFileOutputSuppressedEnabled(false);
    EXPECT_EQ(consoleOf([&] { log->logMessage("2"); }).err, "2\033[0m\n" + error);
    EXPECT_TRUE(log->isFileOutputSuppressed());
    QDir(folder.path()).mkdir(QStringLiteral("missing"));
    log->setFileOutputSuppressedEnabled(false);
    log->setTimeStampEnabled(false);
    consoleOf([&] { log->logMessage("3"); });
    EXPECT_EQ(content(name), "3\n");
    const VelorLog second(name);
    EXPECT_EQ(content(name), "") << "an earlier file is not truncated";
}

TEST_F(VelorLogTest, TheTimeStampFollowsTheLocalClock)
{
    qputenv("TZ", "Europe/Berlin");
    VelorLog log(path("a.log"));
    // Two messages of one second, midnight, and the night in which 01:59:59 is followed by 03:00:00.
    for (const std::time_t now :
         {1767221998L, 1767221999L, 1767221999L, 1767222000L, 1743296399L, 1743296400L}) {
        char expected[16];
        std::strftime(expected, sizeof expected, "%H:%M:%S - ", std::localtime(&now));
        EXPECT_EQ(VelorLogTestAccess::timeStamp(log, now), expected) << now;
    }
}

TEST_F(VelorLogTest, AMessageIsOneSystemCallForEachOutput)
{
    const auto writes = [] {
        QFile counters(QStringLiteral("/proc/self/io"));
        return counters.open(QIODevice::ReadOnly) ? QRegularExpression(QStringLiteral("syscw: (\\d+)"))
                                                        .match(QString::fromUtf8(counters.readAll()))
                                                        .captured(1)
                                                        .toLongLong()
                                                  : -1;
    };
    if (writes() < 0) {
        GTEST_SKIP() << "this system does not count the write calls of a process";
    }
    VelorLog log(path("a.log"));
    long long made = 0;
    consoleOf([&] {
        const long long before = writes();
        log.logMessage("to standard error", VelorLog::Info);
        log.logMessage("to standard output", VelorLog::Error);
        made = writes() - before;
    });
    EXPECT_EQ(made, 4);
}

TEST_F(VelorLogTest, AFullDiskStopsNothing)
{
    if (!QFile::exists(QStringLiteral("/dev/full"))) {
        GTEST_SKIP() << "this system has no device that is always full";
    }
    VelorLog log("/dev/full");
    Recorder recorder;
    log.addListener(&recorder);
    EXPECT_EQ(consoleOf([&] { log.logMessage("1"); }).err, "1\033[0m\n");
    EXPECT_EQ(consoleOf([&] { log.logMessage("2"); }).err, "2\033[0m\n");
    EXPECT_EQ(recorder.heard.size(), 2U);
}

TEST_F(VelorLogTest, MessagesOfManyThreadsStayWholeAndOneNameIsOneLog)
{
    filed.push_back("shared");
    std::atomic<VelorLog*> seen = nullptr;
    std::atomic<int> different = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            VelorLog* log = manager.createLog("shared", folder.path().toStdString(), false);
            VelorLog* expected = nullptr;
            different += !seen.compare_exchange_strong(expected, log) && expected != log ? 1 : 0;
            log->setTimeStampEnabled(false);
            for (int k = 0; k < 100; ++k) {
                manager.logMessage(std::string(50, static_cast<char>('a' + i)), VelorLog::Info, true,
                                   "shared");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(different, 0);
    const QStringList lines =
        QString::fromStdString(content(path("shared.log"))).split(u'\n', Qt::SkipEmptyParts);
    EXPECT_EQ(lines.size(), 800);
    for (const QString& line : lines) {
        EXPECT_EQ(line, QString(50, line[0]));
    }
}

TEST_F(VelorLogTest, TheManagerFilesLogsAndKeepsOneDefault)
{
    VelorLog* first = file("first");
    EXPECT_EQ(manager.getDefaultLog(), first) << "the first log is the default";
    VelorLog* second = file("second");
    EXPECT_EQ(manager.getDefaultLog(), first);
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

TEST_F(VelorLogTest, MessagesWithoutATargetWarnOnlyForTheDefaultLog)
{
    EXPECT_EQ(consoleOf([&] { manager.logError("lost"); }).err, "Warning: not logger found\n");
    EXPECT_EQ(consoleOf([&] { manager.logError("lost", false, "unknown"); }).err, "");
    EXPECT_EQ(consoleOf([&] { VelorLog::_LogErrorMsg("lost", "f", 1); }).err, "Warning: Log is null!\n");
    EXPECT_EQ(consoleOf([&] { manager.stream(VelorLog::Error, false, "unknown") << "lost"; }).err,
              "Warning: Log is null!\n");
    file("named")->setTimeStampEnabled(false);
    manager.setDefaultLog(nullptr);
    const auto sayAll = [&](const std::string& log) {
        manager.logError("1", true, log);
        manager.logWarning("2", true, log);
        manager.logMessage("3", VelorLog::Info, true, log);
        manager.logDebug0("4", true, log);
        manager.logDebug1("5", true, log);
        manager.logDebug2("6", true, log);
        manager.stream(VelorLog::Error, true, log) << "7";
    };
    sayAll("named");
    EXPECT_EQ(content(path("named.log")),
              "[ERROR] - 1\n[WARNING] - 2\n3\n[DBG0] - 4\n[DBG1] - 5\n[DBG2] - 6\n[ERROR] - 7\n");
}

TEST_F(VelorLogTest, ClientMessagesNameTheirFunctionAndLine)
{
    VelorLog* log = file("client");
    log->setTimeStampEnabled(false);
    const std::string long5000(5000, 'x');
    const std::string err = consoleOf([&] {
                                VelorLog::_LogMsg("KIND", "t", "f", -3);
                                VelorLog::_LogDebugMsg("t", "f", 0);
                                VelorLog::_LogErrorMsg("T", "F", 120);
                                VelorLog::_LogfDebugMsg("f", 7, "%s", long5000.c_str());
                            }).err;
    EXPECT_THAT(err, StartsWith("KIND: t (Function: f at line -3)\033[0m\n"));
    EXPECT_EQ(content(log->getName()), "KIND: t (Function: f at line -3)\nDEBUG: t (Function: f at line 0)\n"
                                       "ERROR: T (Function: F at line 120)\nDEBUG: " +
                                           std::string(4095, 'x') + " (Function: f at line 7)\n");
}

TEST_F(VelorLogTest, SetupMakesADatedDefaultLogInANewFolder)
{
    const QString logs = folder.filePath(QStringLiteral("a/b"));
    ASSERT_TRUE(VelorLogManager::setupDefaultLog("App", logs.toStdString()));
    const QStringList files = QDir(logs).entryList(QDir::Files);
    ASSERT_EQ(files.size(), 1);
    static const QRegularExpression form(
        QStringLiteral("^App_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d\\.log$"));
    EXPECT_TRUE(form.match(files[0]).hasMatch()) << files[0].toStdString();
    EXPECT_EQ(manager.getDefaultLog()->getName(), (logs + u'/' + files[0]).toStdString());
    filed.push_back(files[0].chopped(4).toStdString());
    filed.push_back("plain");
    EXPECT_EQ(manager.createLog("plain", {}, false)->getName(),
              (logs + QStringLiteral("/plain.log")).toStdString());

    QFile blocker(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    VelorLog* before = manager.getDefaultLog();
    EXPECT_FALSE(VelorLogManager::setupDefaultLog("App", path("file/logs")));
    EXPECT_EQ(manager.getDefaultLog(), before);
}

TEST_F(VelorLogTest, SetupRefusesAFolderThatCannotBeWritten)
{
    if (!QFile::exists(QStringLiteral("/proc/self"))) {
        GTEST_SKIP() << "this system has no folder that nobody can write to";
    }
    EXPECT_THAT(consoleOf([] { EXPECT_FALSE(VelorLogManager::setupDefaultLog("App", "/proc/self")); }).err,
                testing::HasSubstr("Failed to create writable path:  \"/proc/self\""));
    EXPECT_EQ(manager.getDefaultLog(), nullptr);
}

TEST_F(VelorLogTest, OnlyOldFilesOfTheStatedFormAreDeleted)
{
    struct Row
    {
        const char* file;
        const char* fault;
        bool goes;
    };
    const Row rows[] = {{"A+b_2025-06-09_12-00-00.log", "exactly a day old", true},
                        {"A+b_2024-02-29_00-00-00.log", "leap day", true},
                        {"A+b_2025-06-09_12-00-01.log", "86399 seconds old", false},
                        {"A+b_2026-01-01_00-00-00.log", "in the future", false},
                        {"A+b_2025-13-01_00-00-00.log", "impossible month", false},
                        {"xA+b_2025-01-01_00-00-00.log", "another prefix that ends alike", false},
                        {"AAb_2025-01-01_00-00-00.log", "prefix taken for an expression", false},
                        {"A+b_2025-01-01_00-00-00.backup.log", "further suffix", false},
                        {"A+b_2025-01-01_00-00-00.LOG", "suffix in another case", false},
                        {"A+b_2025-01-01_00-00-00.txt", "another suffix", false},
                        {"A+b_2025-01-01_00-00-00_1.log", "number behind the time", false}};
    for (const Row& row : rows) {
        QFile made(folder.filePath(QString::fromUtf8(row.file)));
        ASSERT_TRUE(made.open(QIODevice::WriteOnly));
    }
    Recorder recorder;
    file("report")->addListener(&recorder);
    const QDateTime now(QDate(2025, 6, 10), QTime(12, 0));
    consoleOf([&] { VelorLogTestAccess::deleteOldLogFiles("A+b", folder.path(), now); });
    for (const Row& row : rows) {
        EXPECT_EQ(QFile::exists(folder.filePath(QString::fromUtf8(row.file))), !row.goes) << row.fault;
    }
    EXPECT_THAT(recorder.heard,
                testing::UnorderedElementsAre("3 Deleted log file: A+b_2025-06-09_12-00-00.log",
                                              "3 Deleted log file: A+b_2024-02-29_00-00-00.log"));
}

TEST_F(VelorLogTest, AnOldFileThatCannotBeDeletedIsReported)
{
    const char* const names[] = {"P_2020-01-01_00-00-00.log", "P_2020-01-02_00-00-00.log"};
    for (const char* name : names) {
        QFile made(folder.filePath(QString::fromUtf8(name)));
        ASSERT_TRUE(made.open(QIODevice::WriteOnly));
    }
    Recorder recorder;
    recorder.reaction = [&](const std::string&) {
        for (const char* name : names) {
            QFile::remove(folder.filePath(QString::fromUtf8(name)));
        }
    };
    file("report")->addListener(&recorder);
    consoleOf([&] { VelorLogManager::deleteOldLogFiles("P", folder.path().toStdString()); });
    ASSERT_EQ(recorder.heard.size(), 2U);
    EXPECT_THAT(recorder.heard[0], StartsWith("3 Deleted log file: P_2020-01-0"));
    EXPECT_THAT(recorder.heard[1], StartsWith("2 [WARNING] - Failed to delete old log file: P_2020-01-0"));
}

} // namespace
