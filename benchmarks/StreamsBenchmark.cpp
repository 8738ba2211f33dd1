#include <Velor.Base/KelbDataStream.h>
#include <Velor.Base/VelorIODevice.h>
#include <Velor.Base/VelorXxHash.h>

#include <QtCore/QTemporaryDir>
#include <benchmark/benchmark.h>
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

/// Files, digests and typed values beside the C library and xxHash doing the same work on the same file.

namespace {

constexpr std::size_t FileSize = 64 << 20;
constexpr std::size_t FloatCount = 1 << 20;
constexpr std::size_t BlockSize = 4096;

/// Where the benchmark writes, in the current folder: a disk and not the memory that /tmp often is.
const std::string& scratchFolder()
{
    static const QTemporaryDir folder(QStringLiteral("streams_benchmark_XXXXXX"));
    static const std::string path = folder.path().toStdString();
    return path;
}

/// A file of `FileSize` bytes in the system's cache.
const std::string& largeFile()
{
    static const std::string path = [] {
        std::string content(FileSize, '\0');
        for (std::size_t i = 0; i < content.size(); ++i) {
            content[i] = static_cast<char>(i * 2654435761u >> 13);
        }
        std::string name = scratchFolder() + "/large";
        std::ofstream(name, std::ios::binary) << content;
        return name;
    }();
    return path;
}

struct StreamCloser
{
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/// A C stream, with a buffer of `bufferSize` bytes or, for 0, the library's own.
class PlainStream
{
public:
    PlainStream(const std::string& path, const char* mode, std::size_t bufferSize)
        : mBuffer(bufferSize)
        , mStream(std::fopen(path.c_str(), mode))
    {
        if (bufferSize != 0) {
            std::setvbuf(mStream.get(), mBuffer.data(), _IOFBF, bufferSize);
        }
    }
    std::FILE* get() const { return mStream.get(); }

private:
    std::vector<char> mBuffer;
    std::unique_ptr<std::FILE, StreamCloser> mStream;
};

void countBytes(benchmark::State& state, std::size_t bytes)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * static_cast<std::int64_t>(bytes)));
}

void plainReadFloats(benchmark::State& state)
{
    for (auto _ : state) {
        const PlainStream stream(largeFile(), "rb", static_cast<std::size_t>(state.range(0)));
        float value = 0;
        for (std::size_t i = 0; i < FloatCount; ++i) {
            benchmark::DoNotOptimize(std::fread(&value, 1, sizeof value, stream.get()));
        }
    }
    countBytes(state, FloatCount * sizeof(float));
}

void plainReadBlocks(benchmark::State& state)
{
    for (auto _ : state) {
        const PlainStream stream(largeFile(), "rb", static_cast<std::size_t>(state.range(0)));
        char block[BlockSize];
        while (std::fread(block, 1, sizeof block, stream.get()) == sizeof block) {
            benchmark::ClobberMemory();
        }
    }
    countBytes(state, FileSize);
}

void plainWriteFloats(benchmark::State& state)
{
    for (auto _ : state) {
        const PlainStream stream(scratchFolder() + "/floats", "wb", static_cast<std::size_t>(state.range(0)));
        for (std::size_t i = 0; i < FloatCount; ++i) {
            const auto value = static_cast<float>(i);
            benchmark::DoNotOptimize(std::fwrite(&value, 1, sizeof value, stream.get()));
        }
    }
    countBytes(state, FloatCount * sizeof(float));
}

void deviceReadFloats(benchmark::State& state)
{
    for (auto _ : state) {
        KelbFile file(largeFile().c_str(), KelbFile::ModeRead);
        VelorIODevice device(&file);
        for (std::size_t i = 0; i < FloatCount; ++i) {
            benchmark::DoNotOptimize(device.readFloat());
        }
    }
    countBytes(state, FloatCount * sizeof(float));
}

void deviceWriteFloats(benchmark::State& state)
{
    for (auto _ : state) {
        KelbFile file((scratchFolder() + "/floats").c_str(), KelbFile::ModeWrite);
        VelorIODevice device(&file);
        for (std::size_t i = 0; i < FloatCount; ++i) {
            const auto value = static_cast<float>(i);
            benchmark::DoNotOptimize(device.writeFloat(&value));
        }
    }
    countBytes(state, FloatCount * sizeof(float));
}

void plainHashOfFile(benchmark::State& state)
{
    for (auto _ : state) {
        const PlainStream stream(largeFile(), "rb", static_cast<std::size_t>(state.range(0)));
        XXH64_state_t* running = XXH64_createState();
        XXH64_reset(running, 0);
        char block[BlockSize];
        while (const std::size_t count = std::fread(block, 1, sizeof block, stream.get())) {
            XXH64_update(running, block, count);
        }
        benchmark::DoNotOptimize(XXH64_digest(running));
        XXH64_freeState(running);
    }
    countBytes(state, FileSize);
}

void hashOfFile(benchmark::State& state)
{
    for (auto _ : state) {
        KelbFile file(largeFile().c_str(), KelbFile::ModeRead);
        benchmark::DoNotOptimize(VelorXxHash::fromSource(&file));
    }
    countBytes(state, FileSize);
}

/// The whole program, with its start.
void xxhsumOfFile(benchmark::State& state)
{
    const std::string command = "xxhsum -q -H1 " + largeFile() + " > /dev/null 2>&1";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("xxhsum is not installed");
        }
    }
    countBytes(state, FileSize);
}

/// Lines of the length that text files have.
const std::string& textFile()
{
    static const std::string path = [] {
        std::string name = scratchFolder() + "/text";
        std::ofstream text(name, std::ios::binary);
        for (int i = 0; i < 200'000; ++i) {
            text << std::string(static_cast<std::size_t>(i % 80), 'x') << '\n';
        }
        return name;
    }();
    return path;
}

void getlineOfFile(benchmark::State& state)
{
    for (auto _ : state) {
        std::ifstream text(textFile(), std::ios::binary);
        std::string line;
        while (std::getline(text, line)) {
            benchmark::DoNotOptimize(line.data());
        }
    }
}

void streamReadLine(benchmark::State& state)
{
    for (auto _ : state) {
        KelbFile file(textFile().c_str(), KelbFile::ModeRead);
        KelbDataStream stream(&file, KelbBase::IDataStream::AccessRead);
        while (!stream.eof()) {
            benchmark::DoNotOptimize(stream.readLine(false));
        }
    }
}

void bufferSizes(benchmark::internal::Benchmark* measured)
{
    measured->Arg(0)->RangeMultiplier(2)->Range(4 << 10, 256 << 10)->Unit(benchmark::kMillisecond);
}

BENCHMARK(plainReadFloats)->Apply(bufferSizes);
BENCHMARK(plainReadBlocks)->Apply(bufferSizes);
BENCHMARK(plainWriteFloats)->Apply(bufferSizes);
BENCHMARK(plainHashOfFile)->Apply(bufferSizes);
BENCHMARK(deviceReadFloats)->Unit(benchmark::kMillisecond);
BENCHMARK(deviceWriteFloats)->Unit(benchmark::kMillisecond);
BENCHMARK(hashOfFile)->Unit(benchmark::kMillisecond);
BENCHMARK(xxhsumOfFile)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(getlineOfFile)->Unit(benchmark::kMillisecond);
BENCHMARK(streamReadLine)->Unit(benchmark::kMillisecond);

} // namespace
