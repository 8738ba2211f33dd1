#include "support/TestHelpers.h"

#include <Velor.Base/PlatformOperations.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

namespace {

const PlatformOperations& table = platformOperations();
constexpr int Accept = 300;
constexpr std::uint16_t Template = 101;

const std::vector<DialogField> Fields = {{201, "name"}, {202, "mail"}, {203, "fixed"}, {204, "never shown"}};

std::string messagesOf(const std::function<void()>& action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

/// What is printed when `make` fails.
std::string reportOf(const std::function<HWND()>& make)
{
    return messagesOf([&] { EXPECT_EQ(make(), nullptr); });
}

HWND newWindow(HWND parent = nullptr) { return table.createWindow("title", "VelorTest", parent, 320, 240); }

std::string itemText(HWND dialog, int id)
{
    char buffer[100] = "";
    table.getDialogItemText(dialog, id, buffer, sizeof(buffer));
    return buffer;
}

/// While `onHook` is set, this thread's windows answer to it.
std::function<LRESULT(int, HWND)> onHook;

LRESULT CALLBACK testHook(int code, WPARAM first, LPARAM second)
{
    const LRESULT result = onHook ? onHook(code, reinterpret_cast<HWND>(first)) : 0;
    return result != 0 ? result : CallNextHookEx(nullptr, code, first, second);
}

void duringHook(std::function<LRESULT(int, HWND)> hook, const std::function<void()>& action)
{
    static const HHOOK installed = SetWindowsHookExA(WH_CBT, testHook, nullptr, GetCurrentThreadId());
    ASSERT_NE(installed, nullptr);
    onHook = std::move(hook);
    action();
    onHook = nullptr;
}

/// Presses OK in any box that comes up.
LRESULT pressOk(int code, HWND window)
{
    if (code == HCBT_ACTIVATE) {
        PostMessageA(window, WM_COMMAND, IDOK, 0);
    }
    return 0;
}

/// What the accepting button's callback got.
std::vector<std::string> accepted;
HWND acceptedDialog = nullptr;

void onAccept(HWND dialog, const char* first, const char* second, const char* third)
{
    acceptedDialog = dialog;
    accepted = {first, second, third};
}

} // namespace

TEST(PlatformWindows, ShareAClassAndEndWithTheirOwner)
{
    const HWND owner = newWindow();
    const HWND window = newWindow(owner);
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(table.isWindowVisible(window));
    EXPECT_EQ(table.getParentWindow(window), nullptr) << "an owner is no parent";
    EXPECT_EQ(table.enableWindow(window, false), 0);
    EXPECT_NE(table.enableWindow(window, true), 0);
    EXPECT_NE(table.destroyWindow(owner), 0);
    EXPECT_EQ(table.destroyWindow(window), 0);
}

TEST(PlatformWindows, HaveBoundsOfWhichEachMayBeLeftOut)
{
    const HWND window = newWindow();
    int bounds[] = {-1, -1, -1, -1};
    table.getWindowBounds(window, &bounds[0], &bounds[1], &bounds[2], &bounds[3]);
    EXPECT_THAT(bounds, ElementsAre(0, 0, 320, 240));
    int desktopHeight = -1;
    int monitorHeight = -1;
    table.getDesktopBounds(nullptr, nullptr, nullptr, &desktopHeight);
    EXPECT_TRUE(table.getMonitorBounds(window, nullptr, nullptr, nullptr, &monitorHeight));
    EXPECT_EQ(monitorHeight, desktopHeight);
}

TEST(PlatformWindows, ReportADarkTitleBarThatTheyCannotHave)
{
    const HWND window = newWindow();
    EXPECT_EQ(messagesOf([&] { table.setDarkTitleBar(window, true); }), "");
    EXPECT_EQ(messagesOf([&] { table.setDarkTitleBar(window, false); }),
              "Windows version is less than 11. Dark mode title bar not applied.\n");
    table.destroyWindow(window);
    EXPECT_EQ(messagesOf([&] { table.setDarkTitleBar(window, true); }),
              "Failed to set dark mode title bar.\n");
}

TEST(PlatformWindows, ClosingOneEndsTheLoop)
{
    const HWND window = newWindow();
    table.closeWindow(window);
    table.runDialogLoop(window);
    EXPECT_NE(table.destroyWindow(window), 0);
}

TEST(PlatformWindows, FocusOnTheWatchedOneRaisesTheTarget)
{
    const HWND target = newWindow();
    const HWND watched = newWindow();
    int raised = 0;
    const auto countRaised = [&](int code, HWND window) -> LRESULT {
        raised += code == HCBT_ACTIVATE && window == target;
        return 0;
    };
    duringHook(countRaised, [&] {
        EXPECT_NE(table.installFocusHook(watched, target), nullptr);
        SetFocus(newWindow());
        EXPECT_EQ(raised, 0);
        SetFocus(watched);
        EXPECT_GT(raised, 0);
    });
    table.installFocusHook(nullptr, nullptr);
}

class PlatformErrorDialog : public testing::Test
{
protected:
    void TearDown() override { EXPECT_NE(table.destroyWindow(window), 0) << "closing destroyed the window"; }

