#pragma once

#include "VelorBaseExport.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <exception>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#if defined(None)
#error                                                                                                       \
    "The macro None, such as that of <X11/X.h>, hides VelorLog::None: include VelorLog.h first, or #undef None"
#endif

class LogListener;
class QAnyStringView;
class QByteArray;
class QDebug;

/// The types that convert to `bool` although none is meant: pointers, string literals among them, and
/// enumerations such as a level. Operations of logging with a flag have an overload for these that does not
/// compile, so that `logError("no clip", "render")` is not taken for a message that keeps off the console.
template <typename T>
concept VelorLogNoFlag = std::is_convertible_v<const T&, const volatile void*> || std::is_enum_v<T>;

/// One log channel: a text file, an echo on the process's console and a list of listeners, behind one level
/// threshold.
///
/// A message that passes the threshold goes to the listeners, then to the console, then to the file, and has
/// reached the operating system when logMessage returns. A file line is the local time, the level's prefix
/// and the text; a console line is the same without the time, in the level's colour, and always carries the
/// colour codes:
///
/// | Level               | Prefix         | Console         | Colour |
/// |---------------------|----------------|-----------------|--------|
/// | `Error`             | `[ERROR] - `   | standard output | red    |
/// | `Warning`           | `[WARNING] - ` | standard error  | yellow |
/// | `Info`              | none           | standard error  | none   |
/// | `Debug0`            | `[DBG0] - `    | standard error  | green  |
/// | `Debug1`            | `[DBG1] - `    | standard error  | cyan   |
/// | `Debug2`            | `[DBG2] - `    | standard error  | blue   |
///
/// Logging never fails its caller: a file or console that cannot be written loses its text without notice,
/// and a full disk stops nothing. Only what a listener throws reaches the caller, and only after the
/// message has gone everywhere: see logMessage.
///
/// Threads: any thread may call any operation, and the messages of one log never interleave. One mutex is
/// held for the whole of logMessage, so a listener must not call a locking operation of the log that is
/// notifying it. A log must outlive every Stream aimed at it, and nothing may use it while it is being
/// destroyed.
class VELOR_BASE_EXPORT VelorLog
{
public:
    /// A larger number is a less severe message. Any other number is logged like `Info`, below 2 on standard
    /// output.
    enum Level : std::int32_t
    {
        None = 0,
        Error = 1,
        Warning = 2,
        Info = 3,
        Debug0 = 4,
        Debug1 = 5,
        Debug2 = 6
    };

    /// Collects the text of one message by insertion and delivers it to a log when it is flushed or
    /// destroyed. It belongs to one thread. A moved-from Stream delivers nothing.
    class VELOR_BASE_EXPORT Stream
    {
    public:
        /// `targetLog` is not owned. With a null one, delivery writes a warning to standard error and the
        /// text is lost.
        Stream(VelorLog* targetLog, Level level, bool skipConsole);
        /// Does not compile: what stands in the place of the flag is not a `bool`.
        Stream(VelorLog* targetLog, Level level, const VelorLogNoFlag auto& skipConsole) = delete;
        /// Takes over the target and the text of `other`.
        Stream(Stream&& other) noexcept;
        /// Delivers what this Stream still holds, then takes over `other`.
        Stream& operator=(Stream&& other); // NOLINT(performance-noexcept-move-constructor)
        /// Delivers the text unless it is empty. An exception of a listener is dropped.
        ~Stream();

        /// Appends `value` as a standard output stream formats it, the state set by manipulators included.
        ///
        /// Beyond what such a stream takes, the texts of Qt and of UTF-16 (`QString`, `QStringView`,
        /// `QLatin1StringView`, `u"text"`) are appended as UTF-8 and a `QByteArray` as it is. A value of
        /// another class that has a debug form, such as `QPoint` or `TVec3d`, is appended in that form, for
        /// which the caller includes `<QDebug>`.
        template <typename T>
        Stream& operator<<(const T& value)
        {
            if constexpr (requires { mText << value; } && !std::is_same_v<T, QByteArray>) {
                mText << value;
            } else if constexpr (requires { appendText(value); }) {
                appendText(value);
            } else {
                static_assert(std::is_class_v<T> || std::is_enum_v<T>, "this type has no form as a text");
                appendDebugForm(&insertDebugForm<T>, std::addressof(value));
            }
            return *this;
        }
        /// Applies a manipulator, such as `std::endl` or `std::hex`, to the text.
        /// @{
        Stream& operator<<(std::ostream& (*manipulator)(std::ostream&));
        Stream& operator<<(std::ios_base& (*manipulator)(std::ios_base&));
        /// @}

