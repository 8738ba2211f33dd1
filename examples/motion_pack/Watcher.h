#pragma once

#include <QtCore/QString>

#include <atomic>
#include <thread>

/// A thread beside the packing: it shows the progress and ends the program at a signal, both also within one
/// large file. When it is destroyed, signals are ignored.
class Watcher
{
public:
    /// From now on SIGINT, SIGTERM, SIGHUP and SIGQUIT wait for a Watcher, and a broken pipe or a file above
    /// the size limit is an error of the write.
    static void catchSignals();

    /// At a signal, `temporaryFolder` is deleted.
    Watcher(const QString& temporaryFolder, qint64 bytesToPack, bool isQuiet);

    /// The files before are packed. The next one is read twice: only the second time counts as progress.
    void startFile(qint64 size);

private:
    void run(const std::stop_token& stop);
    void showProgress();

    const QString mTemporaryFolder;
    const qint64 mBytesToPack;
    const qint64 mReadBefore;
    const bool mIsQuiet;
    int mShownPercent = 0;
    std::atomic<qint64> mPacked = 0;
    std::atomic<qint64> mHashed = 0;
    std::jthread mThread; ///< Last, since it uses the others.
};
