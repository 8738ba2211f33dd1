#include "VelorLog.h"

#include "PlatformOperations.h"
#include "VelorLogFiles.h"

#include <QtCore/QAnyStringView>
#include <QtCore/QByteArrayView>
#include <QtCore/QDateTime>
#include <QtCore/QDebug>
#include <QtCore/QDir>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryFile>
#include <QtCore/QVarLengthArray>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <numeric>
#include <string_view>
#include <utility>

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

/// Opens `file` by a name in UTF-8, which Windows would take for text of its code page if it came as bytes.
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

void deleteLogFile(const QFileInfo& file)
{
    const bool removed = QFile::remove(file.absoluteFilePath());
    VelorLog::Stream report =
        VelorLogManager::getSingleton().stream(removed ? VelorLog::Info : VelorLog::Warning, false);
    report << (removed ? "Deleted log file: " : "Failed to delete old log file: ")
           << file.fileName().toStdString();
    report.flush();
}

} // namespace

VelorLog::Stream::Stream(VelorLog* targetLog, Level level, bool skipConsole)
    : mTargetLog(targetLog)
    , mLevel(level)
    , mSkipConsole(skipConsole)
{}

VelorLog::Stream::Stream(Stream&& other) noexcept
    : mTargetLog(other.mTargetLog)
    , mLevel(other.mLevel)
    , mSkipConsole(other.mSkipConsole)
    , mMovedFrom(std::exchange(other.mMovedFrom, true))
    , mText(std::move(other.mText))
{}

// Delivering may throw what a listener throws.
// NOLINTNEXTLINE(performance-noexcept-move-constructor)
VelorLog::Stream& VelorLog::Stream::operator=(Stream&& other)
{
    if (this != &other) {
        deliver();
        mTargetLog = other.mTargetLog;
        mLevel = other.mLevel;
        mSkipConsole = other.mSkipConsole;
        mMovedFrom = std::exchange(other.mMovedFrom, true);
        mText = std::move(other.mText);
    }
    return *this;
}

VelorLog::Stream::~Stream()
{
    // Nothing may leave a destructor, and logging never fails its caller: what a listener throws here is
    // dropped.
    try {
        deliver();
    } catch (...) {
    }
}

VelorLog::Stream& VelorLog::Stream::operator<<(std::ostream& (*manipulator)(std::ostream&))
{
    manipulator(mText);
    return *this;
}

VelorLog::Stream& VelorLog::Stream::operator<<(std::ios_base& (*manipulator)(std::ios_base&))
{
    manipulator(mText);
    return *this;
}

VelorLog::Stream& VelorLog::Stream::flush()
{
    if (mMovedFrom) {
        return *this;
    }
    // Emptied first: when a listener throws, the text has been delivered and must not be delivered again.
    mText.clear();
    const std::string text = std::move(mText).str();
    if (mTargetLog != nullptr) {
        mTargetLog->logMessage(text, mLevel, mSkipConsole);
    } else {
        writeLine(std::cerr, {"Warning: Log is null!"});
    }
    return *this;
}

void VelorLog::Stream::appendText(QAnyStringView text) { mText << text.toString().toStdString(); }

void VelorLog::Stream::appendText(const QByteArray& text) { mText << text.toStdString(); }

void VelorLog::Stream::appendDebugForm(void (*insert)(QDebug&, const void*), const void* value)
{
    QString text;
    {
        QDebug debug(&text);
        insert(debug, value);
    }
    // QDebug puts a space behind each value, for one that may follow.
    if (text.endsWith(u' ')) {
        text.chop(1);
    }
    appendText(text);
}

void VelorLog::Stream::deliver()
{
    if (!mText.view().empty()) {
        flush();
    }
}

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
    updateTimeStamp(mTimeStamp, mTimeStampSecond, now, mFile.getloc());
    return mTimeStamp;
}

LogListener::~LogListener() = default;

std::string VelorLogManager::mDefaultLogsDirectory =
    QStandardPaths::writableLocation(QStandardPaths::DesktopLocation).toStdString();

VelorLogManager& VelorLogManager::getSingleton()
{
    static VelorLogManager instance;
    return instance;
}

VelorLogManager::~VelorLogManager()
{
    // In the order of their names, which the map's own destructor leaves open.
    while (!mLogsByName.empty()) {
        mLogsByName.erase(mLogsByName.begin());
    }
}

VelorLog* VelorLogManager::createLog(const std::string& name, std::string directory, bool makeDefault)
{
    const std::lock_guard lock(mMutex);
    VelorLog* log = findLog(name);
    if (log == nullptr) {
        if (directory.empty()) {
            directory = mDefaultLogsDirectory;
        }
        auto made = std::make_unique<VelorLog>(directory + "/" + name + LogFileSuffix.data());
        log = mLogsByName.emplace(name, std::move(made)).first->second.get();
    }
    if (makeDefault || mDefaultLog == nullptr) {
        mDefaultLog = log;
    }
    return log;
}