        /// Delivers the text now, also when it is empty. The Stream is then empty, whatever a listener
        /// throws, and can collect more.
        Stream& flush();

    private:
        /// Needs `<QDebug>` where a value of the type `T` is inserted.
        template <typename T>
        static void insertDebugForm(QDebug& debug, const void* value)
        {
            debug << *static_cast<const T*>(value);
        }

        void appendText(QAnyStringView text);
        void appendText(const QByteArray& text);
        void appendDebugForm(void (*insert)(QDebug&, const void*), const void* value);
        void deliver();

        VelorLog* mTargetLog;
        Level mLevel;
        bool mSkipConsole;
        bool mMovedFrom = false;
        std::ostringstream mText;
    };

    /// Creates the log file at the path `name`, truncating a file that is there. The folder is not created.
    /// If the file does not open, a line on standard error reports it and the log works without it.
    ///
    /// The path is UTF-8, on Windows too. Other bytes are passed to the system unchanged: Linux takes any
    /// bytes for a name, Windows takes them for text of its code page. A crash report on Windows takes the
    /// file along if the code page can express its path.
    explicit VelorLog(const std::string& name);
    /// Closes the file. The listeners are not notified.
    ~VelorLog();
    VelorLog(const VelorLog&) = delete;
    VelorLog& operator=(const VelorLog&) = delete;

    /// Logs `message` if `level` is at most the threshold. `skipConsole` keeps it off the console alone. A
    /// line end is added; line ends inside are written unchanged.
    ///
    /// What a listener throws is thrown to the caller in the end. Until then all goes on as if the listener
    /// had returned: the listeners behind it are called, the message reaches the console and the file, and
    /// the lock is released. If several listeners throw, the first exception is the one that is thrown.
    void logMessage(const std::string& message, Level level = Info, bool skipConsole = false);
    /// Does not compile: what stands in the place of the flag is not a `bool`.
    void logMessage(const std::string& message, Level level, const VelorLogNoFlag auto& skipConsole) = delete;

    /// A Stream aimed at this log: `log.stream(VelorLog::Info) << "read " << n << " files";` is one message.
    Stream stream(Level level = Info, bool skipConsole = false);
    /// Does not compile: what stands in the place of the flag is not a `bool`.
    Stream stream(Level level, const VelorLogNoFlag auto& skipConsole) = delete;

    /// The path of the log file.
    const std::string& getName() const { return mName; }
    /// What the setter of this name has set.
    /// @{
    bool isDebugOutputEnabled() const { return mDebugOutputEnabled; }
    bool isFileOutputSuppressed() const { return mFileOutputSuppressed; }
    bool isTimeStampEnabled() const { return mTimeStampEnabled; }
    /// @}
    /// The threshold: the largest level number that still passes. The same number that setMaxLogLevel sets.
    Level getMinLogLevel() const { return mMaxLogLevel; }

    /// Whether messages are echoed on the console; true at the start.
    void setDebugOutputEnabled(bool enabled);
    /// Whether messages are kept out of the file. Clearing it on a log whose file never opened makes the next
    /// message try again.
    void setFileOutputSuppressedEnabled(bool suppressed);
    /// Whether a file line begins with the local time; true at the start.
    void setTimeStampEnabled(bool enabled);
    /// Sets the threshold; `Debug2` at the start. `setMaxLogLevel(VelorLog::Warning)` lets errors and
    /// warnings pass.
    void setMaxLogLevel(Level level);

    /// Appends `listener` unless it is listed. It is not owned, and must stay valid until it is removed.
    void addListener(LogListener* listener);
    /// Takes `listener` out of the list; one that is not listed is ignored.
    void removeListener(LogListener* listener);

