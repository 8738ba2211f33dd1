#pragma once

#include <Velor.Base/VelorLog.h>

#include <QtWidgets/QPlainTextEdit>

/// Shows the messages of a log that are meant for the user, as they are logged, the latest at the bottom.
class LogPane : public QPlainTextEdit, private LogListener
{
    Q_OBJECT

public:
    /// `log` must outlive the pane.
    explicit LogPane(VelorLog* log, QWidget* parent = nullptr);
    ~LogPane() override;

Q_SIGNALS:
    /// Emitted on the thread that logs.
    void logged(const QString& message, VelorLog::Level level);

private:
    /// Called on the thread that logs, under the log's lock: the queued signal takes the message over to the
    /// thread of the GUI.
    void onLogMessage(const std::string& message, VelorLog::Level level, bool skipConsole,
                      const std::string& logName, bool& skipOutput) override;
    void append(const QString& message, VelorLog::Level level);

    VelorLog* mLog;
};
