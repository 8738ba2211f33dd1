#pragma once

#include <QtCore/QString>

#include <atomic>
#include <future>
#include <thread>

/// A thread beside the packing: it shows the progress and ends the program at a signal, both also within one
/// large file.
class Watcher
{
public:
    /// From now on SIGINT, SIGTERM, SIGHUP and SIGQUIT wait for a Watcher, and a broken pipe or a file above
    /// the size limit is an error of the write.
    static void catchSignals();

    /// At a signal, `temporaryFolder` is deleted.
    Watcher(const QString& temporaryFolder, qint64 bytesToPack, bool isQuiet);
    ~Watcher() { stop(); }

    /// So many bytes are packed, and a file of `nextSize` bytes comes next.
    void setProgress(qint64 packed, qint64 nextSize);

    /// From now on, signals are ignored.
    void stop();

private:
    void run();
    void endIfInterrupted() const;
    qint64 packedBytes();
    void showProgress();
    void endLine() const;

    const QString mTemporaryFolder;
    const qint64 mBytesToPack;
    const bool mIsQuiet;
    const bool mIsTerminal;
    std::atomic<qint64> mFileStart = 0; ///< within the bytes to pack
    std::atomic<qint64> mFileEnd = 0;
    std::promise<void> mStop;

    // The thread's own:
    qint64 mKnownEnd = -1;
    qint64 mReadBefore = 0;
    qint64 mShownPercent = 0;

    std::thread mThread; ///< last, since it uses the others
};
