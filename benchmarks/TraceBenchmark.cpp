#include <Velor.Base/VelorDebugTrace.h>

#include <benchmark/benchmark.h>

#include <QtCore/QFile>
#include <QtCore/QXmlStreamWriter>

// Saving a tree of groups with 99 nodes each: a debug trace beside Qt's stream writer, which writes the same
// elements to the same kind of file without building a document first.

namespace {

using namespace Qt::StringLiterals;
using Node = QSharedPointer<VelorDebugTraceNode>;

constexpr int GroupSize = 100;
const QString Description = u"angle < 30, weight > 0.5"_s;

/// Names of one width, so that their order is the order of counting.
QString numbered(std::int64_t number) { return u"%1"_s.arg(number, 6, 10, QChar(u'0')); }

Node makeTree(std::int64_t nodes)
{
    const Node root = Node::create(u"root"_s, Description);
    for (std::int64_t i = 0; i < nodes; i += GroupSize) {
        const Node group = root->addGroup(numbered(i), Description);
        for (std::int64_t child = i + 1; child < i + GroupSize; ++child) {
            group->addChild(Node::create(numbered(child), Description));
        }
    }
    return root;
}

void SaveTrace(benchmark::State& state)
{
    const Node root = makeTree(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(root->saveToFile(QString(), u"trace.bench"_s));
    }
    root->clear();
    state.SetComplexityN(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(SaveTrace)->RangeMultiplier(10)->Range(1'000, 100'000)->Complexity();

void writeTree(QXmlStreamWriter& writer, std::int64_t nodes)
{
    writer.writeStartElement(u"Node"_s);
    writer.writeAttribute(u"name"_s, u"root"_s);
    writer.writeAttribute(u"description"_s, Description);
    for (std::int64_t i = 0; i < nodes; i += GroupSize) {
        writer.writeStartElement(u"Node"_s);
        writer.writeAttribute(u"name"_s, numbered(i));
        writer.writeAttribute(u"description"_s, Description);
        writer.writeAttribute(u"type"_s, u"Group"_s);
        for (std::int64_t child = i + 1; child < i + GroupSize; ++child) {
            writer.writeEmptyElement(u"Node"_s);
            writer.writeAttribute(u"name"_s, numbered(child));
            writer.writeAttribute(u"description"_s, Description);
        }
        writer.writeEndElement();
    }
    writer.writeEndElement();
}

void StreamWriter(benchmark::State& state)
{
    for (auto _ : state) {
        QFile file(u"writer.bench"_s);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
            state.SkipWithError("cannot write into the current folder");
            break;
        }
        QXmlStreamWriter writer(&file);
        writer.setAutoFormatting(true);
        writeTree(writer, state.range(0));
    }
    state.SetComplexityN(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(StreamWriter)->RangeMultiplier(10)->Range(1'000, 100'000)->Complexity();

/// One description of that many characters that are written as entities: Qt escapes it in place.
void SaveMarkup(benchmark::State& state)
{
    const Node node = Node::create(u"n"_s, QString(state.range(0), u'<'));
    for (auto _ : state) {
        benchmark::DoNotOptimize(node->saveToFile(QString(), u"markup.bench"_s));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(SaveMarkup)->RangeMultiplier(4)->Range(10'000, 160'000)->Complexity();

} // namespace
