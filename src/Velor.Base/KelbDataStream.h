#pragma once

#include "KelbIOSource.h"
#include "VelorBaseExport.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

/// \file
/// Streams with text operations: delimited reads, lines, and everything at once.
///
/// Nothing here throws, logs or locks; failures show as short counts. A stream and its source are one object
/// for threads: one thread at a time.

namespace KelbBase {

/// A stream of bytes with access flags, and text operations that work over any raw operations.
///
/// To scan text, a stream reads up to 127 bytes ahead and goes back by `skip`, so its raw operations must be
/// able to go back. A byte 0 ends the text of a chunk, as documented at the single operations. The functions
/// are inline because only a class derived from this one can be linked.
class VELOR_BASE_TYPE IDataStream
{
public:
    /// An access flag, alone or combined with the other by `|`.
    /// @{
    static constexpr std::uint16_t AccessRead = 1;
    static constexpr std::uint16_t AccessWrite = 2;
    /// @}

    /// The access flags. Nothing here obeys them: they are information for the caller.
    /// @{
    virtual bool canRead() { return (mAccess & AccessRead) != 0; }
    virtual bool canWrite() { return (mAccess & AccessWrite) != 0; }
    /// @}
    virtual ~IDataStream() = default;

    /// Reads up to `count` bytes and returns how many were read: never more than `count`, 0 at the end.
    virtual std::uint64_t read(void* buffer, std::uint64_t count) = 0;
    /// Writes `count` bytes and returns how many were written; a stream that cannot write returns 0.
    virtual std::uint64_t write([[maybe_unused]] const void* buffer, [[maybe_unused]] std::uint64_t count)
    {
        return 0;
    }

    /// Reads up to the first byte that is in `delimiters` and returns the length of the text before it. The
    /// delimiter is consumed and not stored. The text ends likewise at a byte 0, and after `maxCount` bytes,
    /// where nothing more is consumed.
    ///
    /// `buffer` takes the text and a byte 0 behind it: it has room for `maxCount` + 1 bytes, or is null. If
    /// the line feed is one of `delimiters`, a carriage return in front of the delimiter that was found is
    /// dropped; with a null `buffer` it is counted all the same.
    VELOR_BASE_PRIVATE virtual std::uint64_t readDelimited(void* buffer, std::uint64_t maxCount,
                                                           const std::string& delimiters);
    /// Reads up to the next line feed, which is consumed, and drops it and a carriage return in front of it.
    /// `trim` takes the white space of ASCII from both ends. A line without a line feed ends with the data;
    /// an empty result is an empty line or the end, which `eof` distinguishes. What follows a byte 0 in the
    /// 127 bytes that are read at a time is lost, and a line feed there is not seen.
    VELOR_BASE_PRIVATE virtual std::string readLine(bool trim);
    /// Everything from the start to the end, wherever the position stood. It ends at the end of the stream or
    /// at a read that returns 0.
    VELOR_BASE_PRIVATE virtual std::string readAll();
    /// Moves behind the next byte that is in `delimiters`, or a byte 0, and returns how many bytes that took,
    /// the delimiter included; without one, behind the end.
    VELOR_BASE_PRIVATE virtual std::uint64_t skipDelimited(const std::string& delimiters);

    /// Moves the position by `offset`, backward where that is negative.
    virtual void skip(std::int32_t offset) = 0;
    /// Moves to `position`, in bytes from the start.
    virtual void seek(std::uint64_t position) = 0;
    /// The position, in bytes from the start.
    virtual std::uint64_t tell() const = 0;
    /// Whether the end has been reached.
    virtual bool eof() const = 0;
    /// Ends the use of what lies below.
    virtual void close() = 0;

protected:
    /// `access` is a set of the access flags.
    explicit IDataStream(std::uint16_t access)
        : mAccess(access)
    {}
    /// Copies name, size and flags.
    /// @{
    IDataStream(const IDataStream&) = default;
    IDataStream& operator=(const IDataStream&) = default;
    /// @}

    /// A name for the stream, for whoever derives from it.
    std::string mName;
    /// The length in bytes where it is known, else 0. `readAll` reads in chunks of it.
    std::uint64_t mSize = 0;
    /// The access flags.
    std::uint16_t mAccess;

private:
    /// The bytes that scanning reads at a time; one more for the byte 0 behind them.
    VELOR_BASE_PRIVATE static constexpr std::uint64_t ScratchSize = 127;
    static constexpr std::uint64_t DefaultChunk = 4096;

