#pragma once

#include "TestHelpers.h"

#include <Velor.Base/VelorLog.h>

#include <gmock/gmock.h>

#include <functional>

/// The content of a log file, a text file, whose line ends differ between the systems.
inline std::string textOf(const std::string& path)
{
    std::ifstream file(filePath(path));
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string withoutDigits(std::string text)
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
