#include "TestHelpers.h"

#include <Velor.Base/PathForms.h>
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

std::string freshName()
{
    static int count = 0;
    return "VelorTest" + std::to_string(++count);
}

HWND newWindow(HWND parent = nullptr)
{
    return table.createWindow("title", freshName().c_str(), parent, 320, 240);
}

HWND deadWindow()
{
    const HWND window = newWindow();
    table.destroyWindow(window);
    return window;
}

HWND newErrorWindow(const std::vector<DialogField>& fields = Fields, ErrorDialogCallback callback = nullptr,
                    int acceptId = Accept)
{
    return table.createErrorWindow("title", freshName().c_str(), nullptr, 320, 240, acceptId, fields,
                                   callback);
}

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

LRESULT forbidWindows(int code, WPARAM) { return code == HCBT_CREATEWND; }

/// Presses OK in any box that comes up.
LRESULT pressOk(int code, WPARAM window)
{
    if (code == HCBT_ACTIVATE) {
        PostMessageA(reinterpret_cast<HWND>(window), WM_COMMAND, IDOK, 0);
    }
    return 0;
}

std::vector<std::string> accepted;
HWND acceptedDialog = nullptr;

void onAccept(HWND dialog, const char* first, const char* second, const char* third)
{
    acceptedDialog = dialog;
    accepted = {first, second, third};
}

bool isSettingHeard = false;

LRESULT CALLBACK listenerProc(HWND window, UINT message, WPARAM first, LPARAM second)
{
    isSettingHeard = isSettingHeard || (message == WM_SETTINGCHANGE && first == 0 && second != 0);
    return DefWindowProcA(window, message, first, second);
}