    /// Logs "kind: text (Function: function at line n)" on the default log of VelorLogManager. All four of
    /// these log at the level `Info`, whatever their kind.
    static void _LogMsg(const std::string& kind, const std::string& text, const std::string& function,
                        int line);
    /// _LogMsg of the kind "DEBUG".
    static void _LogDebugMsg(const std::string& text, const std::string& function, int line);
    /// _LogMsg of the kind "ERROR".
    static void _LogErrorMsg(const std::string& text, const std::string& function, int line);
    /// _LogMsg of the kind "DEBUG" with a text formatted as by `printf`, cut to 4095 bytes. Mind the order of
    /// the arguments.
    static void _LogfDebugMsg(const std::string& function, int line, const char* format, ...)
        VELOR_BASE_PRINTF(3, 4);

private:
    bool reopenFile();
    bool notifyListeners(const std::string& text, Level level, bool skipConsole, std::exception_ptr& failure);
    void writeToOutputs(std::string_view prefix, std::string_view text, Level level, bool skipConsole);
    void writeToConsole(std::string_view prefix, std::string_view text, Level level) const;
    void writeToFile(std::string_view prefix, std::string_view text);
    const std::string& timeStamp(std::time_t now);

    std::ofstream mFile;
    // Atomic because their getters take no lock.
    std::atomic<Level> mMaxLogLevel = Debug2;
    std::atomic<bool> mDebugOutputEnabled = true;
    std::atomic<bool> mFileOutputSuppressed = false;
    std::atomic<bool> mTimeStampEnabled = true;
    const std::string mName;
    bool mColoursEnabled = true;
    std::vector<LogListener*> mListeners;
    std::mutex mMutex;
    std::time_t mTimeStampSecond = -1;
    std::string mTimeStamp;
};

/// Observes log channels; see VelorLog::addListener.
class VELOR_BASE_EXPORT LogListener
{
public:
    /// A copy is in no log's list.
    /// @{
    LogListener() = default;
    LogListener(const LogListener&) = default;
    LogListener& operator=(const LogListener&) = default;
    /// @}
    /// Does not take the listener out of any log.
    virtual ~LogListener();

    /// Called for each message that passes a log's threshold, on the thread that logs, under the log's lock.
    /// `message` has the level's prefix and no time; `logName` is the path of the log's file. `skipOutput`
    /// is false for the first listener, and each later one gets the value that the one before it left; if it
    /// is true after the last, the message goes neither to the console nor to the file. A listener had better
    /// not throw: see VelorLog::logMessage.
    virtual void onLogMessage(const std::string& message, VelorLog::Level level, bool skipConsole,
                              const std::string& logName, bool& skipOutput) = 0;
};

/// The process's log channels: owns them, registers them by a short name, keeps one as the default and
/// decides where log files lie and how long they stay.
///
/// An application starts its logging with setupDefaultLog. Without a default log, messages for it are lost
/// with a warning on standard error, and nothing fails.
///
/// Threads: any thread may call any operation. One mutex is held for the whole of an operation, a log's own
/// mutex being taken behind it, so a listener that is called through the manager must not call the manager. A
/// log that was handed out must not be in use when destroyLog deletes it, and setupDefaultLog is to be called
/// before other threads create logs without a directory.
class VELOR_BASE_EXPORT VelorLogManager
{
public:
    /// The one instance, built at the first call. At the end of the process it deletes the logs that it made.
    static VelorLogManager& getSingleton();

    /// The log registered as `name`, made on first demand with the file `directory`/`name`.log. An empty
    /// `directory` is the last one passed to setupDefaultLog, or the user's desktop. The directory is not
    /// created. If a log of that name exists, it is returned and `directory` is ignored. The first log
    /// becomes the default, a later one if `makeDefault` is true. Two threads that create one name get one
    /// log. Owned by the manager.
    VelorLog* createLog(const std::string& name, std::string directory = {}, bool makeDefault = false);

    /// The log registered as `name`, or null.
    VelorLog* getLog(const std::string& name);

    /// The log of messages without a log name, or null.
    VelorLog* getDefaultLog();
    /// Makes `log`, which may be null or not the manager's own, the default and returns the former one. The
    /// manager deletes no log for having been the default.
    VelorLog* setDefaultLog(VelorLog* log);

