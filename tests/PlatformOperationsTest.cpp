#include "support/TestHelpers.h"

#include <Velor.Base/PlatformOperations.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::StartsWith;

namespace {

const PlatformOperations& table = platformOperations();
constexpr int Accept = 300;
constexpr std::uint16_t Template = 101;

std::string messagesOf(const std::function<void()>& action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

std::string itemText(HWND dialog, int id)
{
    char buffer[100] = "";
    table.getDialogItemText(dialog, id, buffer, sizeof(buffer));
    return buffer;
}

/// What the accepting button's callback got.
std::vector<std::string> accepted;
HWND acceptedDialog = nullptr;

void onAccept(HWND dialog, const char* first, const char* second, const char* third)
{
    acceptedDialog = dialog;
    accepted = {first, second, third};
}

/// Presses OK in any box that comes up.
LRESULT CALLBACK pressOk(int code, WPARAM window, LPARAM second)
{
    if (code == HCBT_ACTIVATE) {
        PostMessageA(reinterpret_cast<HWND>(window), WM_COMMAND, IDOK, 0);
    }
    return CallNextHookEx(nullptr, code, window, second);
}

} // namespace

class PlatformErrorDialog : public testing::Test
{
protected:
    void TearDown() override { EXPECT_NE(table.destroyWindow(window), 0) << "closing destroyed the window"; }

    void open(int acceptId)
    {
        className += 'n';
        window = table.createErrorWindow("title", className.c_str(), nullptr, 320, 240, acceptId,
                                         {{201, "name"}, {202, "mail"}, {203, "fixed"}, {204, "never shown"}},
                                         onAccept);
        dialog = table.createDialog(window, Template);
        ASSERT_NE(dialog, nullptr);
        acceptedDialog = nullptr;
    }

    static inline std::string className = "VelorTest"; ///< A new one each time.
    HWND window = nullptr;
    HWND dialog = nullptr;
};

TEST_F(PlatformErrorDialog, ShowsThreeFieldsOfWhichTheLastIsFixedAndAcceptGivesZeroThreeAndOne)
{
    open(IDCANCEL);
    int width = 0;
    table.getWindowBounds(window, nullptr, nullptr, &width, nullptr);
    EXPECT_EQ(width, 320);
    EXPECT_EQ(table.getParentWindow(dialog), window);
    const char* const shown[] = {"name", "mail", "fixed", ""};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(itemText(dialog, 201 + i), shown[i]);
        const HWND control = table.getDialogItem(dialog, 201 + i);
        EXPECT_EQ(table.enableWindow(control, true) != 0, i == 2) << 201 + i;
    }
    EXPECT_NE(table.setDialogItemText(dialog, 204, std::string(20000, 'x').c_str()), 0);
    SendMessageA(dialog, WM_COMMAND, 0x70000 | IDCANCEL, 0);
    EXPECT_THAT(accepted, testing::ElementsAre("name", std::string(16383, 'x'), "mail"));
    EXPECT_EQ(acceptedDialog, dialog);
    EXPECT_TRUE(table.isWindowVisible(dialog))
        << "accept does not close it, not even where it has the number of cancel";
}

TEST_F(PlatformErrorDialog, LoopServesAllWindowsUntilOneOfThemCloses)
{
    open(Accept);
    PostMessageA(window, WM_CLOSE, 0, 0);
    table.runDialogLoop(dialog);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    table.runDialogLoop(dialog);
    EXPECT_FALSE(table.isWindowVisible(dialog));
    EXPECT_EQ(acceptedDialog, nullptr);
}

