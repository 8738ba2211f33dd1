#include <Velor.Base/VelorZipStream.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>

// A folder into an archive at the highest level: the zip writer beside the program `zip -9`, on the same
// files. One folder holds few large files, half of them floats and half XML; the other many small ones, where
// opening and closing counts.

namespace {

QByteArray floats(int bytes, int seed)
{
    QByteArray content;
    for (int i = 0; content.size() < bytes; ++i) {
        const float value = std::sin(float(i + seed) * 0.01f) * 0.5f + float(i % 97) * 0.001f;
        content.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    return content;
}

QByteArray xml(int bytes, int seed)
{
    QByteArray content;
    for (int i = seed; content.size() < bytes; ++i) {
        content += "<Key frame=\"" + QByteArray::number(i) + "\" value=\"" +
                   QByteArray::number(std::cos(i * 0.013) * 100, 'f', 4) + "\" joint=\"left_arm\" />\n";
    }
    return content;
}

struct Corpus
{
    Corpus(int files, int bytesPerFile)
        : bytes(std::int64_t(files) * bytesPerFile)
    {
        for (int i = 0; i < files; ++i) {
            const QString name = QStringLiteral("clip%1.%2")
                                     .arg(i)
                                     .arg(i % 2 == 0 ? QStringLiteral("bin") : QStringLiteral("xml"));
            QFile file(temporary.filePath(name));
            if (!file.open(QIODevice::WriteOnly)) {
                std::abort();
            }
            file.write((i % 2 == 0 ? floats : xml)(bytesPerFile, i).left(bytesPerFile));
        }
    }

    QTemporaryDir temporary;
    std::int64_t bytes;
};

const Corpus& corpus(bool isSmall)
{
    static const Corpus large(16, 1 << 20);
    static const Corpus small(4000, 1 << 12);
    return isSmall ? small : large;
}

void finish(benchmark::State& state, const Corpus& packed, const QString& archive)
{
    state.SetBytesProcessed(state.iterations() * packed.bytes);
    state.counters["ratio"] = double(QFileInfo(archive).size()) / double(packed.bytes);
}

void ZipStream(benchmark::State& state)
{
    const Corpus& packed = corpus(state.range(0) != 0);
    const QTemporaryDir out;
    const QString archive = out.filePath(QStringLiteral("out.zip"));
    for (auto _ : state) {
        if (!VelorZipStream(archive).addFolder(packed.temporary.path(), true)) {
            state.SkipWithError("not packed");
        }
    }
    finish(state, packed, archive);
}

void ZipProgram(benchmark::State& state)
{
    const Corpus& packed = corpus(state.range(0) != 0);
    const QTemporaryDir out;
    const QString archive = out.filePath(QStringLiteral("out.zip"));
    for (auto _ : state) {
        QFile::remove(archive);
        QProcess zip;
        zip.setWorkingDirectory(packed.temporary.path());
        zip.start(QStringLiteral("zip"), {QStringLiteral("-9qr"), archive, QStringLiteral(".")});
        if (!zip.waitForFinished(-1) || zip.exitCode() != 0) {
            state.SkipWithError("no zip program");
        }
    }
    finish(state, packed, archive);
}

BENCHMARK(ZipStream)->ArgName("small")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ZipProgram)->ArgName("small")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
