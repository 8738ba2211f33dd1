#pragma once

#include <Velor.Base/VelorLog.h>

#include <QtCore/QString>

/// \file
/// The program's log. Nothing of it goes to the console: standard error has the program's one line alone.

/// Creates the log file in `folder`, deletes those of earlier days and returns its path. Raises Failure if
/// that is not possible.
QString startLog(const QString& folder);

/// Does nothing before startLog.
void log(VelorLog::Level level, const QString& text);

/// From now on, Qt's own messages go to the log.
void logQtMessages();