void setEnvironment(const std::string& name, const std::string& value)
{
    ASSERT_EQ(_putenv((name + "=" + value).c_str()), 0);
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

TEST(PlatformWindows, ShareAClassAndLiveUntilDestroyed)
{
    const std::string name = freshName();
    const HWND first = table.createWindow("a", name.c_str(), nullptr, 320, 240);
    const HWND second = table.createWindow("b", name.c_str(), first, 400, 300);
    ASSERT_NE(second, nullptr) << "an existing class taken for a failure";
    EXPECT_THAT(boundsOf(table.getWindowBounds, second), ElementsAre(0, 0, 400, 300));
    EXPECT_FALSE(table.isWindowVisible(second));
    EXPECT_EQ(table.getParentWindow(second), nullptr) << "an owner taken for a parent";
    EXPECT_NE(table.destroyWindow(second), 0);
    EXPECT_EQ(table.destroyWindow(second), 0);
    EXPECT_THAT(boundsOf(table.getWindowBounds, second), ElementsAre(0, 0, 0, 0));
}

TEST(PlatformWindows, AnOwnerTakesItsWindowsAlong)
{
    const HWND owner = newWindow();
    const HWND owned = newWindow(owner);
    table.destroyWindow(owner);
    EXPECT_EQ(table.destroyWindow(owned), 0);
}

TEST(PlatformWindows, OneThatCannotBeMadeIsReportedWithTheSystemsReason)
{
    HWND window = nullptr;
    const std::string message = messagesOf([&] { window = newWindow(deadWindow()); });
    EXPECT_EQ(window, nullptr);
    EXPECT_THAT(message, StartsWith("[ERROR] Creating window '"));
    EXPECT_THAT(message, EndsWith("'\n"));
    EXPECT_GT(message.size(), std::string("[ERROR] Creating window ''\n").size());
}

TEST(PlatformWindows, EnablingTellsWhetherTheyWereDisabled)
{
    const HWND window = newWindow();
    EXPECT_EQ(table.enableWindow(window, false), 0);
    EXPECT_NE(table.enableWindow(window, true), 0);
    EXPECT_EQ(table.enableWindow(window, true), 0);
}

TEST(PlatformWindows, ClosingEndsTheLoopAndLeavesTheWindow)
{
    const HWND window = newWindow();
    EXPECT_EQ(table.closeWindow(window), 0);
    table.runDialogLoop(nullptr);
    EXPECT_NE(table.destroyWindow(window), 0);
    EXPECT_EQ(table.closeWindow(window), 0) << "dead window";
}

TEST(PlatformWindows, BoundsSkipNullArguments)
{
    const HWND window = newWindow();
    int width = -1;
    int height = -1;
    table.getWindowBounds(window, nullptr, nullptr, nullptr, nullptr);
    table.getWindowBounds(window, nullptr, nullptr, &width, nullptr);
    EXPECT_EQ(width, 320);
    table.getDesktopBounds(nullptr, nullptr, nullptr, &height);
    EXPECT_THAT(boundsOf(table.getWindowBounds, GetDesktopWindow())[3], height);
    EXPECT_GE(height, 480);
    table.getClientBounds(window, nullptr, nullptr, nullptr, nullptr);
    EXPECT_TRUE(table.getMonitorBounds(window, nullptr, nullptr, nullptr, &height));
    EXPECT_GE(height, 480);
    table.getCursorPosition(nullptr, nullptr);
}

TEST(PlatformWindows, ADeadOneHasNoMonitor)
{
    int x = -1;
    EXPECT_FALSE(table.getMonitorBounds(deadWindow(), &x, &x, &x, &x));
    EXPECT_EQ(x, -1);
}

TEST(PlatformWindows, DarkTitleBarTellsWhyNot)
{
    const HWND window = newWindow();
    EXPECT_EQ(messagesOf([&] { table.setDarkTitleBar(window, true); }), "");
    EXPECT_EQ(messagesOf([&] { table.setDarkTitleBar(window, false); }),
              "Windows version is less than 11. Dark mode title bar not applied.\n");
}

TEST(PlatformWindows, DarkTitleBarOfADeadOneIsRefused)
{
    EXPECT_EQ(messagesOf([] { table.setDarkTitleBar(deadWindow(), true); }),
              "Failed to set dark mode title bar.\n");
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
    int result = 0;
    duringHook(answer, [&] { result = table.showMessageBox(nullptr, "caption", "text"); });
    EXPECT_EQ(text, "text");
    EXPECT_EQ(result, IDOK);
}

TEST(PlatformWindows, SettingChangeReachesEveryWindow)
{
    WNDCLASSA listener = {};
    listener.lpfnWndProc = listenerProc;
    listener.lpszClassName = "VelorTestListener";
    ASSERT_NE(RegisterClassA(&listener), 0);
    CreateWindowExA(0, listener.lpszClassName, "", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    EXPECT_NE(table.broadcastSettingChange(reinterpret_cast<LPARAM>("Environment"), 1000), 0);
    EXPECT_TRUE(isSettingHeard);
}

TEST(PlatformWindows, FocusOnTheWatchedOneRaisesTheTarget)
{
    const HWND target = newWindow();
    const HWND watched = newWindow();
    const HWND other = newWindow();
    int raised = 0;
    const auto countRaised = [&](int code, WPARAM window) -> LRESULT {
        raised += code == HCBT_ACTIVATE && reinterpret_cast<HWND>(window) == target;
        return 0;
    };
    duringHook(countRaised, [&] {
        EXPECT_NE(table.installFocusHook(watched, target), nullptr);
        SetFocus(other);
        EXPECT_EQ(raised, 0);
        SetFocus(watched);
        EXPECT_GE(raised, 1) << "target not raised, or the next hook not called";
        const int before = raised;
        table.installFocusHook(watched, nullptr);
        SetFocus(other);
        SetFocus(watched);
        EXPECT_EQ(raised, before) << "null target raised";
    });
}

TEST(PlatformWindows, ForegroundIsTheOneThatWasRaised)
{
    const HWND window = newWindow();
    EXPECT_NE(table.setForegroundWindow(window), 0);
    EXPECT_EQ(table.getForegroundWindow(), window);
    EXPECT_EQ(table.setForegroundWindow(deadWindow()), 0);
}

TEST(PlatformErrorWindow, NeedsFourFieldsAndRegistersNothingWithoutThem)
{
    const std::string name = freshName();
    const auto make = [&](const std::vector<DialogField>& fields) {
        return table.createErrorWindow("title", name.c_str(), nullptr, 320, 240, Accept, fields, nullptr);
    };
    for (const std::size_t count : {std::size_t(0), std::size_t(3), std::size_t(5)}) {
        EXPECT_EQ(messagesOf([&] { EXPECT_EQ(make(std::vector<DialogField>(count)), nullptr); }),
                  "[ERROR] Creating error window: Invalid number of parameters\n");
    }
    EXPECT_NE(make(Fields), nullptr) << "class registered without a window";
    EXPECT_EQ(messagesOf([&] { EXPECT_EQ(make(Fields), nullptr); }), "") << "class registered twice";
}

TEST(PlatformErrorWindow, FailureKeepsTheEarlierDialog)
{
    const HWND window = newErrorWindow(Fields, onAccept);
    const std::vector<DialogField> others(4, {201, "other"});
    messagesOf([&] { newErrorWindow({others[0]}, nullptr, 1); });
    std::string message;
    duringHook(forbidWindows, [&] {
        message = messagesOf([&] { EXPECT_EQ(newErrorWindow(others, nullptr, 1), nullptr); });
    });
    EXPECT_THAT(message, StartsWith("[ERROR] Creating error window '"));
    const HWND dialog = table.createDialog(window, Template);
    EXPECT_EQ(itemText(dialog, 201), "name");
    accepted.clear();
    SendMessageA(dialog, WM_COMMAND, Accept, 0);
    EXPECT_EQ(accepted.size(), 3u);
    table.destroyWindow(window);
}

class PlatformErrorDialog : public testing::Test
{
protected:
    void open(ErrorDialogCallback callback, int acceptId = Accept)
    {
        window = newErrorWindow(Fields, callback, acceptId);
        dialog = table.createDialog(window, Template);
        ASSERT_NE(dialog, nullptr);
        accepted.clear();
        acceptedDialog = nullptr;
    }

    void TearDown() override { EXPECT_NE(table.destroyWindow(window), 0) << "closing destroyed the window"; }

    HWND window = nullptr;
    HWND dialog = nullptr;
};

TEST_F(PlatformErrorDialog, ShowsThreeFieldsAndDisablesTheThird)
{
    open(onAccept);
    EXPECT_EQ(table.getParentWindow(dialog), window);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    const std::pair<const char*, bool> expected[] = {
        {"name", false}, {"mail", false}, {"fixed", true}, {"", false}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(itemText(dialog, 201 + i), expected[i].first);
        const HWND control = table.getDialogItem(dialog, 201 + i);
        EXPECT_EQ(table.getParentWindow(control), dialog);
        EXPECT_EQ(table.enableWindow(control, true) != 0, expected[i].second) << 201 + i;
    }
}

TEST_F(PlatformErrorDialog, AcceptGivesFieldsZeroThreeAndOneAndStaysOpen)
{
    open(onAccept);
    for (const int id : {201, 202, 203, 204}) {
        EXPECT_NE(table.setDialogItemText(dialog, id, std::to_string(id).c_str()), 0);
    }
    SendMessageA(dialog, WM_COMMAND, 0x70000 | Accept, 0);
    EXPECT_THAT(accepted, ElementsAre("201", "204", "202"));
    EXPECT_EQ(acceptedDialog, dialog);
    EXPECT_TRUE(table.isWindowVisible(dialog));
}

TEST_F(PlatformErrorDialog, AcceptComesBeforeCancel)
{
    open(onAccept, IDCANCEL);
    SendMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    EXPECT_EQ(accepted.size(), 3u);
    EXPECT_TRUE(table.isWindowVisible(dialog));
}

TEST_F(PlatformErrorDialog, AcceptNeedsNoCallback)
{
    open(nullptr);
    SendMessageA(dialog, WM_COMMAND, Accept, 0);
    SendMessageA(dialog, WM_COMMAND, Accept + 1, 0);
    EXPECT_TRUE(table.isWindowVisible(dialog));
}

TEST_F(PlatformErrorDialog, LongTextIsCut)
{
    open(onAccept);
    table.setDialogItemText(dialog, 204, std::string(20000, 'x').c_str());
    SendMessageA(dialog, WM_COMMAND, Accept, 0);
    EXPECT_THAT(accepted, ElementsAre("name", std::string(16383, 'x'), "mail"));
    char small[4] = "";
    EXPECT_EQ(table.getDialogItemText(dialog, 204, small, sizeof(small)), 3u);
    EXPECT_STREQ(small, "xxx");
}

TEST_F(PlatformErrorDialog, CancelEndsTheLoop)
{
    open(onAccept);
    PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    table.runDialogLoop(dialog);
    EXPECT_FALSE(table.isWindowVisible(dialog));
    EXPECT_THAT(accepted, ElementsAre());
}

TEST_F(PlatformErrorDialog, LoopServesOtherWindowsToo)
{
    open(onAccept);
    PostMessageA(window, WM_CLOSE, 0, 0);
    table.runDialogLoop(dialog);
    EXPECT_TRUE(table.isWindowVisible(dialog));
    EXPECT_NE(table.endDialog(dialog), 0);
    EXPECT_FALSE(table.isWindowVisible(dialog));
}

TEST_F(PlatformErrorDialog, ClientBoundsAreTheParents)
{
    open(onAccept);
    const auto clientOf = [&](int id) { return boundsOf(table.getClientBounds, GetDlgItem(dialog, id)); };
    const auto windowOf = [&](int id) { return boundsOf(table.getWindowBounds, GetDlgItem(dialog, id)); };
    EXPECT_GT(clientOf(201)[0], 0);
    EXPECT_EQ(clientOf(204)[0] - clientOf(201)[0], windowOf(204)[0] - windowOf(201)[0]);
    EXPECT_EQ(clientOf(204)[1] - clientOf(201)[1], windowOf(204)[1] - windowOf(201)[1]);
    EXPECT_EQ(clientOf(204)[3], clientOf(201)[3]);
    EXPECT_GT(clientOf(201)[2], clientOf(204)[2]);
}

TEST_F(PlatformErrorDialog, MissingPartsAreReported)
{
    open(onAccept);
    const auto isReport = testing::AllOf(StartsWith("[ERROR] Creating dialog '"), EndsWith("'\n"));
    EXPECT_THAT(messagesOf([&] { EXPECT_EQ(table.createDialog(window, 999), nullptr); }), isReport);
    EXPECT_THAT(messagesOf([&] { EXPECT_EQ(table.getDialogItem(dialog, 999), nullptr); }), isReport);
    EXPECT_EQ(table.setDialogItemText(dialog, 999, ""), 0);
    EXPECT_EQ(itemText(dialog, 999), "");
}

TEST(PlatformInput, KeysAreAskedBySelector)
{
    const auto press = [](int key) {
        BYTE keys[256] = {};
        keys[key] = 0x80;
        SetKeyboardState(keys);
        return std::vector<bool>{table.isKeyDown(0), table.isKeyDown(1), table.isKeyDown(2),
                                 table.isKeyDown(27)};
    };
    EXPECT_THAT(press(VK_ESCAPE), ElementsAre(true, false, false, false));
    EXPECT_THAT(press(VK_RETURN), ElementsAre(false, true, false, false));
    EXPECT_THAT(press('A'), ElementsAre(false, false, false, false));
}

TEST(PlatformInput, CursorIsWhereItWasSet)
{
    int x = 0;
    int y = 0;
    SetCursorPos(15, 27);
    table.getCursorPosition(&x, nullptr);
    table.getCursorPosition(nullptr, &y);
    EXPECT_THAT((std::vector<int>{x, y}), ElementsAre(15, 27));
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

TEST(PlatformProcess, TempDirectoryIsTheVariableOrAFixedPlace)
{
    const char* variable = std::getenv("TEMP");
    const std::string before = variable != nullptr ? variable : "";
    setEnvironment("TEMP", "some where");
    EXPECT_EQ(table.getTempDirectory(), "some where");
    setEnvironment("TEMP", "");
    EXPECT_EQ(table.getTempDirectory(), "C:\\Temp");
    setEnvironment("TEMP", before);
}

TEST(PlatformProcess, RunCommandWaits)
{
    const TestFolder folder;
    const std::string file = folder.narrowPath("result");
    setEnvironment("VELOR_COMMAND_WRITES", file);
    EXPECT_EQ(messagesOf([&] { table.runCommand(nullptr, table.getExecutablePath().c_str(), false); }), "");
    setEnvironment("VELOR_COMMAND_WRITES", "");
    EXPECT_EQ(fileBytes(file), "done");
}

TEST(PlatformProcess, RunCommandReportsWhatDoesNotExist)
{
    std::string message;
    // The system may show a box of its own.
    duringHook(pressOk, [&] {
        message = messagesOf([] { table.runCommand(nullptr, "no-such-command-here", false); });
    });
    EXPECT_THAT(message, StartsWith("Error: "));
    EXPECT_THAT(message, EndsWith(" executing command: no-such-command-here\n"));
}

TEST(PlatformProcess, ShellOpenTellsThatAFileIsMissing)
{
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(table.shellOpen("no-such-file-here", false)), 2);
}

/// The desktop's opener and the administrator's door are scripts here, which write down how they were called.
TEST(PlatformProcess, ShellOpenTriesOnceMoreOnlyIfDenied)
{
    const TestFolder folder;
    const std::string path = std::getenv("PATH");
    const std::string calls = folder.narrowPath("calls");
    const auto script = [&](const std::string& name, const char* exitCode, fs::perms permissions) {
        const std::string file = folder.narrowPath(name);
        writeFile(file, "#!/bin/sh\necho " + name + " \"$@\" >> '" + calls + "'\nexit " + exitCode + "\n");
        fs::permissions(file, permissions);
    };
    const auto opened = [&](bool isElevated) {
        fs::remove(calls);
        setEnvironment("PATH", folder.narrowPath(""));
        const auto result = reinterpret_cast<std::intptr_t>(table.shellOpen("a b", isElevated));
        setEnvironment("PATH", path);
        return std::to_string(result) + ": " + fileBytes(calls);
    };
    script("pkexec", "0", fs::perms::owner_all);
    script("xdg-open", "0", fs::perms::owner_all);
    EXPECT_EQ(opened(false), "33: xdg-open a b\n");
    EXPECT_EQ(opened(true), "33: pkexec xdg-open a b\n");
    script("xdg-open", "4", fs::perms::owner_all);
    EXPECT_EQ(opened(false), "31: xdg-open a b\n") << "tried again after another failure";
    script("xdg-open", "0", fs::perms::owner_read);
    EXPECT_EQ(opened(false), "33: pkexec xdg-open a b\n");
}

TEST(PlatformProcess, CloseHandleClosesAndSkipsNull)
{
    const TestFolder folder;
    const std::string file = folder.narrowPath("f");
    writeFile(file, "x");
    const HANDLE handle = CreateFileW(toWidePath(file).c_str(), GENERIC_WRITE, FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(SetEndOfFile(handle), 0);
    table.closeHandle(nullptr);
    table.closeHandle(handle);
    EXPECT_EQ(SetEndOfFile(handle), 0);
}

TEST(PlatformProcess, CrashFileNeedsAPathThatConvertsAndNothingMore)
{
    EXPECT_FALSE(table.registerCrashFile("")) << "empty path registered";
    EXPECT_TRUE(table.registerCrashFile("no/such/folder/file.log")) << "the system's refusal looked at";
}