VelorLog* VelorLogManager::getLog(const std::string& name)
{
    const std::lock_guard lock(mMutex);
    return findLog(name);
}

VelorLog* VelorLogManager::getDefaultLog()
{
    const std::lock_guard lock(mMutex);
    return mDefaultLog;
}

VelorLog* VelorLogManager::setDefaultLog(VelorLog* log)
{
    const std::lock_guard lock(mMutex);
    return std::exchange(mDefaultLog, log);
}

void VelorLogManager::destroyLog(const std::string& name)
{
    const std::lock_guard lock(mMutex);
    const auto entry = mLogsByName.find(name);
    if (entry != mLogsByName.end()) {
        eraseLog(entry);
    }
}

void VelorLogManager::destroyLog(VelorLog* log)
{
    const std::lock_guard lock(mMutex);
    const auto entry = std::find_if(mLogsByName.begin(), mLogsByName.end(),
                                    [&](const auto& filed) { return filed.second.get() == log; });
    if (entry != mLogsByName.end()) {
        eraseLog(entry);
    }
}

void VelorLogManager::logMessage(const std::string& message, VelorLog::Level level, bool skipConsole,
                                 const std::string& logName)
{
    const std::lock_guard lock(mMutex);
    VelorLog* log = findTarget(logName);
    if (log != nullptr) {
        log->logMessage(message, level, skipConsole);
    } else if (logName.empty()) {
        writeLine(std::cerr, {"Warning: not logger found"});
    }
}

void VelorLogManager::logError(const std::string& message, bool skipConsole, const std::string& logName)
{
    logMessage(message, VelorLog::Error, skipConsole, logName);
}

void VelorLogManager::logWarning(const std::string& message, bool skipConsole, const std::string& logName)
{
    logMessage(message, VelorLog::Warning, skipConsole, logName);
}

void VelorLogManager::logDebug0(const std::string& message, bool skipConsole, const std::string& logName)
{
    logMessage(message, VelorLog::Debug0, skipConsole, logName);
}

void VelorLogManager::logDebug1(const std::string& message, bool skipConsole, const std::string& logName)
{
    logMessage(message, VelorLog::Debug1, skipConsole, logName);
}

void VelorLogManager::logDebug2(const std::string& message, bool skipConsole, const std::string& logName)
{
    logMessage(message, VelorLog::Debug2, skipConsole, logName);
}

VelorLog::Stream VelorLogManager::stream(VelorLog::Level level, bool skipConsole, const std::string& logName)
{
    const std::lock_guard lock(mMutex);
    VelorLog* log = findTarget(logName);
    return {log, log != nullptr ? level : VelorLog::None, skipConsole};
}

void VelorLogManager::setMaxLogLevel(VelorLog::Level level)
{
    const std::lock_guard lock(mMutex);
    if (mDefaultLog != nullptr) {
        mDefaultLog->setMaxLogLevel(level);
    }
}

bool VelorLogManager::setupDefaultLog(const std::string& name, const std::string& directory)
{
    const QString folder = QString::fromStdString(directory);
    if (!QDir().mkpath(folder)) {
        return false;
    }
    QTemporaryFile probe(folder + QStringLiteral("/XXXXXX"));
    if (!probe.open()) {
        QMessageLogger(nullptr, 0, Q_FUNC_INFO).warning() << "Failed to create writable path: " << folder;
        return false;
    }
    getSingleton().createLog(datedLogName(name, QDateTime::currentDateTime()), directory, true);
    mDefaultLogsDirectory = directory;
    deleteOldLogFiles(name, directory);
    return true;
}

void VelorLogManager::deleteOldLogFiles(const std::string& name, const std::string& directory)
{
    const QFileInfoList files = oldLogFiles(name, directory, QDateTime::currentDateTime());
    for (const QFileInfo& file : files) {
        deleteLogFile(file);
    }
}

VelorLog* VelorLogManager::findLog(const std::string& name) const
{
    const auto entry = mLogsByName.find(name);
    return entry != mLogsByName.end() ? entry->second.get() : nullptr;
}

VelorLog* VelorLogManager::findTarget(const std::string& logName) const
{
    return logName.empty() ? mDefaultLog : findLog(logName);
}

void VelorLogManager::eraseLog(std::map<std::string, std::unique_ptr<VelorLog>>::iterator entry)
{
    if (mDefaultLog == entry->second.get()) {
        mDefaultLog = nullptr;
    }
    mLogsByName.erase(entry);
}