TEST_F(PlatformErrorDialog, WhatCannotBeMadeIsReportedAndLeavesTheFields)
{
    open(Accept);
    const auto reportOn = [&](std::size_t count) {
        const std::vector<DialogField> fields(count, {201, "other"});
        return messagesOf([&] {
            EXPECT_EQ(table.createErrorWindow("", className.c_str(), nullptr, 1, 1, 1, fields, nullptr),
                      nullptr);
        });
    };
    EXPECT_EQ(reportOn(3), "[ERROR] Creating error window: Invalid number of parameters\n");
    EXPECT_EQ(reportOn(5), "[ERROR] Creating error window: Invalid number of parameters\n");
    EXPECT_EQ(reportOn(4), "") << "the class exists";
    EXPECT_THAT(messagesOf([&] { table.createDialog(window, 999); }),
                testing::AllOf(StartsWith("[ERROR] Creating dialog '"), EndsWith("'\n"),
                               testing::Not(EndsWith("''\n"))));
    EXPECT_THAT(messagesOf([&] { table.getDialogItem(dialog, 999); }),
                StartsWith("[ERROR] Creating dialog '"));
    EXPECT_THAT(messagesOf([] { table.createWindow("title", "", nullptr, 320, 240); }),
                StartsWith("[ERROR] Creating window '"));
    dialog = table.createDialog(window, Template);
    EXPECT_EQ(itemText(dialog, 201), "name");
    SendMessageA(dialog, WM_COMMAND, Accept, 0);
    EXPECT_EQ(acceptedDialog, dialog);
}

TEST(PlatformWindows, ReportADarkTitleBarThatTheyCannotHave)
{
    EXPECT_EQ(messagesOf([] { table.setDarkTitleBar(nullptr, true); }),
              "Failed to set dark mode title bar.\n");
    EXPECT_EQ(messagesOf([] { table.setDarkTitleBar(nullptr, false); }),
              "Windows version is less than 11. Dark mode title bar not applied.\n");
}

TEST(PlatformProcess, TempDirectoryIsTheVariableOrAFixedPlace)
{
    _putenv("TEMP=some where");
    EXPECT_EQ(table.getTempDirectory(), "some where");
    _putenv("TEMP=");
    EXPECT_EQ(table.getTempDirectory(), "C:\\Temp");
}

TEST(PlatformProcess, ExecutableIsThisProgramAndRuns)
{
    const fs::path executable = table.getExecutablePath();
    EXPECT_EQ(executable.stem(), "PlatformOperationsTest");
    EXPECT_TRUE(fs::exists(executable));
    const std::string name = executable.filename().string();
    EXPECT_TRUE(table.isProcessRunning(name.c_str()));
    EXPECT_FALSE(table.isProcessRunning(name.substr(0, 15).c_str())) << "the system's cut form of the name";
}

TEST(PlatformProcess, WhatCannotBeStartedIsReported)
{
    // The system may show a box of its own.
    SetWindowsHookExA(WH_CBT, pressOk, nullptr, GetCurrentThreadId());
    EXPECT_THAT(messagesOf([] { table.runCommand(nullptr, "no-such-command", false); }),
                testing::AllOf(StartsWith("Error: "), EndsWith(" executing command: no-such-command\n")));
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(table.shellOpen("no-such-file-here", false)), 2);
}

/// Commands are scripts here, which write down how they were called.
TEST(PlatformCommands, AreWaitedForAndElevatedOnRequestOrWhereTheRightsDoNotSuffice)
{
    const TestFolder folder;
    const std::string calls = folder.narrowPath("calls");
    const auto command = [&](const std::string& name, int exitCode) {
        writeFile(folder.narrowPath(name), "#!/bin/sh\n/bin/sleep 0.1\necho " + name + " \"$@\" >> '" +
                                               calls + "'\nexit " + std::to_string(exitCode) + "\n");
        fs::permissions(folder.narrowPath(name), fs::perms::owner_all);
    };
    const auto opened = [](bool isElevated) {
        return reinterpret_cast<std::intptr_t>(table.shellOpen("a b", isElevated));
    };
    const std::string path = std::getenv("PATH");
    _putenv(("PATH=" + folder.narrowPath("")).c_str());
    command("run", 0);
    command("pkexec", 0);
    table.runCommand(nullptr, "run", false);
    EXPECT_EQ(fileBytes(calls), "run\n");
    table.runCommand(nullptr, "run", true);
    command("xdg-open", 0);
    EXPECT_EQ(opened(false), 33);
    EXPECT_EQ(opened(true), 33);
    command("xdg-open", 4);
    EXPECT_EQ(opened(false), 31);
    fs::permissions(folder.narrowPath("xdg-open"), fs::perms::owner_read);
    EXPECT_EQ(opened(false), 33);
    _putenv(("PATH=" + path).c_str());
    EXPECT_EQ(fileBytes(calls), "run\npkexec run\nxdg-open a b\npkexec xdg-open a b\nxdg-open a b\n"
                                "pkexec xdg-open a b\n");
}