    HWND make(const std::vector<DialogField>& fields, ErrorDialogCallback callback = nullptr,
              int acceptId = 1)
    {
        return table.createErrorWindow("title", className.c_str(), nullptr, 320, 240, acceptId, fields,
                                       callback);
    }

    void open(ErrorDialogCallback callback = onAccept, int acceptId = Accept)
    {
        className += 'n';
        window = make(Fields, callback, acceptId);
        dialog = table.createDialog(window, Template);
        ASSERT_NE(dialog, nullptr);
        acceptedDialog = nullptr;
    }

    static inline std::string className = "VelorTest"; ///< A new one each time.
    HWND window = nullptr;
    HWND dialog = nullptr;
};

TEST_F(PlatformErrorDialog, IsKeptByOnesThatCannotBeMade)
{
    open();
    className += 'n';
    const auto reportOn = [&](std::size_t count) {
        return reportOf([&] { return make(std::vector<DialogField>(count, {201, "other"})); });
    };
    EXPECT_EQ(reportOn(3), "[ERROR] Creating error window: Invalid number of parameters\n");
    EXPECT_EQ(reportOn(5), "[ERROR] Creating error window: Invalid number of parameters\n");
    const auto forbidWindows = [](int code, HWND) -> LRESULT { return code == HCBT_CREATEWND; };
    duringHook(forbidWindows,
               [&] { EXPECT_THAT(reportOn(4), StartsWith("[ERROR] Creating error window '")); });
    EXPECT_EQ(reportOn(4), "") << "the class exists";
    dialog = table.createDialog(window, Template);
    EXPECT_EQ(itemText(dialog, 201), "name");
    SendMessageA(dialog, WM_COMMAND, Accept, 0);
    EXPECT_EQ(acceptedDialog, dialog);
}

TEST_F(PlatformErrorDialog, ShowsFieldsZeroToTwoOfWhichTheLastIsFixed)
{
    open();
    EXPECT_EQ(table.getParentWindow(dialog), window);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    const char* const shown[] = {"name", "mail", "fixed", ""};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(itemText(dialog, 201 + i), shown[i]);
        const HWND control = table.getDialogItem(dialog, 201 + i);
        EXPECT_EQ(table.enableWindow(control, true) != 0, i == 2) << 201 + i;
    }
}

TEST_F(PlatformErrorDialog, AcceptGivesFieldsZeroThreeAndOneAndLeavesTheDialogOpen)
{
    open();
    for (const int id : {201, 202, 203}) {
        EXPECT_NE(table.setDialogItemText(dialog, id, std::to_string(id).c_str()), 0);
    }
    EXPECT_NE(table.setDialogItemText(dialog, 204, std::string(20000, 'x').c_str()), 0);
    SendMessageA(dialog, WM_COMMAND, 0x70000 | Accept, 0);
    EXPECT_THAT(accepted, ElementsAre("201", std::string(16383, 'x'), "202"));
    EXPECT_EQ(acceptedDialog, dialog);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    EXPECT_NE(table.endDialog(dialog), 0);
    EXPECT_FALSE(table.isWindowVisible(dialog));
}

TEST_F(PlatformErrorDialog, AcceptComesBeforeCancelAndNeedsNoCallback)
{
    open(onAccept, IDCANCEL);
    SendMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    EXPECT_EQ(acceptedDialog, dialog);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    table.destroyWindow(window);
    open(nullptr);
    SendMessageA(dialog, WM_COMMAND, Accept, 0);
    SendMessageA(dialog, WM_COMMAND, Accept + 1, 0);
    EXPECT_TRUE(table.isWindowVisible(dialog));
}

TEST_F(PlatformErrorDialog, LoopServesAllWindowsUntilOneOfThemCloses)
{
    open();
    PostMessageA(window, WM_CLOSE, 0, 0);
    table.runDialogLoop(dialog);
    EXPECT_EQ(table.closeWindow(window), 0);
    table.runDialogLoop(dialog);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    table.runDialogLoop(dialog);
    EXPECT_FALSE(table.isWindowVisible(dialog));
    EXPECT_EQ(acceptedDialog, nullptr);
}

