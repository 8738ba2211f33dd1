#pragma once

#include <QtCore/QFileInfo>
#include <QtCore/QString>

#include <ctime>
#include <locale>
#include <string>

class QDateTime;

/// \file
/// What VelorLog and VelorLogManager derive from the time of day: file names, the age of files and the time
/// in front of a line. The time is an argument everywhere. All names are UTF-8.

/// The end of the name of a log file.
inline constexpr QLatin1StringView LogFileSuffix(".log");

/// The short name of the log that `name` starts at the local time `start`: "name_yyyy-MM-dd_hh-mm-ss".
std::string datedLogName(const std::string& name, const QDateTime& start);

/// The files that VelorLogManager::deleteOldLogFiles deletes at the local time `now`.
QFileInfoList oldLogFiles(const std::string& name, const std::string& directory, const QDateTime& now);

/// The local time of `now` as "hh:mm:ss - ", by the rules of `locale`.
std::string timeStampOf(std::time_t now, const std::locale& locale);
