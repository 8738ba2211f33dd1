#include "VelorLog.h"

#include "PlatformOperations.h"
#include "VelorLogFiles.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QString>
#include <QtCore/QVarLengthArray>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <numeric>
#include <string_view>

namespace {

constexpr std::string_view ColourReset = "\033[0m";
constexpr std::size_t FormatBufferSize = 4096;

struct LevelStyle
{
    std::string_view prefix;
    std::string_view colour;
};

LevelStyle levelStyle(VelorLog::Level level)
{
    switch (level) {
    case VelorLog::Error:
        return {"[ERROR] - ", "\033[31;1m"};
    case VelorLog::Warning:
        return {"[WARNING] - ", "\033[33;1m"};
    case VelorLog::Debug0:
        return {"[DBG0] - ", "\033[32;1m"};
    case VelorLog::Debug1:
        return {"[DBG1] - ", "\033[36;1m"};
    case VelorLog::Debug2:
        return {"[DBG2] - ", "\033[34;1m"};
    default:
        return {"", ""};
    }
}

/// The text of one line, which is not allocated unless it is a long one. It goes to a stream in one call,
/// since a stream that flushes at each insertion makes a system call of each.
using Line = QVarLengthArray<char, 512>;

Line lineOf(std::initializer_list<std::string_view> parts)
{
    Line line;
    line.reserve(
        std::accumulate(parts.begin(), parts.end(), qsizetype(1), [](qsizetype sum, std::string_view part) {
            return sum + static_cast<qsizetype>(part.size());
        }));
    for (const std::string_view part : parts) {
        line.append(part.data(), static_cast<qsizetype>(part.size()));
    }
    line.append('\n');
    return line;
}

void writeLine(std::ostream& out, std::initializer_list<std::string_view> parts)
{
    const Line line = lineOf(parts);
    out.write(line.data(), line.size());
    out.flush();
}

/// As `writeLine`, some hundredths faster: the stream would look at its state and its tie for each of the two
/// calls. A locale may convert what is written, and its failure is that of the stream, as ever.
void writeFileLine(std::ofstream& file, std::initializer_list<std::string_view> parts)
{
    if (!file.good()) {
        return;
    }
    const Line line = lineOf(parts);
    try {
        if (file.rdbuf()->sputn(line.data(), line.size()) == line.size() && file.rdbuf()->pubsync() == 0) {
            return;
        }
    } catch (const std::exception&) {
    }
    file.setstate(std::ios::badbit);
}

bool isUtf8(const std::string& text) { return QByteArrayView(text).isValidUtf8(); }

/// Opens `file` by a name in UTF-8, which Windows would take for text of its code page if it was passed as
/// bytes.
void openFile(std::ofstream& file, const std::string& name)
{
    if (isUtf8(name)) {
        file.open(std::filesystem::path(std::u8string(name.begin(), name.end())));
    } else {
        file.open(name);
    }
}

/// The path of a log in the code page of the system, which crash reports take; unchanged where it has no such
/// form.
std::string crashFilePath(const std::string& name)
{
    if (!isUtf8(name)) {
        return name;
    }
    const QString text = QString::fromStdString(name);
    const QByteArray local = text.toLocal8Bit();
    return QString::fromLocal8Bit(local) == text ? local.toStdString() : name;
}

} // namespace

VelorLog::VelorLog(const std::string& name)
    : mName(name)
{
    mFileOutputSuppressed = !reopenFile();
}

VelorLog::~VelorLog()
{
    const std::lock_guard lock(mMutex);
    if (!mFileOutputSuppressed) {
        mFile.close();
    }
}

