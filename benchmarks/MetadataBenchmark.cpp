#include <Velor.Base/KelbSynonyms.h>
#include <Velor.Base/KelbTags.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryFile>
#include <QtXml/QDomDocument>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

void tagCounts(benchmark::internal::Benchmark* benchmark)
{
    for (const int count : {1'000, 2'000, 5'000, 10'000, 20'000}) {
        benchmark->Arg(count);
    }
}

QStringList differentTags(std::int64_t count)
{
    QStringList tags;
    for (std::int64_t i = 0; i < count; ++i) {
        // A large prime scatters the numbers, so that the list has to be sorted.
        tags.append(QStringLiteral("Tag %1").arg(i * 7919 % 1'000'003));
    }
    return tags;
}

void TagsFromString(benchmark::State& state)
{
    const QString text = differentTags(state.range(0)).join(u',');
    for (auto _ : state) {
        benchmark::DoNotOptimize(KelbTags(text));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(TagsFromString)->Apply(tagCounts)->Complexity(benchmark::oNLogN)->Unit(benchmark::kMillisecond);

/// The peer: Qt's own splitting, dropping of duplicates and sorting, which tells `A` and `a` apart.
void QtSplitAndSort(benchmark::State& state)
{
    const QString text = differentTags(state.range(0)).join(u',');
    for (auto _ : state) {
        QStringList tags = text.split(u',', Qt::SkipEmptyParts);
        tags.removeDuplicates();
        tags.sort(Qt::CaseInsensitive);
        benchmark::DoNotOptimize(tags);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(QtSplitAndSort)->Apply(tagCounts)->Complexity(benchmark::oNLogN)->Unit(benchmark::kMillisecond);

/// The peer that walks the whole list for each tag.
void TagsAddedOneByOne(benchmark::State& state)
{
    const QStringList list = differentTags(state.range(0));
    for (auto _ : state) {
        KelbTags tags;
        for (const QString& tag : list) {
            tags.addTag(tag);
        }
        benchmark::DoNotOptimize(tags);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(TagsAddedOneByOne)
    ->Apply(tagCounts)
    ->Complexity(benchmark::oNSquared)
    ->Unit(benchmark::kMillisecond);

std::unique_ptr<QTemporaryFile> synonymsFile(std::int64_t groups)
{
    auto file = std::make_unique<QTemporaryFile>();
    if (!file->open()) {
        qFatal("no temporary file");
    }
    file->write("<KelbSynonyms>\n");
    for (std::int64_t i = 0; i < groups; ++i) {
        file->write(
            QStringLiteral("<KelbSynonym values=\"Walk %1, stroll %1, March %1\"/>\n").arg(i).toUtf8());
    }
    file->write("</KelbSynonyms>\n");
    file->close();
    return file;
}

void SynonymsLoad(benchmark::State& state)
{
    const auto file = synonymsFile(state.range(0));
    for (auto _ : state) {
        KelbSynonyms synonyms;
        if (!synonyms.load(file->fileName())) {
            state.SkipWithError("not loaded");
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(SynonymsLoad)
    ->RangeMultiplier(10)
    ->Range(1000, 100'000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMillisecond);

/// The peer: Qt's document tree of the same file, without which nothing is loaded.
void QtDocumentAlone(benchmark::State& state)
{
    const auto file = synonymsFile(state.range(0));
    for (auto _ : state) {
        QFile device(file->fileName());
        QDomDocument document;
        if (!device.open(QIODevice::ReadOnly | QIODevice::Text) || !document.setContent(&device)) {
            state.SkipWithError("not parsed");
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(QtDocumentAlone)
    ->RangeMultiplier(10)
    ->Range(1000, 100'000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMillisecond);

} // namespace
