#include "KelbIOSource.h"

#include "PathForms.h"
#include "Win32.h"

#include <algorithm>
#include <cstdio>

namespace {

/// Large enough that a system call costs little beside the bytes that it moves, and small enough to stay in
/// the processor's cache.
constexpr std::size_t FileBufferSize = std::size_t(64) * 1024;

// What a stream is opened with; creating empties a file. Not literals, whose type differs between
// systems.
constexpr WCHAR OpenToRead[] = {'r', 'b', 0};
constexpr WCHAR CreateToWrite[] = {'w', 'b', 0};
constexpr WCHAR OpenToReadAndWrite[] = {'r', 'b', '+', 0};
constexpr WCHAR CreateToReadAndWrite[] = {'w', 'b', '+', 0};

bool canBeRead(const WideString& path)
{
    std::FILE* stream = _wfopen(path.c_str(), OpenToRead);
    if (stream == nullptr) {
        return false;
    }
    std::fclose(stream);
    return true;
}

const WCHAR* openingMode(const WideString& path, std::uint32_t mode)
{
    switch (mode) {
    case KelbFile::ModeWrite:
        return CreateToWrite;
    case KelbFile::ModeReadWrite:
        return canBeRead(path) ? OpenToReadAndWrite : CreateToReadAndWrite;
    default:
        return OpenToRead;
    }
}

/// Not by creating, which would lose what was written.
const WCHAR* reopeningMode(const WideString& path, std::uint32_t mode)
{
    return mode == KelbFile::ModeWrite ? OpenToReadAndWrite : openingMode(path, mode);
}

void setFileLength(const WideString& path, std::uint64_t size)
{
    HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(size);
    // The end of the file is wherever the pointer stands: after a failed move that is the start.
    if (SetFilePointerEx(file, end, nullptr, FILE_BEGIN)) {
        SetEndOfFile(file);
    }
    CloseHandle(file);
}

} // namespace

struct KelbFile::Record
{
    /// What the stream did last. The C library wants a seek or a flush between a read and a write.
    enum class Operation
    {
        Move,
        Read,
        Write
    };

    std::uint32_t mode = 0;
    std::FILE* stream = nullptr;
    WideString path;
    bool closeFailed = false;
    Operation last = Operation::Move;
    /// Passed to the stream, since some C libraries ignore a size without memory.
    std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(FileBufferSize);

    void open(const WCHAR* streamMode)
    {
        stream = _wfopen(path.c_str(), streamMode);
        last = Operation::Move;
        if (stream != nullptr) {
            std::setvbuf(stream, buffer.get(), _IOFBF, FileBufferSize);
        }
    }

    void close()
    {
        closeFailed = std::fclose(stream) != 0;
        stream = nullptr;
    }

    bool move(std::int64_t offset, int origin)
    {
        const bool moved = _fseeki64(stream, offset, origin) == 0;
        last = moved ? Operation::Move : last;
        return moved;
    }

    std::uint64_t position() const
    {
        const std::int64_t position = _ftelli64(stream);
        return static_cast<std::uint64_t>(std::max<std::int64_t>(position, 0));
    }

    bool prepareRead()
    {
        const bool ready = last != Operation::Write || std::fflush(stream) == 0;
        last = ready ? Operation::Read : last;
        return ready;
    }

    /// A read that met the end needs no move, which would clear `eof`.
    bool prepareWrite()
    {
        const bool ready = last != Operation::Read || std::feof(stream) != 0 || move(0, SEEK_CUR);
        last = ready ? Operation::Write : last;
        return ready;
    }
};

KelbFile::KelbFile(const char* path, std::uint32_t mode)
    : mRecord(std::make_unique<Record>())
{
    mRecord->mode = mode;
    mRecord->path = toWidePath(path);
    mRecord->open(openingMode(mRecord->path, mode));
}

KelbFile::~KelbFile() { close(); }

bool KelbFile::isOpen() const { return mRecord->stream != nullptr; }

void KelbFile::close()
{
    if (isOpen()) {
        mRecord->close();
    }
}

std::uint64_t KelbFile::read(void* buffer, std::uint64_t count)
{
    if (!isOpen() || !mRecord->prepareRead()) {
        return 0;
    }
    return std::fread(buffer, 1, static_cast<std::size_t>(count), mRecord->stream);
}

std::uint64_t KelbFile::write(const void* buffer, std::uint64_t count)
{
    if (!isOpen() || !mRecord->prepareWrite()) {
        return 0;
    }
    return std::fwrite(buffer, 1, static_cast<std::size_t>(count), mRecord->stream);
}

std::uint64_t KelbFile::size()
{
    if (!isOpen()) {
        return 0;
    }
    const std::uint64_t position = tell();
    seekToEnd();
    const std::uint64_t end = tell();
    seek(position);
    return end;
}

std::uint64_t KelbFile::tell() { return isOpen() ? mRecord->position() : 0; }

void KelbFile::rewind() { seek(0); }

void KelbFile::skip(std::int64_t offset)
{
    if (isOpen()) {
        mRecord->move(offset, SEEK_CUR);
    }
}

void KelbFile::seek(std::uint64_t position)
{
    if (isOpen()) {
        mRecord->move(static_cast<std::int64_t>(position), SEEK_SET);
    }
}

void KelbFile::seekToEnd()
{
    if (isOpen()) {
        mRecord->move(0, SEEK_END);
    }
}

bool KelbFile::eof() { return !isOpen() || std::feof(mRecord->stream) != 0; }

void KelbFile::resize(std::uint64_t size)
{
    if (!isOpen()) {
        return;
    }
    mRecord->close();
    setFileLength(mRecord->path, size);
    mRecord->open(reopeningMode(mRecord->path, mRecord->mode));
}

bool KelbFile::hasError() { return (isOpen() && std::ferror(mRecord->stream) != 0) || mRecord->closeFailed; }
