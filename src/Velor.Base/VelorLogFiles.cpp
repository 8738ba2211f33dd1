#include "VelorLogFiles.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QRegularExpression>

#include <iomanip>
#include <sstream>

namespace {

constexpr qint64 RetentionSeconds = 86400;
constexpr QLatin1StringView TimeStampFormat("yyyy-MM-dd_hh-mm-ss");

/// The form of the base names of the log files of `prefix`. It is not anchored at the beginning of the name.
QRegularExpression logFileForm(const QString& prefix)
{
    return QRegularExpression(QStringLiteral("%1_(\\d{4})-(\\d{2})-(\\d{2})_(\\d{2})-(\\d{2})-(\\d{2})$")
                                  .arg(QRegularExpression::escape(prefix)));
}

/// The moment that follows a prefix of `prefixSize` and its underscore; invalid for a name of another form.
QDateTime logFileTime(const QFileInfo& file, const QRegularExpression& form, qsizetype prefixSize)
{
    const QString baseName = file.baseName();
    if (!form.match(baseName).hasMatch()) {
        return {};
    }
    return QDateTime::fromString(baseName.mid(prefixSize + 1), TimeStampFormat);
}

} // namespace

std::string datedLogName(const std::string& name, const QDateTime& start)
{
    return QStringLiteral("%1_%2")
        .arg(QString::fromStdString(name), start.toString(TimeStampFormat))
        .toStdString();
}

QFileInfoList oldLogFiles(const std::string& name, const std::string& directory, const QDateTime& now)
{
    const QString prefix = QString::fromStdString(name);
    const QDir folder(QString::fromStdString(directory));
    const QStringList filter{QStringLiteral("*%1").arg(LogFileSuffix)};
    const QRegularExpression form = logFileForm(prefix);
    QFileInfoList files = folder.entryInfoList(filter, QDir::Files, QDir::NoSort);
    files.removeIf([&](const QFileInfo& file) {
        const QDateTime time = logFileTime(file, form, prefix.size());
        return !time.isValid() || time.secsTo(now) < RetentionSeconds;
    });
    return files;
}

std::string timeStampOf(std::time_t now, const std::locale& locale)
{
    const QTime local = QDateTime::fromSecsSinceEpoch(now).time();
    std::tm clock = {};
    clock.tm_hour = local.hour();
    clock.tm_min = local.minute();
    clock.tm_sec = local.second();
    std::ostringstream formatted;
    formatted.imbue(locale);
    formatted << std::put_time(&clock, "%H:%M:%S - ");
    return formatted.str();
}
