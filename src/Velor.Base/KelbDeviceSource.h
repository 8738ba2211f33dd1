#pragma once

#include "KelbIOSource.h"
#include "VelorBaseExport.h"

#include <QtCore/QIODevice>

#include <algorithm>
#include <cstdint>
#include <limits>

/// A source over a device of Qt that can seek, such as a `QFile`, a `QBuffer` or a `QTemporaryFile`.
///
/// It holds only a pointer: whoever made the device opens it, without `QIODevice::Text`, keeps it alive and
/// closes it. Both share one position. What a `QFile` still buffers may fail to reach the disk: look at the
/// result of `QFile::flush` after the last write.
///
/// A device that cannot seek, such as a pipe or a network socket, makes `hasError` true from the start, and
/// one that is not open, or not for that direction, at the first read or write; Qt writes a warning then.
/// `resize` does nothing: the device has an operation of its own for that. It cannot be copied.
class VELOR_BASE_TYPE KelbDeviceSource : public KelbIOSource
{
public:
    /// `device` must not be null and outlives the source.
    explicit KelbDeviceSource(QIODevice* device)
        : mDevice(device)
        , mHasError(device->isSequential())
    {}
    KelbDeviceSource(const KelbDeviceSource&) = delete;
    KelbDeviceSource& operator=(const KelbDeviceSource&) = delete;

    std::uint64_t read(void* buffer, std::uint64_t count) override
    {
        const qint64 bytesRead = mDevice->read(static_cast<char*>(buffer), deviceCount(count));
        mIsAtEnd = count == 0 ? mIsAtEnd : bytesRead >= 0 && std::uint64_t(bytesRead) < count;
        return checkedCount(bytesRead);
    }
    std::uint64_t write(const void* buffer, std::uint64_t count) override
    {
        return checkedCount(mDevice->write(static_cast<const char*>(buffer), deviceCount(count)));
    }
    std::uint64_t size() override { return std::uint64_t(mDevice->size()); }
    std::uint64_t tell() override { return std::uint64_t(mDevice->pos()); }
    /// This and the other moves clear `eof`. A move in front of the start, or to a position that no device
    /// can have, leaves the position; one that the device refuses makes `hasError` true as well.
    void rewind() override { moveTo(0); }
    void skip(std::int64_t offset) override
    {
        mIsAtEnd = false;
        if (offset <= MaxPosition - mDevice->pos()) {
            moveTo(mDevice->pos() + offset);
        }
    }
    /// As `rewind`.
    void seek(std::uint64_t position) override
    {
        mIsAtEnd = false;
        if (position <= std::uint64_t(MaxPosition)) {
            moveTo(qint64(position));
        }
    }
    void seekToEnd() override { moveTo(mDevice->size()); }
    /// Whether the last read has come back short. Reading exactly the last byte does not make it true.
    bool eof() override { return mIsAtEnd; }
    /// Whether the device has failed to read, to write or to move.
    bool hasError() override { return mHasError; }

private:
    static constexpr qint64 MaxPosition = (std::numeric_limits<qint64>::max)();

    static qint64 deviceCount(std::uint64_t count)
    {
        return qint64((std::min)(count, std::uint64_t(MaxPosition)));
    }

    std::uint64_t checkedCount(qint64 count)
    {
        mHasError = mHasError || count < 0;
        return count < 0 ? 0 : std::uint64_t(count);
    }

    void moveTo(qint64 position)
    {
        mIsAtEnd = false;
        if (position >= 0 && !mDevice->seek(position)) {
            mHasError = true;
        }
    }

    QIODevice* mDevice;
    bool mHasError;
    bool mIsAtEnd = false;
};
