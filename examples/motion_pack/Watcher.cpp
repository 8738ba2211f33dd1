#include "Watcher.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {

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
    , mReadBefore(bytesRead())
    , mIsQuiet(isQuiet)
    , mThread([this](const std::stop_token& stop) { run(stop); })
{}

void Watcher::run(const std::stop_token& stop)
{
    while (!stop.stop_requested()) {
        showProgress();
        if (const int signal = sSignal; signal != 0) {
            QDir(mTemporaryFolder).removeRecursively();
            std::fprintf(stderr, "motion_pack: interrupted by signal %d; nothing was changed\n", signal);
            std::signal(signal, SIG_DFL);
            std::raise(signal); // So that a shell knows the reason.
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    showProgress();
}

/// Each file is read twice. Within one, the library does not report its progress, but the system counts what
/// is read.
void Watcher::showProgress()
{
    static const bool isTerminal = isatty(STDOUT_FILENO) != 0;
    const int step = isTerminal ? 1 : 10; // A terminal shows the last line alone.
    const qint64 done = std::clamp<qint64>((bytesRead() - mReadBefore) / 2, mPacked, mBytesToPack);
    const int percent = mBytesToPack > 0 ? static_cast<int>(100 * done / mBytesToPack) / step * step : 100;
    if (!mIsQuiet && percent > mShownPercent) {
        mShownPercent = percent;
        std::printf("packing: %d %%%c", percent, isTerminal ? '\r' : '\n');
        std::fflush(stdout);
    }
}