void VelorLog::logMessage(const std::string& message, Level level, bool skipConsole)
{
    const std::lock_guard lock(mMutex);
    if (level > mMaxLogLevel) {
        return;
    }
    const std::string_view prefix = levelStyle(level).prefix;
    if (mListeners.empty()) {
        writeToOutputs(prefix, message, level, skipConsole);
        return;
    }
    // A copy for all, since a listener may change the string that the caller passed.
    const std::string text = std::string(prefix) + message;
    std::exception_ptr failure;
    if (!notifyListeners(text, level, skipConsole, failure)) {
        writeToOutputs({}, text, level, skipConsole);
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

VelorLog::Stream VelorLog::stream(Level level, bool skipConsole) { return {this, level, skipConsole}; }

void VelorLog::setDebugOutputEnabled(bool enabled)
{
    const std::lock_guard lock(mMutex);
    mDebugOutputEnabled = enabled;
}

void VelorLog::setFileOutputSuppressedEnabled(bool suppressed)
{
    const std::lock_guard lock(mMutex);
    mFileOutputSuppressed = suppressed;
}

void VelorLog::setTimeStampEnabled(bool enabled)
{
    const std::lock_guard lock(mMutex);
    mTimeStampEnabled = enabled;
}

void VelorLog::setMaxLogLevel(Level level)
{
    const std::lock_guard lock(mMutex);
    mMaxLogLevel = level;
}

void VelorLog::addListener(LogListener* listener)
{
    const std::lock_guard lock(mMutex);
    if (std::find(mListeners.begin(), mListeners.end(), listener) == mListeners.end()) {
        mListeners.push_back(listener);
    }
}

void VelorLog::removeListener(LogListener* listener)
{
    const std::lock_guard lock(mMutex);
    std::erase(mListeners, listener);
}

void VelorLog::_LogMsg(const std::string& kind, const std::string& text, const std::string& function,
                       int line)
{
    const std::string message =
        kind + ": " + text + " (Function: " + function + " at line " + std::to_string(line) + ")";
    Stream stream = VelorLogManager::getSingleton().stream(Info, false);
    stream << message;
    stream.flush();
}

void VelorLog::_LogDebugMsg(const std::string& text, const std::string& function, int line)
{
    _LogMsg("DEBUG", text, function, line);
}

void VelorLog::_LogErrorMsg(const std::string& text, const std::string& function, int line)
{
    _LogMsg("ERROR", text, function, line);
}

void VelorLog::_LogfDebugMsg(const std::string& function, int line, const char* format, ...)
{
    char text[FormatBufferSize] = "";
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    _LogMsg("DEBUG", text, function, line);
}

bool VelorLog::reopenFile()
{
    openFile(mFile, mName);
    if (!mFile.is_open()) {
        writeLine(std::cerr, {"Error: Impossible log file from: ", mName});
        return false;
    }
    return platformOperations().registerCrashFile(crashFilePath(mName).c_str());
}

/// Whether the listeners keep the message off the console and the file. `failure` is the first exception.
bool VelorLog::notifyListeners(const std::string& text, Level level, bool skipConsole,
                               std::exception_ptr& failure)
{
    bool skipOutput = false;
    for (LogListener* listener : mListeners) {
        try {
            listener->onLogMessage(text, level, skipConsole, mName, skipOutput);
        } catch (...) {
            failure = failure ? failure : std::current_exception();
        }
    }
    return skipOutput;
}

void VelorLog::writeToOutputs(std::string_view prefix, std::string_view text, Level level, bool skipConsole)
{
    if (mDebugOutputEnabled && !skipConsole) {
        writeToConsole(prefix, text, level);
    }
    if (!mFileOutputSuppressed) {
        writeToFile(prefix, text);
    }
}

void VelorLog::writeToConsole(std::string_view prefix, std::string_view text, Level level) const
{
    std::ostream& console = level < Warning ? std::cout : std::cerr;
    if (mColoursEnabled) {
        writeLine(console, {levelStyle(level).colour, prefix, text, ColourReset});
    } else {
        writeLine(console, {prefix, text});
    }
}

void VelorLog::writeToFile(std::string_view prefix, std::string_view text)
{
    if (!mFile.is_open() && !reopenFile()) {
        mFileOutputSuppressed = true;
        return;
    }
    writeFileLine(mFile,
                  {mTimeStampEnabled ? timeStamp(std::time(nullptr)) : std::string_view(), prefix, text});
}

const std::string& VelorLog::timeStamp(std::time_t now)
{
    if (now != mTimeStampSecond) {
        mTimeStamp = timeStampOf(now, mFile.getloc());
        mTimeStampSecond = now;
    }
    return mTimeStamp;
}

LogListener::~LogListener() = default;