    /// Deletes the log registered as `name`, if any. If it was the default, there is no default any more.
    void destroyLog(const std::string& name);
    /// Deletes `log` if this manager owns it; the default as above.
    void destroyLog(VelorLog* log);

    /// Logs on the log registered as `logName`, silently on none if the name is unknown; with an empty name
    /// on the default log.
    void logMessage(const std::string& message, VelorLog::Level level = VelorLog::Info,
                    bool skipConsole = false, const std::string& logName = {});
    /// `logMessage` at the level of this name.
    /// @{
    void logError(const std::string& message, bool skipConsole = false, const std::string& logName = {});
    void logWarning(const std::string& message, bool skipConsole = false, const std::string& logName = {});
    void logDebug0(const std::string& message, bool skipConsole = false, const std::string& logName = {});
    void logDebug1(const std::string& message, bool skipConsole = false, const std::string& logName = {});
    void logDebug2(const std::string& message, bool skipConsole = false, const std::string& logName = {});
    /// @}

    /// Does not compile: what stands in the place of `skipConsole` is not a `bool`. The name of a log comes
    /// behind it: `logError("no clip", false, "render")`.
    /// @{
    void logMessage(const std::string& message, VelorLog::Level level, const VelorLogNoFlag auto& skipConsole,
                    const std::string& logName = {}) = delete;
    void logError(const std::string& message, const VelorLogNoFlag auto& skipConsole,
                  const std::string& logName = {}) = delete;
    void logWarning(const std::string& message, const VelorLogNoFlag auto& skipConsole,
                    const std::string& logName = {}) = delete;
    void logDebug0(const std::string& message, const VelorLogNoFlag auto& skipConsole,
                   const std::string& logName = {}) = delete;
    void logDebug1(const std::string& message, const VelorLogNoFlag auto& skipConsole,
                   const std::string& logName = {}) = delete;
    void logDebug2(const std::string& message, const VelorLogNoFlag auto& skipConsole,
                   const std::string& logName = {}) = delete;
    VelorLog::Stream stream(VelorLog::Level level, const VelorLogNoFlag auto& skipConsole,
                            const std::string& logName = {}) = delete;
    /// @}

    /// A Stream aimed at the log that logMessage would choose, or at none. It delivers without the manager's
    /// lock.
    VelorLog::Stream stream(VelorLog::Level level = VelorLog::Info, bool skipConsole = false,
                            const std::string& logName = {});

    /// Sets the threshold of the default log alone.
    void setMaxLogLevel(VelorLog::Level level);

    /// Starts an application's logging: makes `directory` with its parents, creates in it the default log
    /// "name_yyyy-MM-dd_hh-mm-ss.log" of the present local time, and deletes the old logs of `name` there.
    /// False if the directory cannot be made or written; nothing has changed then. `directory` is UTF-8. Two
    /// processes that start in one second with the same arguments write to one file, which the later empties.
    [[nodiscard]] static bool setupDefaultLog(const std::string& name, const std::string& directory);

    /// Deletes from `directory` the log files of `name` whose time stamp is a day old or older, and reports
    /// each on the default log. Those are the files whose name ends with ".log", in capitals too, and is
    /// "name_yyyy-MM-dd_hh-mm-ss" up to its first dot, so that "name_2026-01-31_14-03-27.backup.log" is one
    /// of them. No other file is touched. A `name` with a dot in it matches no file.
    static void deleteOldLogFiles(const std::string& name, const std::string& directory);

private:
    VelorLogManager() = default;
    ~VelorLogManager();
    VelorLogManager(const VelorLogManager&) = delete;
    VelorLogManager& operator=(const VelorLogManager&) = delete;

    VelorLog* findLog(const std::string& name) const;
    VelorLog* findTarget(const std::string& logName) const;
    void eraseLog(std::map<std::string, std::unique_ptr<VelorLog>>::iterator entry);

    static std::string mDefaultLogsDirectory;

    std::map<std::string, std::unique_ptr<VelorLog>> mLogsByName;
    VelorLog* mDefaultLog = nullptr;
    std::mutex mMutex;
};
