#include "Win32StandIn.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <pthread.h>
#include <spawn.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

using namespace win32;

namespace {

constexpr DWORD ErrorFileNotFound = 2;
constexpr DWORD ErrorAccessDenied = 5;
constexpr DWORD ErrorGeneralFailure = 31;
constexpr int OpenerFoundNoFile = 2;
constexpr std::intptr_t LaunchSucceeded = 33;

thread_local DWORD lastError = 0;

DWORD errorOf(int number)
{
    return number == ENOENT                      ? ErrorFileNotFound
           : number == EACCES || number == EPERM ? ErrorAccessDenied
           : number == EXDEV                     ? ERROR_NOT_SAME_DEVICE
                                                 : ErrorGeneralFailure;
}

bool isRunAs(const char* verb) { return verb != nullptr && std::string_view(verb) == "runas"; }

/// The process that runs `arguments`, or -1 with the last error set.
pid_t spawn(std::vector<const char*> arguments)
{
    arguments.push_back(nullptr);
    pid_t process = -1;
    const int error =
        posix_spawnp(&process, arguments[0], nullptr, nullptr, const_cast<char**>(arguments.data()), environ);
    lastError = error == 0 ? 0 : errorOf(error);
    return error == 0 ? process : -1;
}

bool isNumber(const std::string& text) { return std::all_of(text.begin(), text.end(), isdigit); }

/// What the system puts behind the name of a running program's file that was removed or replaced.
constexpr std::string_view DeletedMark = " (deleted)";

/// The file name of the program that `/proc/ID` runs: of its file, else of its command line, which both may
/// be hidden, else the name that the system keeps, cut to 15 characters. A process that has ended and waits
/// to be collected runs none.
std::string programName(const std::filesystem::path& process)
{
    std::error_code error;
    const auto file = std::filesystem::read_symlink(process / "exe", error);
    if (!error) {
        const std::string name = file.filename();
        return name.substr(0, name.size() - (name.ends_with(DeletedMark) ? DeletedMark.size() : 0));
    }
    if (error == std::errc::no_such_file_or_directory) {
        return {};
    }
    std::string line;
    std::getline(std::ifstream(process / "cmdline"), line, '\0');
    if (line.empty()) {
        std::getline(std::ifstream(process / "comm"), line);
    }
    return std::filesystem::path(line).filename();
}

/// Waits for `process` and returns its exit status, or -1 if a signal ended it or it cannot be waited for.
int exitStatus(pid_t process)
{
    int status = 0;
    pid_t ended = -1;
    do {
        ended = waitpid(process, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return ended == process && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

void win32::setLastError(DWORD error) { lastError = error; }

void win32::setLastErrorOf(int number) { lastError = number == 0 ? 0 : errorOf(number); }

// There are no crash reports that could take the file along.
HRESULT WerRegisterFile(const WCHAR*, int, DWORD) { return S_OK; }

int _mkdir(const char* path) { return mkdir(path, 0777); }

int _putenv(const char* assignment)
{
    const std::string name(assignment, std::strcspn(assignment, "="));
    const char* value = assignment + name.size() + 1;
    return *value == '\0' ? unsetenv(name.c_str()) : setenv(name.c_str(), value, 1);
}

DWORD GetCurrentThreadId() { return static_cast<DWORD>(gettid()); }

HINSTANCE GetModuleHandleA(const char*) { return reinterpret_cast<HINSTANCE>(std::uintptr_t(1)); }

DWORD GetModuleFileNameA(HINSTANCE, char* path, DWORD size)
{
    const ssize_t length = readlink("/proc/self/exe", path, size - 1);
    path[std::max<ssize_t>(length, 0)] = '\0';
    return static_cast<DWORD>(std::max<ssize_t>(length, 0));
}

BOOL ShellExecuteExA(SHELLEXECUTEINFOA* info)
{
    const bool isElevated = isRunAs(info->lpVerb);
    const pid_t process = isElevated ? spawn({"pkexec", info->lpFile}) : spawn({info->lpFile});
    if (process < 0) {
        return FALSE;
    }
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    if (descriptor < 0) { // As before Linux 5.3: the caller gets no handle to wait for.
        exitStatus(process);
    }
    info->hProcess = descriptor < 0 ? nullptr : handleOf(descriptor);
    return TRUE;
}

HINSTANCE ShellExecuteA(HWND, const char* verb, const char* file, const char*, const char*, int)
{
    const pid_t process = isRunAs(verb) ? spawn({"pkexec", "xdg-open", file}) : spawn({"xdg-open", file});
    std::intptr_t result = LaunchSucceeded;
    if (process < 0) {
        result = lastError;
    } else if (const int status = exitStatus(process); status != 0) {
        result = status == OpenerFoundNoFile ? ErrorFileNotFound : ErrorGeneralFailure;
    }
    return reinterpret_cast<HINSTANCE>(result);
}

DWORD WaitForSingleObject(HANDLE process, DWORD)
{
    siginfo_t info = {};
    while (waitid(P_PIDFD, static_cast<id_t>(fileDescriptor(process)), &info, WEXITED) != 0 &&
           errno == EINTR) {
    }
    return 0;
}

HANDLE CreateToolhelp32Snapshot(DWORD, DWORD)
{
    const int descriptor = memfd_create("processes", MFD_CLOEXEC);
    if (descriptor < 0) {
        return INVALID_HANDLE_VALUE;
    }
    std::error_code error;
    for (std::filesystem::directory_iterator at("/proc", error), end; !error && at != end;
         at.increment(error)) {
        PROCESSENTRY32 entry = {};
        if (isNumber(at->path().filename())) {
            programName(at->path()).copy(entry.szExeFile, sizeof(entry.szExeFile) - 1);
            std::ignore = write(descriptor, &entry, sizeof(entry));
        }
    }
    return handleOf(descriptor);
}

BOOL Process32First(HANDLE snapshot, PROCESSENTRY32* entry)
{
    lseek(fileDescriptor(snapshot), 0, SEEK_SET);
    return Process32Next(snapshot, entry);
}

BOOL Process32Next(HANDLE snapshot, PROCESSENTRY32* entry)
{
    return read(fileDescriptor(snapshot), entry, sizeof(*entry)) == sizeof(*entry);
}

DWORD GetLastError() { return lastError; }

DWORD FormatMessageA(DWORD, const void*, DWORD error, DWORD, char* buffer, DWORD, std::va_list*)
{
    const std::string text = "Error " + std::to_string(error) + ".\r\n";
    *reinterpret_cast<char**>(buffer) = strdup(text.c_str());
    return static_cast<DWORD>(text.size());
}

void* LocalFree(void* memory)
{
    std::free(memory);
    return nullptr;
}

std::size_t remainingStack()
{
    pthread_attr_t attributes;
    void* lowest = nullptr;
    std::size_t size = 0;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        pthread_attr_getstack(&attributes, &lowest, &size);
        pthread_attr_destroy(&attributes);
    }
    // The address sanitizer keeps local variables elsewhere, but not the frames.
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    const auto low = reinterpret_cast<std::uintptr_t>(lowest);
    return stackBelow(here, low, low + size);
}