    using Scratch = char[ScratchSize + 1];

    std::uint64_t readScratch(Scratch& scratch, std::uint64_t count)
    {
        const std::uint64_t bytesRead = read(scratch, count);
        scratch[bytesRead] = 0;
        return bytesRead;
    }

    /// Of the last `bytesRead` bytes, `used` have been taken, and the delimiter behind them.
    void moveBehindDelimiter(std::uint64_t used, std::uint64_t bytesRead)
    {
        skip(static_cast<std::int32_t>(used) + 1 - static_cast<std::int32_t>(bytesRead));
    }
};

inline std::uint64_t IDataStream::readDelimited(void* buffer, std::uint64_t maxCount,
                                                const std::string& delimiters)
{
    auto* text = static_cast<char*>(buffer);
    const bool endsLines = delimiters.find('\n') != std::string::npos;
    Scratch scratch;
    std::uint64_t total = 0;
    while (total < maxCount) {
        const std::uint64_t bytesRead = readScratch(scratch, (std::min)(maxCount - total, ScratchSize));
        if (bytesRead == 0) {
            break;
        }
        const std::uint64_t length = std::strcspn(scratch, delimiters.c_str());
        if (text != nullptr) {
            std::memcpy(text + total, scratch, length);
        }
        total += length;
        if (length < bytesRead) {
            moveBehindDelimiter(length, bytesRead);
            if (text != nullptr && endsLines && total != 0 && text[total - 1] == '\r') {
                --total;
            }
            break;
        }
    }
    if (text != nullptr) {
        text[total] = 0;
    }
    return total;
}

inline std::string IDataStream::readLine(bool trim)
{
    std::string line;
    Scratch scratch;
    while (const std::uint64_t bytesRead = readScratch(scratch, ScratchSize)) {
        char* lineFeed = std::strchr(scratch, '\n');
        if (lineFeed == nullptr) {
            line += scratch;
            continue;
        }
        moveBehindDelimiter(static_cast<std::uint64_t>(lineFeed - scratch), bytesRead);
        line.append(scratch, lineFeed);
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        break;
    }
    if (trim) {
        constexpr const char* WhiteSpace = " \t\n\v\f\r";
        line.erase(line.find_last_not_of(WhiteSpace) + 1);
        line.erase(0, line.find_first_not_of(WhiteSpace));
    }
    return line;
}

inline std::string IDataStream::readAll()
{
    std::string chunk(mSize != 0 ? mSize : DefaultChunk, '\0');
    std::string content;
    seek(0);
    while (!eof()) {
        const std::uint64_t bytesRead = read(chunk.data(), chunk.size());
        if (bytesRead == 0) {
            break;
        }
        content.append(chunk, 0, bytesRead);
    }
    return content;
}

inline std::uint64_t IDataStream::skipDelimited(const std::string& delimiters)
{
    Scratch scratch;
    std::uint64_t total = 0;
    while (const std::uint64_t bytesRead = readScratch(scratch, ScratchSize)) {
        const std::uint64_t length = std::strcspn(scratch, delimiters.c_str());
        if (length < bytesRead) {
            moveBehindDelimiter(length, bytesRead);
            return total + length + 1;
        }
        total += bytesRead;
    }
    return total;
}

} // namespace KelbBase

/// The text operations over any source.
///
/// It holds only a pointer: it never deletes or closes the source, and copies of a stream share its position.
class VELOR_BASE_EXPORT KelbDataStream : public KelbBase::IDataStream
{
public:
    /// `source` must not be null and outlives the stream; `access` is a sum of the access flags.
    KelbDataStream(KelbIOSource* source, std::uint16_t access);

    std::uint64_t read(void* buffer, std::uint64_t count) override;
    std::uint64_t write(const void* buffer, std::uint64_t count) override;
    void skip(std::int32_t offset) override;
    void seek(std::uint64_t position) override;
    std::uint64_t tell() const override;
    bool eof() const override;
    /// Does nothing: the source belongs to the caller.
    void close() override;

private:
    KelbIOSource* mSource;
};
