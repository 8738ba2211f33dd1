#include "support/TestHelpers.h"

#include <Velor.Base/VelorDebugTrace.h>

#include <gtest/gtest.h>

#include <QtCore/QProcess>
#include <QtCore/QSysInfo>
#include <QtCore/QThread>

#include <functional>
#include <thread>

using namespace Qt::StringLiterals;
using Node = QSharedPointer<VelorDebugTraceNode>;
using WeakNode = QWeakPointer<VelorDebugTraceNode>;

namespace {

/// A chain of that many nodes, root first.
QList<Node> chain(int levels)
{
    QList<Node> nodes{Node::create(u"root"_s, QString())};
    while (nodes.size() < levels) {
        nodes.append(nodes.constLast()->addGroup(u"g"_s, QString()));
    }
    return nodes;
}

/// A value whose end calls back, which no lock may turn into a wait for ever.
QVariant callBack(const QString& name)
{
    const auto call = [name](void*) { VelorDebugTrace::factory(u"shared"_s).getMetadata(name); };
    return QVariant::fromValue(std::shared_ptr<void>(nullptr, call));
}

TEST(VelorDebugTrace, ThreadsMakeFindAndReleaseTracesAtOnce)
{
    VelorDebugTrace& shared = VelorDebugTrace::factory(u"shared"_s);
    std::vector<std::jthread> threads;
    for (const QString& own : {u"A"_s, u"a"_s, u"b"_s, u"c"_s}) {
        threads.emplace_back([own, &shared] {
            for (int i = 0; i < 300; ++i) {
                const Node common = shared.getBaseNode(u"common"_s, own);
                shared.getBaseNode(own, own);
                EXPECT_EQ(shared.getBaseNode(u"common"_s, own), common);
                shared.removeBaseNode(own);
                shared.addMetadata(own, callBack(own));
                shared.addMetadata(own, i);
                EXPECT_EQ(shared.getMetadata(own), i);
                VelorDebugTrace& trace = VelorDebugTrace::factory(own);
                EXPECT_EQ(trace.lastBaseNode(), nullptr);
                trace.addMetadata(own, callBack(own));
                trace.getBaseNode(own, own);
                VelorDebugTrace::releaseInstance(own);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(VelorDebugTrace::factory(u"shared"_s).lastBaseNode()->getName(), u"common"_s);
}

TEST(VelorDebugTrace, ATreeGoesByClearAndNotByRelease)
{
    Node root = VelorDebugTrace::factory(u"tree"_s).getBaseNode(u"root"_s, QString());
    VelorDebugTraceNode* const plain = root.data();
    const WeakNode end = root;
    const WeakNode leaf = root->addGroup(u"g"_s, QString())->addGroup(u"leaf"_s, QString());
    VelorDebugTrace::releaseInstance(u"tree"_s);
    root.reset();
    ASSERT_FALSE(end.isNull() || leaf.isNull());
    plain->clear(); // only its children own it by now
    EXPECT_TRUE(end.isNull() && leaf.isNull());
}

TEST(VelorDebugTraceNode, WritesTheTreeInTheOrderOfNames)
{
    const TestFolder folder;
    const Node root = Node::create(u"root"_s, QString());
    root->addGroup(u"a"_s, u"replaced"_s);
    for (const QString& name : {u"b"_s, u"a"_s, u"B"_s}) {
        Node::create(name, QString())->setParent(root);
    }
    root->getChild(u"a"_s)->addChild(Node::create(QString(), QString()));
    EXPECT_TRUE(root->saveToFile(folder.path(u"made/here"_s), QString()));
    EXPECT_EQ(fileBytes(folder.path(u"made/here/root.xml"_s)), R"(<Node name="root">
    <Node name="B"/>
    <Node name="a">
        <Node name=""/>
    </Node>
    <Node name="b"/>
</Node>
)");
    root->clear();
    EXPECT_TRUE(root->saveToFile(folder.path(u"made/here"_s), QString())); // over the longer file
    EXPECT_EQ(fileBytes(folder.path(u"made/here/root.xml"_s)), "<Node name=\"root\"/>\n");
}

TEST(VelorDebugTraceNode, IsNotSavedWhereAFolderHasTheNameOfTheFile)
{
    const TestFolder folder;
    EXPECT_FALSE(Node::create(u"n"_s, QString())->saveToFile(folder.path(u"."_s), u"."_s));
}

TEST(VelorDebugTraceNode, AClearedGroupKeepsItsNameAndType)
{
    VelorDebugGenericNode<void> group(u"name"_s, u"text"_s);
    QDomDocument document;
    EXPECT_EQ(group.toXml(document).attribute(u"description"_s), u"text"_s);
    group.clear();
    const QDomElement element = group.toXml(document);
    EXPECT_EQ(element.attribute(u"name"_s) + element.attribute(u"type"_s), u"nameGroup"_s);
    EXPECT_FALSE(element.hasAttribute(u"description"_s));
}

TEST(VelorDebugTraceNode, AnotherParserReadsBackEveryCharacter)
{
    QString text;
    QByteArray carried;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        const bool isCarried = c == 9 || c == 10 || c == 13 || (c > 31 && c < 0xD800) ||
                               (c > 0xDFFF && c != 0xFFFE && c != 0xFFFF);
        const QString one = c < 0x10000 ? QString(QChar(c)) : QString::fromUcs4(&c, 1);
        text += one + u'x';
        carried += (isCarried ? one.toUtf8() : "\xEF\xBF\xBD") + 'x';
    }
    QDomDocument document;
    const TestFolder folder;
    const Node node = Node::create(text, text);
    EXPECT_TRUE(node->toXml(document).attribute(u"name"_s).isValidUtf16());
    ASSERT_TRUE(node->saveToFile(folder.path(u"."_s), u"file"_s));
    const QString attributes = u"concat(/Node/@name, /Node/@description)"_s;
    QProcess parser;
    parser.start(u"xmllint"_s, {u"--huge"_s, u"--xpath"_s, attributes, folder.path(u"file"_s)});
    ASSERT_TRUE(parser.waitForFinished()) << "this test needs the program xmllint";
    EXPECT_TRUE(parser.readAllStandardOutput() == carried + carried + '\n')
        << parser.readAllStandardError().left(500).toStdString();
}

void runOnStack(uint kibibytes, const std::function<void()>& action)
{
    const std::unique_ptr<QThread> thread(QThread::create(action));
    thread->setStackSize((kibibytes + VELOR_SANITIZER_STACK) << 10);
    thread->start();
    thread->wait();
}

TEST(VelorDebugTraceNode, TenThousandLevelsAreChangedAndFreedOnAStackOf8MiB)
{
    const int levels = QSysInfo::buildCpuArchitecture() == u"s390x"_s ? 5000 : 10000; // has larger frames
    runOnStack(8 << 10, [levels] {
        QList<Node> nodes = chain(levels);
        nodes.constFirst()->setDebugEnabled(false);
        nodes.constLast()->addGroup(u"g"_s, QString());
        EXPECT_EQ(nodes.constLast()->getChild(u"g"_s), nullptr);
        nodes.constFirst()->clear();
        const WeakNode root = nodes.constFirst();
        nodes.remove(0, nodes.size() - 1); // the last node keeps all its ancestors, and ends them with it
        EXPECT_FALSE(root.isNull());
        nodes.clear();
        EXPECT_TRUE(root.isNull());
    });
}

TEST(VelorDebugTraceNode, ATreeIsSavedOrRefusedByTheStackThatIsLeft)
{
    const TestFolder folder;
    QList<Node> nodes = chain(20000);
    const auto save = [&](int levels, const QString& file) {
        return nodes.at(nodes.size() - levels)->saveToFile(folder.path(u"."_s), file);
    };
    for (const auto& [kibibytes, promised] : {std::pair(256U, 80), {1024U, 400}, {8192U, 3000}}) {
        runOnStack(kibibytes, [&] {
            const QString file = QString::number(kibibytes);
            int saved = 0;
            for (int levels = 1; save(levels, file); levels = std::max(promised, levels + promised / 5)) {
                saved = levels;
            }
            EXPECT_GE(saved, promised);
            EXPECT_FALSE(save(20000, file));
            EXPECT_FALSE(save(20000, u"refused"_s));
            EXPECT_EQ(QByteArray::fromStdString(fileBytes(folder.path(file))).count("<Node"), saved);
        });
    }
    nodes.constLast()->addChild(nodes.constLast());
    EXPECT_FALSE(save(1, u"refused"_s)) << "the tree is endless";
    *nodes.constLast() = VelorDebugTraceNode(QString(), QString()); // ends it
    EXPECT_EQ(fileBytes(folder.path(u"refused"_s)), "(missing)");
    for (; !nodes.isEmpty(); nodes.removeLast()) { // from below, which needs no stack
        nodes.constLast()->clear();
    }
}

/// Its element stands below 50,000 others.
class DeepNode : public VelorDebugTraceNode
{
public:
    using VelorDebugTraceNode::VelorDebugTraceNode;

    QDomElement toXml(QDomDocument& document) override
    {
        QDomElement element = VelorDebugTraceNode::toXml(document);
        for (int level = 0; level < 50000; ++level) {
            QDomElement parent = document.createElement(u"Level"_s);
            parent.appendChild(element);
            element = parent;
        }
        return element;
    }
};

TEST(VelorDebugTraceNode, ElementsOfAnOverrideThatAreTooDeepAreRefused)
{
    const TestFolder folder;
    runOnStack(256, [&] {
        const auto node = QSharedPointer<DeepNode>::create(u"deep"_s, QString());
        EXPECT_FALSE(node->saveToFile(folder.path(u"."_s), QString()));
    });
    EXPECT_EQ(fileBytes(folder.path(u"deep.xml"_s)), "(missing)");
}

} // namespace
