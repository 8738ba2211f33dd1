#include "VelorLog.h"
#include "VelorLogFiles.h"

#include <QtCore/QDateTime>
#include <QtCore/QDebug>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryFile>

#include <algorithm>
#include <iostream>
#include <utility>

namespace {

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
                                    [&](const auto& named) { return named.second.get() == log; });
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
        std::cerr << "Warning: not logger found\n" << std::flush;
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
