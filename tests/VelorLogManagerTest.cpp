#include "support/VelorLogFixture.h"

#include <atomic>
#include <thread>

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

namespace {

using VelorLogManagerTest = VelorLogTest;

TEST_F(VelorLogManagerTest, EachLevelHasItsPrefixColourAndConsoleStream)
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

TEST_F(VelorLogManagerTest, TheManagerFilesLogsAndKeepsOneDefault)
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

TEST_F(VelorLogManagerTest, MessagesGoToTheLogOfTheirNameAndWarnOnlyWithoutADefaultLog)
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

TEST_F(VelorLogManagerTest, MessagesOfManyThreadsStayWholeAndOneNameIsOneLog)
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

TEST_F(VelorLogManagerTest, SetupMakesADatedDefaultLogAndReportsDeletedOnesThere)
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
}

TEST_F(VelorLogManagerTest, AnOldFileThatCannotBeDeletedIsReportedAsAWarning)
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
