#include "Pairs.h"

#include <Velor.Base/KelbDataStream.h>
#include <Velor.Base/VelorIODevice.h>
#include <Velor.Base/VelorXxHash.h>

#include <QtCore/QFile>

#include <sys/stat.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

// Files, digests and typed values, beside the C library and xxHash on the same file with a buffer of the same
// size.

namespace {

constexpr std::size_t FileSize = 16 << 20;
constexpr std::size_t FloatCount = 1 << 18;
constexpr std::size_t BlockSize = 4096;
constexpr std::size_t BufferSize = 64 << 10; // that of KelbFile
constexpr int TakenNames = 1000;

/// A file of `FileSize` bytes in the system's cache.
std::string largeFile()
{
    std::string content(FileSize, '\0');
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i * 2654435761U >> 13);
    }
    std::string name = bench::scratch("large");
    std::ofstream(name, std::ios::binary) << content;
    return name;
}

/// Lines of the length that text files have.
std::string textFile()
{
    std::string name = bench::scratch("text");
    std::ofstream text(name, std::ios::binary);
    for (std::size_t i = 0; i < 50'000; ++i) {
        text << std::string(i % 80, 'x') << '\n';
    }
    return name;
}

class PlainStream
{
public:
    PlainStream(const std::string& path, const char* mode)
        : mBuffer(BufferSize)
        , mStream(std::fopen(path.c_str(), mode))
    {
        std::setvbuf(mStream, mBuffer.data(), _IOFBF, mBuffer.size());
    }
    ~PlainStream() { std::fclose(mStream); }
    PlainStream(const PlainStream&) = delete;
    PlainStream& operator=(const PlainStream&) = delete;

    std::FILE* get() const { return mStream; }

private:
    std::vector<char> mBuffer;
    std::FILE* mStream;
};

void pairFloats(const std::string& path)
{
    bench::pair(
        "`readFloat`, a file of them", "`fread` of 4 bytes, same buffer",
        [&path] {
            KelbFile file(path.c_str(), KelbFile::ModeRead);
            VelorIODevice device(&file);
            for (std::size_t i = 0; i < FloatCount; ++i) {
                bench::keep(device.readFloat());
            }
        },
        [&path] {
            const PlainStream stream(path, "rb");
            float value = 0;
            for (std::size_t i = 0; i < FloatCount; ++i) {
                bench::keep(std::fread(&value, 1, sizeof value, stream.get()));
            }
        });
    bench::pair(
        "`writeFloat`, a file of them", "`fwrite` of 4 bytes, same buffer",
        [name = bench::scratch("floats")] {
            KelbFile file(name.c_str(), KelbFile::ModeWrite);
            VelorIODevice device(&file);
            for (std::size_t i = 0; i < FloatCount; ++i) {
                const auto value = static_cast<float>(i);
                bench::keep(device.writeFloat(&value));
            }
        },
        [name = bench::scratch("floats")] {
            const PlainStream stream(name, "wb");
            for (std::size_t i = 0; i < FloatCount; ++i) {
                const auto value = static_cast<float>(i);
                bench::keep(std::fwrite(&value, 1, sizeof value, stream.get()));
            }
        });
}

void pairDigest(const std::string& path)
{
    bench::pair(
        "digest of a file", "XXH64 in a loop over `fread`, same buffer",
        [&path] {
            KelbFile file(path.c_str(), KelbFile::ModeRead);
            bench::keep(VelorXxHash::fromSource(&file));
        },
        [&path] {
            const PlainStream stream(path, "rb");
            XXH64_state_t* running = XXH64_createState();
            XXH64_reset(running, 0);
            char block[BlockSize];
            while (const std::size_t count = std::fread(block, 1, sizeof block, stream.get())) {
                XXH64_update(running, block, count);
            }
            bench::keep(XXH64_digest(running));
            XXH64_freeState(running);
        });
}

void pairLines(const std::string& path)
{
    bench::pair(
        "`readLine` through a text", "`std::getline`",
        [&path] {
            KelbFile file(path.c_str(), KelbFile::ModeRead);
            KelbDataStream stream(&file, KelbBase::IDataStream::AccessRead);
            while (!stream.eof()) {
                bench::keep(stream.readLine(false));
            }
        },
        [&path] {
            std::ifstream text(path, std::ios::binary);
            std::string line;
            while (std::getline(text, line)) {
                bench::keep(line);
            }
        });
}

void pairNames()
{
    const std::string base = bench::scratch("taken");
    const auto nameOf = [base](int n) { return base + (n == 0 ? "" : "_" + std::to_string(n)) + ".clip"; };
    for (int n = 0; n < TakenNames; ++n) {
        std::ofstream(nameOf(n)).put(' ');
    }
    bench::pair(
        "`safeFilename`, 1,000 names taken", "`stat` of each name",
        [path = QString::fromStdString(base)] {
            bench::keep(VelorIODevice::safeFilename(path, QStringLiteral(".clip")));
        },
        [nameOf] {
            struct stat found
            {};
            int n = 0;
            while (stat(nameOf(n).c_str(), &found) == 0) {
                ++n;
            }
            bench::demand(n == TakenNames);
        });
}

void pairs()
{
    const std::string large = largeFile();
    pairFloats(large);
    pairDigest(large);
    pairLines(textFile());
    pairNames();
}

const bench::Family family("Streams", pairs);

} // namespace