TEST_F(PlatformErrorDialog, WhatCannotBeMadeIsReportedWithTheSystemsReason)
{
    open();
    const HWND dead = newWindow();
    table.destroyWindow(dead);
    const auto hasReason = [](const std::string& start) {
        return testing::AllOf(StartsWith("[ERROR] Creating " + start + " '"), EndsWith("'\n"),
                              testing::Not(EndsWith("''\n")));
    };
    EXPECT_THAT(reportOf([&] { return newWindow(dead); }), hasReason("window"));
    EXPECT_THAT(reportOf([&] { return table.createDialog(window, 999); }), hasReason("dialog"));
    EXPECT_THAT(reportOf([&] { return table.getDialogItem(dialog, 999); }), hasReason("dialog"));
}

TEST(PlatformInput, KeysAreAskedBySelectorAndTheCursorIsWhereItWasSet)
{
    BYTE keys[256] = {};
    keys[VK_RETURN] = 0x80;
    SetKeyboardState(keys);
    EXPECT_FALSE(table.isKeyDown(0) || table.isKeyDown(2));
    EXPECT_TRUE(table.isKeyDown(1));
    int x = 0;
    int y = 0;
    SetCursorPos(15, 27);
    table.getCursorPosition(&x, &y);
    EXPECT_EQ(std::pair(x, y), std::pair(15, 27));
}

TEST(PlatformProcess, CrashFileIsTakenUnlessItsPathIsEmpty)
{
    EXPECT_FALSE(table.registerCrashFile(""));
    EXPECT_TRUE(table.registerCrashFile("no such folder/a.log")) << "the system's refusal does not count";
}

TEST(PlatformProcess, MakeDirectoryReturnsTrueForFailure)
{
    const TestFolder folder;
    const std::string made = folder.narrowPath("made");
    EXPECT_FALSE(table.makeDirectory(made.c_str()));
    EXPECT_TRUE(fs::is_directory(made));
    EXPECT_TRUE(table.makeDirectory(made.c_str()));
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
    duringHook(pressOk, [] {
        EXPECT_THAT(messagesOf([] { table.runCommand(nullptr, "no-such-command", false); }),
                    testing::AllOf(StartsWith("Error: "), EndsWith(" executing command: no-such-command\n")));
    });
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(table.shellOpen("no-such-file-here", false)), 2);
}

/// Commands are scripts here, which write down how they were called.
class PlatformCommands : public testing::Test
{
protected:
    void SetUp() override { _putenv(("PATH=" + folder.narrowPath("")).c_str()); }
    void TearDown() override { _putenv(("PATH=" + path).c_str()); }

    void command(const std::string& name, int exitCode, fs::perms permissions = fs::perms::owner_all)
    {
        const std::string file = folder.narrowPath(name);
        writeFile(file, "#!/bin/sh\n/bin/sleep 0.1\necho " + name + " \"$@\" >> '" + calls + "'\nexit " +
                            std::to_string(exitCode) + "\n");
        fs::permissions(file, permissions);
    }

    std::string opened(bool isElevated) const
    {
        fs::remove(calls);
        const auto result = reinterpret_cast<std::intptr_t>(table.shellOpen("a b", isElevated));
        return std::to_string(result) + ": " + fileBytes(calls);
    }

    const TestFolder folder;
    const std::string calls = folder.narrowPath("calls");
    const std::string path = std::getenv("PATH");
};

TEST_F(PlatformCommands, AreWaitedForAndElevatedOnRequest)
{
    command("run", 0);
    command("pkexec", 0);
    table.runCommand(nullptr, "run", false);
    EXPECT_EQ(fileBytes(calls), "run\n");
    table.runCommand(nullptr, "run", true);
    EXPECT_EQ(fileBytes(calls), "run\npkexec run\n");
}

TEST_F(PlatformCommands, OpenAFileOnceMoreOnlyIfDenied)
{
    command("pkexec", 0);
    command("xdg-open", 0);
    EXPECT_EQ(opened(false), "33: xdg-open a b\n");
    EXPECT_EQ(opened(true), "33: pkexec xdg-open a b\n");
    command("xdg-open", 4);
    EXPECT_EQ(opened(false), "31: xdg-open a b\n");
    command("xdg-open", 0, fs::perms::owner_read);
    EXPECT_EQ(opened(false), "33: pkexec xdg-open a b\n");
}
