#include "LogPane.h"

namespace {

constexpr int KeptLines = 1000;

QColor colourOf(VelorLog::Level level, const QPalette& palette)
{
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    switch (level) {
    case VelorLog::Error:
        return isDark ? QColor(0xFF8A80) : QColor(0xB3261E);
    case VelorLog::Warning:
        return isDark ? QColor(0xFFD180) : QColor(0x8A5200);
    default:
        return palette.color(QPalette::Text);
    }
}

} // namespace

LogPane::LogPane(VelorLog* log, QWidget* parent)
    : QPlainTextEdit(parent)
    , mLog(log)
{
    setReadOnly(true);
    setTabChangesFocus(true);
    setMaximumBlockCount(KeptLines);
    setLineWrapMode(NoWrap);
    connect(this, &LogPane::logged, this, &LogPane::append, Qt::QueuedConnection);
    mLog->addListener(this);
}

LogPane::~LogPane() { mLog->removeListener(this); }

void LogPane::onLogMessage(const std::string& message, VelorLog::Level level, bool, const std::string&, bool&)
{
    if (level < VelorLog::Debug0) {
        Q_EMIT logged(QString::fromStdString(message), level);
    }
}

void LogPane::append(const QString& message, VelorLog::Level level)
{
    QTextCharFormat format = currentCharFormat();
    format.setForeground(colourOf(level, palette()));
    setCurrentCharFormat(format);
    appendPlainText(message);
}
