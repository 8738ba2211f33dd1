#include "VelorLog.h"

#include <QtCore/QAnyStringView>
#include <QtCore/QByteArray>
#include <QtCore/QDebug>

#include <iostream>
#include <utility>

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
        std::cerr << "Warning: Log is null!\n" << std::flush;
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
