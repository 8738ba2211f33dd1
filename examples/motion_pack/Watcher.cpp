#include "Watcher.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <unistd.h>

namespace {

constexpr auto Interval = std::chrono::milliseconds(100);
constexpr qint64 BarWidth = 50;
constexpr qint64 LineStep = 10;

std::atomic<int> sSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free); // A signal handler must not wait.

/// What was ignored stays so: by nohup, or for a command in the background.
void catchUnlessIgnored(int signal)
{
    if (std::signal(signal, SIG_IGN) != SIG_IGN) {
        std::signal(signal, [](int number) { sSignal = number; });
    }
}

/// The bytes that this process has read from all its files; 0 where the system is not Linux.
qint64 bytesRead()
{
    QFile counters(QStringLiteral("/proc/self/io"));
    constexpr qsizetype LabelLength = sizeof("rchar:") - 1;
    return counters.open(QIODevice::ReadOnly) ? counters.readLine().mid(LabelLength).toLongLong() : 0;
}

} // namespace

void Watcher::catchSignals()
{
    catchUnlessIgnored(SIGINT);
    catchUnlessIgnored(SIGTERM);
#if !defined(_WIN32) // It has no others.
    catchUnlessIgnored(SIGHUP);
    catchUnlessIgnored(SIGQUIT);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
#endif
}

Watcher::Watcher(const QString& temporaryFolder, qint64 bytesToPack, bool isQuiet)
    : mTemporaryFolder(temporaryFolder)
    , mBytesToPack(bytesToPack)
    , mIsQuiet(isQuiet)
    , mIsTerminal(isatty(STDOUT_FILENO) != 0)
    , mThread([this] { run(); })
{}

void Watcher::setProgress(qint64 packed, qint64 nextSize)
{
    mFileStart = packed;
    mFileEnd = packed + nextSize;
}

void Watcher::stop()
{
    if (mThread.joinable()) {
        mStop.set_value();
        mThread.join();
    }
}

void Watcher::run()
{
    const std::future<void> stop = mStop.get_future();
    do {
        endIfInterrupted();
        showProgress();
    } while (stop.wait_for(Interval) == std::future_status::timeout);
    showProgress();
    endLine();
}

void Watcher::endIfInterrupted() const
{
    const int signal = sSignal;
    if (signal != 0) {
        QDir(mTemporaryFolder).removeRecursively();
        endLine();
        std::fprintf(stderr, "motion_pack: interrupted by signal %d; nothing was changed\n", signal);
        std::signal(signal, SIG_DFL);
        std::raise(signal); // So that a shell knows the reason.
    }
}

/// Within a file, the library does not report its progress, but the system counts what is read.
qint64 Watcher::packedBytes()
{
    const qint64 start = mFileStart;
    const qint64 end = mFileEnd;
    const qint64 read = bytesRead();
    if (end != mKnownEnd) {
        mKnownEnd = end;
        mReadBefore = read;
    }
    return std::min(start + read - mReadBefore, end);
}

void Watcher::showProgress()
{
    const qint64 step = mIsTerminal ? 1 : LineStep;
    const qint64 percent = mBytesToPack > 0 ? 100 * packedBytes() / mBytesToPack / step * step : 100;
    if (mIsQuiet || percent <= mShownPercent) {
        return;
    }
    mShownPercent = percent;
    if (mIsTerminal) {
        const QString bar = QString(BarWidth * percent / 100, u'#').leftJustified(BarWidth, u'.');
        std::printf("\rpacking [%s] %3d %%", qPrintable(bar), static_cast<int>(percent));
    } else {
        std::printf("packing: %d %%\n", static_cast<int>(percent));
    }
    std::fflush(stdout);
}

void Watcher::endLine() const
{
    if (mIsTerminal && mShownPercent > 0) {
        std::printf("\n");
        std::fflush(stdout);
    }
}
