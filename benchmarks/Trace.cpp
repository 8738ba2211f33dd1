#include "Pairs.h"

#include <Velor.Base/VelorDebugTrace.h>

#include <QtCore/QFile>
#include <QtCore/QXmlStreamWriter>
#include <QtXml/QDomDocument>

#include <memory>

// Saving a tree of groups with 99 nodes each. Qt's stream writer writes the same elements to the same kind of
// file without building a document first.

namespace {

using namespace Qt::StringLiterals;
using Node = QSharedPointer<VelorDebugTraceNode>;

constexpr int GroupSize = 100;
const QString Description = u"angle < 30, weight > 0.5"_s;

/// Names of one width, so that their order is the order of counting.
QString numbered(int number) { return u"%1"_s.arg(number, 7, 10, QChar(u'0')); }

QString file(const char* name) { return QString::fromStdString(bench::scratch(name)); }

/// A tree that is taken apart at the end; `clear` breaks the links that would keep it.
std::shared_ptr<Node> treeOf(int nodes)
{
    const Node root = Node::create(u"root"_s, Description);
    for (int i = 0; i < nodes; i += GroupSize) {
        const Node group = root->addGroup(numbered(i), Description);
        for (int child = i + 1; child < i + GroupSize; ++child) {
            group->addChild(Node::create(numbered(child), Description));
        }
    }
    return {new Node(root), [](Node* tree) {
                (*tree)->clear();
                delete tree;
            }};
}

bench::Work saving(const std::shared_ptr<Node>& root)
{
    return [root, path = file("trace.xml")] { bench::demand((*root)->saveToFile(QString(), path)); };
}

/// Calls `begin(name, type)` and `end()` for the elements of the tree in their order.
template <typename Begin, typename End>
void walk(int nodes, Begin begin, End end)
{
    begin(u"root"_s, QString());
    for (int i = 0; i < nodes; i += GroupSize) {
        begin(numbered(i), u"Group"_s);
        for (int child = i + 1; child < i + GroupSize; ++child) {
            begin(numbered(child), QString());
            end();
        }
        end();
    }
    end();
}

void streamWriter(int nodes)
{
    QFile device(file("writer.xml"));
    bench::demand(device.open(QIODevice::WriteOnly | QIODevice::Text));
    QXmlStreamWriter writer(&device);
    writer.setAutoFormatting(true);
    walk(
        nodes,
        [&writer](const QString& name, const QString& type) {
            writer.writeStartElement(u"Node"_s);
            writer.writeAttribute(u"name"_s, name);
            writer.writeAttribute(u"description"_s, Description);
            if (!type.isEmpty()) {
                writer.writeAttribute(u"type"_s, type);
            }
        },
        [&writer] { writer.writeEndElement(); });
}

void domAlone(int nodes)
{
    QDomDocument document;
    QDomNode current = document;
    walk(
        nodes,
        [&](const QString& name, const QString& type) {
            QDomElement element = document.createElement(u"Node"_s);
            element.setAttribute(u"name"_s, name);
            element.setAttribute(u"description"_s, Description);
            if (!type.isEmpty()) {
                element.setAttribute(u"type"_s, type);
            }
            current = current.appendChild(element);
        },
        [&current] { current = current.parentNode(); });
    QFile device(file("dom.xml"));
    bench::demand(device.open(QIODevice::WriteOnly | QIODevice::Text));
    QTextStream text(&device);
    document.save(text, 4);
}

void pairs()
{
    constexpr int Nodes = 20'000;
    const bench::Work ours = saving(treeOf(Nodes));
    bench::pair("saving a trace, 20,000 nodes", "Qt's document tree alone", ours, [] { domAlone(Nodes); });
    bench::pair("saving a trace, 20,000 nodes", "`QXmlStreamWriter`", ours, [] { streamWriter(Nodes); });
}

void growths()
{
    bench::growth("saving a trace, n nodes", {1000, 10'000, 100'000, 1'000'000},
                  [](int nodes) { return saving(treeOf(nodes)); });
    bench::growth("saving a node, n characters of markup", {10'000, 20'000, 40'000, 80'000}, [](int size) {
        return saving(std::make_shared<Node>(Node::create(u"n"_s, QString(size, u'<'))));
    });
}

const bench::Family family("Trace", pairs, growths);

} // namespace
