#pragma once

#include "VelorBaseExport.h"

#include <array>
#include <bit>
#include <cstdint>
#include <memory>

/// \file
/// The lowest layer of the streams: anything that can be read, written and positioned, a device that forwards
/// to it, and the file on disk.
///
/// Nothing here throws, logs or locks. A source and all that read through it are one object for threads: one
/// thread at a time. Sizes and positions are bytes from the start.

/// Bytes with one position for reading and writing. Derive from it to let streams, typed values and digests
/// work on data of your own. Who makes a source keeps it alive and deletes it.
class VELOR_BASE_TYPE KelbIOSource
{
public:
    virtual ~KelbIOSource() = default;

    /// Reads up to `count` bytes, moves the position, and returns how many were read: never more than
    /// `count`, 0 at the end. A source that returns 0 makes `eof` or `hasError` true: readers wait for one of
    /// them.
    virtual std::uint64_t read(void* buffer, std::uint64_t count) = 0;
    /// Writes `count` bytes, moves the position, and returns how many were written: fewer on a failure.
    virtual std::uint64_t write(const void* buffer, std::uint64_t count) = 0;
    /// The whole length. The position stays.
    virtual std::uint64_t size() = 0;
    /// The position.
    virtual std::uint64_t tell() = 0;
    /// Moves to the start.
    virtual void rewind() = 0;
    /// Moves the position by `offset`, backward where that is negative.
    virtual void skip(std::int64_t offset) = 0;
    /// Moves to `position`.
    virtual void seek(std::uint64_t position) = 0;
    /// Moves behind the last byte.
    virtual void seekToEnd() = 0;
    /// Whether the end has been reached.
    virtual bool eof() = 0;
    /// Sets the length, where the source can do so; by default nothing happens.
    virtual void resize([[maybe_unused]] std::uint64_t size) {}
    /// Whether an operation has failed for another reason than the end.
    virtual bool hasError() = 0;
};

/// A source that forwards to another one, the base of devices that add typed values.
///
/// It holds only a pointer: it never deletes or closes the other source, and copies of a device share its
/// position. `resize` is not forwarded, so that no device changes the length of what lies below.
class VELOR_BASE_TYPE KelbIODevice : public KelbIOSource
{
public:
    /// `source` must not be null and outlives the device.
    explicit KelbIODevice(KelbIOSource* source)
        : mSource(source)
    {}

    /// As the source below.
    /// @{
    std::uint64_t read(void* buffer, std::uint64_t count) override { return mSource->read(buffer, count); }
    std::uint64_t write(const void* buffer, std::uint64_t count) override
    {
        return mSource->write(buffer, count);
    }
    std::uint64_t size() override { return mSource->size(); }
    std::uint64_t tell() override { return mSource->tell(); }
    void rewind() override { mSource->rewind(); }
    void skip(std::int64_t offset) override { mSource->skip(offset); }
    void seek(std::uint64_t position) override { mSource->seek(position); }
    void seekToEnd() override { mSource->seekToEnd(); }
    bool eof() override { return mSource->eof(); }
    bool hasError() override { return mSource->hasError(); }
    /// @}

    /// The next byte; 0 at the end of the data.
    std::uint8_t readByte()
    {
        std::uint8_t byte = 0;
        mSource->read(&byte, sizeof byte);
        return byte;
    }

    /// The next IEEE 754 binary32 in little-endian order. Bytes that are missing at the end count as 0, the
    /// high end of the value first.
    float readFloat()
    {
        std::array<std::uint8_t, sizeof(float)> bytes{};
        mSource->read(bytes.data(), bytes.size());
        return std::bit_cast<float>(std::uint32_t(bytes[0]) | std::uint32_t(bytes[1]) << 8U |
                                    std::uint32_t(bytes[2]) << 16U | std::uint32_t(bytes[3]) << 24U);
    }

    /// Writes `*value` as `readFloat` reads it, and returns whether all four bytes were written.
    bool writeFloat(const float* value)
    {
        const auto bits = std::bit_cast<std::uint32_t>(*value);
        const std::array<std::uint8_t, sizeof bits> bytes{std::uint8_t(bits), std::uint8_t(bits >> 8U),
                                                          std::uint8_t(bits >> 16U),
                                                          std::uint8_t(bits >> 24U)};
        return mSource->write(bytes.data(), bytes.size()) == bytes.size();
    }

protected:
    /// The source below, never null.
    KelbIOSource* mSource;
};

/// The library's own file on disk, which a program cannot link: take a KelbDeviceSource over a `QFile`.
///
/// It is read and written through a buffered C stream. Long paths and every letter of UTF-8 work,
/// and so do files beyond 4 GiB.
///
/// The object owns its stream and closes it in the destructor. It is open or closed: it starts in either
/// state, and nothing but a new object opens a file that was closed. On a closed file `read`, `write`, `size`
/// and `tell` return 0, `eof` is true, and the rest does nothing. It cannot be copied.
class VELOR_BASE_TYPE KelbFile : public KelbIOSource
{
public:
    /// How a file is opened, always without any translation of line ends. Any other value opens for reading.
    enum Mode : std::uint32_t
    {
        ModeRead = 1,
        /// Empties the file, or creates it.
        ModeWrite = 2,
        /// Keeps the content, or creates the file. Reads and writes may follow each other in any order.
        ModeReadWrite = 3,
    };

    /// Opens the file at `path`, which is zero-terminated UTF-8. Ask `isOpen` whether it worked.
    VELOR_BASE_PRIVATE KelbFile(const char* path, std::uint32_t mode);
    VELOR_BASE_PRIVATE ~KelbFile() override;
    KelbFile(const KelbFile&) = delete;
    KelbFile& operator=(const KelbFile&) = delete;

    /// Whether there is a file to read and write.
    VELOR_BASE_PRIVATE bool isOpen() const;
    /// Writes out what is buffered and closes the file. `hasError` is true from then on if that failed.
    VELOR_BASE_PRIVATE void close();

    VELOR_BASE_PRIVATE std::uint64_t read(void* buffer, std::uint64_t count) override;
    VELOR_BASE_PRIVATE std::uint64_t write(const void* buffer, std::uint64_t count) override;
    /// 0 where the system does not know it, as for a pipe. Clears `eof`.
    VELOR_BASE_PRIVATE std::uint64_t size() override;
    /// The position.
    VELOR_BASE_PRIVATE std::uint64_t tell() override;
    /// This and the other moves clear `eof`. A move in front of the start, or to a position that no file can
    /// have, leaves the position.
    VELOR_BASE_PRIVATE void rewind() override;
    VELOR_BASE_PRIVATE void skip(std::int64_t offset) override;
    /// As `rewind`.
    VELOR_BASE_PRIVATE void seek(std::uint64_t position) override;
    /// Moves behind the last byte.
    VELOR_BASE_PRIVATE void seekToEnd() override;
    /// Whether a read has come back short. Reading exactly the last byte does not make it true.
    VELOR_BASE_PRIVATE bool eof() override;
    /// Cuts the file, or lets it grow by zeros; the position is 0 afterwards. The file is closed and opened
    /// again by its path to do so: a relative path must still lead to it. `ModeWrite` does not empty it then,
    /// and `ModeReadWrite` creates one that has vanished or cannot be read any more. If the length cannot be
    /// set, the file keeps the one it has; if the file cannot be opened again, it stays closed.
    VELOR_BASE_PRIVATE void resize(std::uint64_t size) override;
    /// Whether a read or write has failed, or the last closing, that of `resize` included.
    VELOR_BASE_PRIVATE bool hasError() override;

private:
    struct Record;
    std::unique_ptr<Record> mRecord;
};
