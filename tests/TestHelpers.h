#pragma once

#include <Velor.Base/KelbIOSource.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>

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
    std::uint64_t size() override { return bytes.size(); }
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
    std::size_t position = 0;
    bool atEnd = false;
    int reads = 0;
    int writes = 0;
};

/// Forwards to another source until its n-th read, write or size, which fails, as do all that follow.
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

/// A folder of its own for a test, removed with all its files.
class TestFolder
{
public:
    TestFolder() { mFolder.setAutoRemove(false); }
    // Qt leaves a folder behind that holds a name which is not UTF-8.
    ~TestFolder() { std::filesystem::remove_all(mFolder.path().toStdString()); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    QString path(const QString& name) const { return mFolder.filePath(name); }
    std::string narrowPath(const char* name) const
    {
        return mFolder.filePath(QString::fromUtf8(name)).toStdString();
    }

private:
    QTemporaryDir mFolder;
};

inline void writeFile(const QString& path, const std::string& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(bytes.data(), qint64(bytes.size())) != qint64(bytes.size())) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

/// The content of a file; "(missing)" where there is none.
inline std::string fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "(missing)";
}

inline std::string readBytes(KelbIOSource& source, std::size_t count)
{
    std::string bytes(count, '\0');
    bytes.resize(source.read(bytes.data(), count));
    return bytes;
}
