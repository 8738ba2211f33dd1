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

    /// A file of this size is hashed and packed.
    void filePacked(qint64 size) { mPacked += size; }

private:
    void run(const std::stop_token& stop);
    void showProgress();

    const QString mTemporaryFolder;
    const qint64 mBytesToPack;
    const qint64 mReadBefore;
    const bool mIsQuiet;
    int mShownPercent = 0;
    std::atomic<qint64> mPacked = 0;
    std::jthread mThread; ///< Last, since it uses the others.
};
