#include "PackLog.h"

#include "Failure.h"

#include <QtCore/QProcess>

#include <string>
#include <vector>

namespace {

constexpr const char* Prefix = "motion_pack";

/// Keeps messages for later.
class Collector : public LogListener
{
public:
    void onLogMessage(const std::string& message, VelorLog::Level, bool, const std::string&, bool&) override
    {
        messages.push_back(message);
    }

    std::vector<std::string> messages;
};

/// setupDefaultLog would do the same, and report on the console. Returns the reports.
std::vector<std::string> deleteOldLogs(const std::string& folder)
{
    VelorLog silent(QProcess::nullDevice().toStdString());
    silent.setDebugOutputEnabled(false);
    Collector collector;
    silent.addListener(&collector);
    VelorLog* const former = VelorLogManager::getSingleton().setDefaultLog(&silent);
    VelorLogManager::deleteOldLogFiles(Prefix, folder);
    VelorLogManager::getSingleton().setDefaultLog(former);
    return collector.messages;
}

void logQtMessage(QtMsgType, const QMessageLogContext&, const QString& text) { log(VelorLog::Debug0, text); }

} // namespace

QString startLog(const QString& folder)
{
    const std::vector<std::string> reports = deleteOldLogs(folder.toStdString());
    if (!VelorLogManager::setupDefaultLog(Prefix, folder.toStdString())) {
        throw Failure(QStringLiteral("no log can be written in %1").arg(quoted(folder)));
    }
    for (const std::string& report : reports) {
        log(VelorLog::Info, QString::fromStdString(report));
    }
    return QString::fromStdString(VelorLogManager::getSingleton().getDefaultLog()->getName());
}

void log(VelorLog::Level level, const QString& text)
{
    if (VelorLogManager::getSingleton().getDefaultLog() != nullptr) {
        VelorLogManager::getSingleton().stream(level, true) << text.toStdString();
    }
}

void logQtMessages() { qInstallMessageHandler(logQtMessage); }
