#pragma once

#include <Velor.Base/KelbIOSource.h>

#include <QtCore/QString>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#if __has_include(<sys/resource.h>)
#include <sys/resource.h>
#endif

/// A source over bytes in memory, which a test sets and looks at directly.
class MemorySource : public KelbIOSource
{
public:
    explicit MemorySource(std::string content = {})
        : bytes(std::move(content))
    {}

    std::uint64_t read(void* buffer, std::uint64_t count) override
    {
        const std::size_t available = bytes.size() - std::min(position, bytes.size());
        const std::size_t taken = std::min<std::size_t>(count, available);
        std::memcpy(buffer, bytes.data() + std::min(position, bytes.size()), taken);
        position += taken;
        atEnd = atEnd || taken < count;
        ++reads;
        return taken;
    }
    std::uint64_t write(const void* buffer, std::uint64_t count) override
    {
        bytes.resize(std::max<std::size_t>(bytes.size(), position + count));
        bytes.replace(position, count, static_cast<const char*>(buffer), count);
        position += count;
        ++writes;
        return count;
    }
    std::uint64_t size() override { return reportedSize.value_or(bytes.size()); }
    std::uint64_t tell() override { return position; }
    void rewind() override { seek(0); }
    void skip(std::int64_t offset) override { seek(position + static_cast<std::uint64_t>(offset)); }
    void seek(std::uint64_t to) override
    {
        position = to;
        atEnd = false;
    }
    void seekToEnd() override { seek(bytes.size()); }
    bool eof() override { return atEnd; }
    bool hasError() override { return false; }

    std::string bytes;
    std::optional<std::uint64_t> reportedSize; ///< what size() returns instead
    std::size_t position = 0;
    bool atEnd = false;
    int reads = 0;
    int writes = 0;
};

/// Forwards the first `goodCalls` calls of read, write and size to another source; all later ones fail.
class FailingSource : public KelbIODevice
{
public:
    FailingSource(KelbIOSource* source, int goodCalls)
        : KelbIODevice(source)
        , left(goodCalls)
    {}

    std::uint64_t read(void* buffer, std::uint64_t count) override
    {
        return works() ? mSource->read(buffer, count) : 0;
    }
    std::uint64_t write(const void* buffer, std::uint64_t count) override
    {
        return works() ? mSource->write(buffer, count) : 0;
    }
    std::uint64_t size() override { return works() ? mSource->size() : 0; }
    bool hasError() override { return left < 0; }

    int left;

private:
    bool works() { return left >= 0 && --left >= 0; }
};

// Narrow paths are UTF-8. What takes them does not call Qt, since the Windows build without Qt uses it; the
// forms for QString only convert.

inline std::filesystem::path filePath(const std::string& path)
{
    return std::u8string(path.begin(), path.end());
}

/// A folder of its own for a test, removed with all its files.
class TestFolder
{
public:
    explicit TestFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
    {
        std::random_device random;
        do {
            mFolder = parent / ("velor-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(mFolder));
    }
    ~TestFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mFolder, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string narrowPath(const std::string& name) const
    {
        const std::u8string path = (mFolder / filePath(name)).generic_u8string();
        return {path.begin(), path.end()};
    }
    QString path(const QString& name) const { return QString::fromStdString(narrowPath(name.toStdString())); }

private:
    std::filesystem::path mFolder;
};

inline void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream file(filePath(path), std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
}

inline void writeFile(const QString& path, const std::string& bytes) { writeFile(path.toStdString(), bytes); }

/// The content of a file; "(missing)" where there is none.
inline std::string fileBytes(const std::string& path)
{
    if (!std::filesystem::is_regular_file(filePath(path))) {
        return "(missing)";
    }
    std::ifstream file(filePath(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string fileBytes(const QString& path) { return fileBytes(path.toStdString()); }

inline std::string readBytes(KelbIOSource& source, std::size_t count)
{
    std::string bytes(count, '\0');
    bytes.resize(source.read(bytes.data(), count));
    return bytes;
}

#if __has_include(<sys/resource.h>)

/// While it lives, no file can grow beyond `bytes`: a write falls short as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(std::uint64_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &mFormer);
        const rlimit limited = {bytes, mFormer.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &mFormer); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit mFormer = {};
};

#endif
