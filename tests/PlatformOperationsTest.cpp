#include "TestHelpers.h"

#include <Velor.Base/PlatformOperations.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <thread>

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

/// What making something says, which must fail.
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

std::vector<int> boundsOf(void (*bounds)(HWND, int*, int*, int*, int*), HWND window)
{
    std::vector<int> values(4, -1);
    bounds(window, &values[0], &values[1], &values[2], &values[3]);
    return values;
}

/// While `onHook` is set, this thread's windows answer to it.
std::function<LRESULT(int, WPARAM)> onHook;

LRESULT CALLBACK testHook(int code, WPARAM first, LPARAM second)
{
    const LRESULT result = onHook ? onHook(code, first) : 0;
    return result != 0 ? result : CallNextHookEx(nullptr, code, first, second);
}

void duringHook(std::function<LRESULT(int, WPARAM)> hook, const std::function<void()>& action)
{
    static const HHOOK installed = SetWindowsHookExA(WH_CBT, testHook, nullptr, GetCurrentThreadId());
    ASSERT_NE(installed, nullptr);
    onHook = std::move(hook);
    action();
    onHook = nullptr;
}

/// Presses OK in any box that comes up.
LRESULT pressOk(int code, WPARAM window)
{
    if (code == HCBT_ACTIVATE) {
        PostMessageA(reinterpret_cast<HWND>(window), WM_COMMAND, IDOK, 0);
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

// Started by one of the tests, this program is only a command that takes its time.
int main(int argc, char** argv)
{
    if (const char* file = std::getenv("VELOR_COMMAND_WRITES")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        std::ofstream(file) << "done";
        return 0;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

TEST(PlatformWindows, ShareAClassAndEndWithTheirOwner)
{
    const HWND owner = newWindow();
    const HWND window = newWindow(owner);
    ASSERT_NE(window, nullptr) << "an existing class taken for a failure";
    EXPECT_FALSE(table.isWindowVisible(window));
    EXPECT_EQ(table.getParentWindow(window), nullptr) << "an owner taken for a parent";
    EXPECT_EQ(table.enableWindow(window, false), 0);
    EXPECT_NE(table.enableWindow(window, true), 0) << "not disabled";
    EXPECT_NE(table.destroyWindow(owner), 0);
    EXPECT_EQ(table.destroyWindow(window), 0) << "owner not handed on";
    EXPECT_EQ(table.closeWindow(window), 0);
    EXPECT_THAT(boundsOf(table.getWindowBounds, window), ElementsAre(0, 0, 0, 0));
}

TEST(PlatformWindows, BoundsSkipNullArguments)
{
    const HWND window = newWindow();
    EXPECT_THAT(boundsOf(table.getWindowBounds, window), ElementsAre(0, 0, 320, 240));
    int height = -1;
    table.getWindowBounds(window, nullptr, nullptr, nullptr, nullptr);
    table.getClientBounds(window, nullptr, nullptr, nullptr, nullptr);
    table.getDesktopBounds(nullptr, nullptr, nullptr, &height);
    EXPECT_EQ(boundsOf(table.getWindowBounds, GetDesktopWindow())[3], height);
    EXPECT_GE(height, 480);
    EXPECT_TRUE(table.getMonitorBounds(window, nullptr, nullptr, nullptr, &height));
    EXPECT_GE(height, 480);
}

TEST(PlatformWindows, DarkTitleBarTellsWhyNot)
{
    const HWND window = newWindow();
    EXPECT_EQ(messagesOf([&] { table.setDarkTitleBar(window, true); }), "");
    EXPECT_EQ(messagesOf([&] { table.setDarkTitleBar(window, false); }),
              "Windows version is less than 11. Dark mode title bar not applied.\n");
}

TEST(PlatformWindows, ADeadOneHasNoMonitorAndRefusesTheDarkTitleBar)
{
    const HWND dead = newWindow();
    table.destroyWindow(dead);
    int x = -1;
    EXPECT_FALSE(table.getMonitorBounds(dead, &x, &x, &x, &x));
    EXPECT_EQ(x, -1);
    EXPECT_EQ(messagesOf([&] { table.setDarkTitleBar(dead, true); }), "Failed to set dark mode title bar.\n");
}

TEST(PlatformWindows, MessageBoxKeepsTextAndCaptionApart)
{
    constexpr int TextId = 0xFFFF;
    std::string text;
    const auto answer = [&](int code, WPARAM window) {
        if (code == HCBT_ACTIVATE && text.empty()) {
            text = itemText(reinterpret_cast<HWND>(window), TextId);
        }
        return pressOk(code, window);
    };
    duringHook(answer, [] { EXPECT_EQ(table.showMessageBox(nullptr, "caption", "text"), IDOK); });
    EXPECT_EQ(text, "text");
}

TEST(PlatformWindows, ADestroyedOneIsNoLongerInFrontAndHasNoFocus)
{
    const HWND window = newWindow();
    const HWND other = newWindow();
    EXPECT_NE(table.setForegroundWindow(window), 0);
    SetFocus(window);
    EXPECT_NE(table.destroyWindow(other), 0);
    EXPECT_EQ(table.getForegroundWindow(), window);
    EXPECT_NE(table.destroyWindow(window), 0);
    EXPECT_NE(table.getForegroundWindow(), window);
    EXPECT_NE(SetFocus(newWindow()), window);
}

TEST(PlatformWindows, FocusOnTheWatchedOneRaisesTheTarget)
{
    const HWND target = newWindow();
    const HWND watched = newWindow();
    const HWND other = newWindow();
    EXPECT_NE(table.setForegroundWindow(other), 0);
    EXPECT_EQ(table.getForegroundWindow(), other);
    int raised = 0;
    const auto raisedByFocusOn = [&](HWND window) {
        raised = 0;
        SetFocus(window);
        return raised > 0;
    };
    const auto countRaised = [&](int code, WPARAM window) -> LRESULT {
        raised += code == HCBT_ACTIVATE && reinterpret_cast<HWND>(window) == target;
        return 0;
    };
    duringHook(countRaised, [&] {
        EXPECT_NE(table.installFocusHook(watched, target), nullptr);
        EXPECT_FALSE(raisedByFocusOn(other));
        EXPECT_TRUE(raisedByFocusOn(watched)) << "target not raised, or the next hook not called";
        table.installFocusHook(watched, nullptr);
        EXPECT_FALSE(raisedByFocusOn(other) || raisedByFocusOn(watched)) << "null target raised";
    });
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
    const std::vector<DialogField> others(5, {201, "other"});
    const auto reportOn = [&](std::ptrdiff_t count) {
        return reportOf([&] { return make({others.begin(), others.begin() + count}); });
    };
    EXPECT_EQ(reportOn(3), "[ERROR] Creating error window: Invalid number of parameters\n");
    EXPECT_EQ(reportOn(5), "[ERROR] Creating error window: Invalid number of parameters\n");
    const auto forbidWindows = [](int code, WPARAM) -> LRESULT { return code == HCBT_CREATEWND; };
    duringHook(forbidWindows, [&] {
        EXPECT_THAT(reportOn(4), StartsWith("[ERROR] Creating error window '")) << "class exists";
    });
    EXPECT_EQ(reportOn(4), "") << "class registered twice";
    dialog = table.createDialog(window, Template);
    EXPECT_EQ(itemText(dialog, 201), "name");
    SendMessageA(dialog, WM_COMMAND, Accept, 0);
    EXPECT_EQ(acceptedDialog, dialog);
}

TEST_F(PlatformErrorDialog, ShowsFieldsZeroToTwoAndAcceptGivesZeroThreeAndOne)
{
    open();
    EXPECT_EQ(table.getParentWindow(dialog), window);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    const char* const shown[] = {"name", "mail", "fixed", ""};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(itemText(dialog, 201 + i), shown[i]);
        const HWND control = table.getDialogItem(dialog, 201 + i);
        EXPECT_EQ(table.getParentWindow(control), dialog);
        EXPECT_EQ(table.enableWindow(control, true) != 0, i == 2) << 201 + i;
    }
    for (const int id : {201, 202, 203}) {
        EXPECT_NE(table.setDialogItemText(dialog, id, std::to_string(id).c_str()), 0);
    }
    EXPECT_NE(table.setDialogItemText(dialog, 204, std::string(20000, 'x').c_str()), 0);
    SendMessageA(dialog, WM_COMMAND, 0x70000 | Accept, 0);
    EXPECT_THAT(accepted, ElementsAre("201", std::string(16383, 'x'), "202"));
    EXPECT_EQ(acceptedDialog, dialog);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    char small[4] = "";
    EXPECT_EQ(table.getDialogItemText(dialog, 204, small, sizeof(small)), 3u);
    EXPECT_STREQ(small, "xxx");
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
    const auto windowReport = reportOf([&] { return newWindow(dead); });
    EXPECT_THAT(windowReport, testing::AllOf(StartsWith("[ERROR] Creating window '"), EndsWith("'\n")));
    const auto hasReason =
        testing::AllOf(StartsWith("[ERROR] Creating dialog '"), testing::Not(EndsWith("''\n")));
    EXPECT_THAT(reportOf([&] { return table.createDialog(window, 999); }), hasReason);
    EXPECT_THAT(reportOf([&] { return table.getDialogItem(dialog, 999); }), hasReason);
    EXPECT_EQ(table.setDialogItemText(dialog, 999, ""), 0);
    EXPECT_EQ(itemText(dialog, 999), "");
}

TEST(PlatformInput, KeysAreAskedBySelectorAndTheCursorIsWhereItWasSet)
{
    const auto downWhile = [](int key) {
        BYTE keys[256] = {};
        keys[key] = 0x80;
        SetKeyboardState(keys);
        return std::vector{table.isKeyDown(0), table.isKeyDown(1), table.isKeyDown(2), table.isKeyDown(27)};
    };
    EXPECT_THAT(downWhile(VK_ESCAPE), ElementsAre(true, false, false, false));
    EXPECT_THAT(downWhile(VK_RETURN), ElementsAre(false, true, false, false));
    int x = 0;
    int y = 0;
    SetCursorPos(15, 27);
    table.getCursorPosition(&x, nullptr);
    table.getCursorPosition(nullptr, &y);
    EXPECT_EQ(std::pair(x, y), std::pair(15, 27));
}

TEST(PlatformProcess, CrashFileIsTakenUnlessItsPathIsEmpty)
{
    EXPECT_FALSE(table.registerCrashFile(""));
    EXPECT_TRUE(table.registerCrashFile("no such folder/a.log")) << "the system's refusal counted";
}

TEST(PlatformProcess, MakeDirectoryTellsFailure)
{
    const TestFolder folder;
    const std::string made = folder.narrowPath("made");
    EXPECT_FALSE(table.makeDirectory(made.c_str()));
    EXPECT_TRUE(fs::is_directory(made));
    EXPECT_TRUE(table.makeDirectory(made.c_str())) << "existing";
    EXPECT_TRUE(table.makeDirectory((made + "/no/parent").c_str()));
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
    std::string name = executable.filename().string();
    EXPECT_TRUE(table.isProcessRunning(name.c_str()));
    EXPECT_FALSE(table.isProcessRunning(name.substr(1).c_str()));
    EXPECT_FALSE(table.isProcessRunning(name.substr(0, 15).c_str())) << "cut name";
    name[0] = 'p';
    EXPECT_FALSE(table.isProcessRunning(name.c_str())) << "case ignored";
}

TEST(PlatformProcess, RunCommandWaitsAndWhatDoesNotExistIsTold)
{
    const TestFolder folder;
    const std::string file = folder.narrowPath("result");
    _putenv(("VELOR_COMMAND_WRITES=" + file).c_str());
    EXPECT_EQ(messagesOf([&] { table.runCommand(nullptr, table.getExecutablePath().c_str(), false); }), "");
    _putenv("VELOR_COMMAND_WRITES=");
    EXPECT_EQ(fileBytes(file), "done");
    // The system may show a box of its own.
    duringHook(pressOk, [] {
        EXPECT_THAT(messagesOf([] { table.runCommand(nullptr, "no-such-command", false); }),
                    testing::AllOf(StartsWith("Error: "), EndsWith(" executing command: no-such-command\n")));
    });
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(table.shellOpen("no-such-file-here", false)), 2);
}

/// The desktop's opener and the administrator's door are scripts here, which write down how they were called.
TEST(PlatformProcess, ShellOpenTriesOnceMoreOnlyIfDenied)
{
    const TestFolder folder;
    const std::string path = std::string("PATH=") + std::getenv("PATH");
    const std::string calls = folder.narrowPath("calls");
    const auto script = [&](const std::string& name, const char* exitCode, fs::perms permissions) {
        const std::string file = folder.narrowPath(name);
        writeFile(file, "#!/bin/sh\necho " + name + " \"$@\" >> '" + calls + "'\nexit " + exitCode + "\n");
        fs::permissions(file, permissions);
    };
    const auto opened = [&](bool isElevated) {
        fs::remove(calls);
        const auto result = reinterpret_cast<std::intptr_t>(table.shellOpen("a b", isElevated));
        return std::to_string(result) + ": " + fileBytes(calls);
    };
    _putenv(("PATH=" + folder.narrowPath("")).c_str());
    script("pkexec", "0", fs::perms::owner_all);
    script("xdg-open", "0", fs::perms::owner_all);
    EXPECT_EQ(opened(false), "33: xdg-open a b\n");
    EXPECT_EQ(opened(true), "33: pkexec xdg-open a b\n");
    script("xdg-open", "4", fs::perms::owner_all);
    EXPECT_EQ(opened(false), "31: xdg-open a b\n") << "tried again after another failure";
    script("xdg-open", "0", fs::perms::owner_read);
    EXPECT_EQ(opened(false), "33: pkexec xdg-open a b\n");
    fs::remove(calls);
    table.runCommand(nullptr, "command", true);
    EXPECT_EQ(fileBytes(calls), "pkexec command\n") << "elevated command without its rights";
    _putenv(path.c_str());
}
