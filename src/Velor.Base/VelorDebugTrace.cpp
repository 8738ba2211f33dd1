#include "VelorDebugTrace.h"

#include "Win32.h"
#include "XmlForm.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMutexLocker>
#include <QtCore/QSet>
#include <QtCore/QTextStream>

#include <algorithm>
#include <utility>

namespace {

/// What a saving takes of the stack whatever its depth: the text stream, the file, the system's calls.
constexpr std::size_t StackReserve = std::size_t(24) * 1024;
/// For toXml, overrides of it included, and for the end of the DOM, whose levels take some 500 and 70 bytes.
constexpr std::size_t LeastBytesPerLevel = 2048;

bool isSurrogatePair(const QString& text, qsizetype at)
{
    return text.at(at).isHighSurrogate() && at + 1 < text.size() && text.at(at + 1).isLowSurrogate();
}

/// The production `Char` of XML 1.0, for a unit that is no half of a pair.
bool isXmlCharacter(QChar c)
{
    return c == u'\t' || c == u'\n' || c == u'\r' || (c >= u' ' && c < u'\uFFFE' && !c.isSurrogate());
}

/// The DOM writes any unit as it is, and a single bad one makes the whole file unreadable.
QString xmlText(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isSurrogatePair(text, i)) {
            ++i;
        } else if (!isXmlCharacter(text.at(i))) {
            text[i] = QChar::ReplacementCharacter;
        }
    }
    return text;
}

void setUnlessEmpty(QDomElement& element, const QString& attribute, const QString& text)
{
    if (!text.isEmpty()) {
        element.setAttribute(attribute, xmlText(text));
    }
}

void writeDocument(const QDomDocument& document, QIODevice& output)
{
    QTextStream stream(&output);
    saveIndented(document, stream);
}

/// Takes what is written to it and keeps how little of the stack was left meanwhile.
class StackGauge : public QIODevice
{
public:
    StackGauge() { open(WriteOnly | Unbuffered); }
    std::size_t least() const { return mLeast; }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 size) override
    {
        mLeast = std::min(mLeast, remainingStack());
        return size;
    }

private:
    std::size_t mLeast = remainingStack();
};

/// What is left of the stack while the innermost of `levels` elements is written. Its text is longer than
/// what a text stream collects.
std::size_t stackLeftAtLevel(int levels)
{
    QDomDocument document;
    QDomElement element = document.createElement(QStringLiteral("Node"));
    element.setAttribute(QStringLiteral("name"), QString(1 << 16, u'x'));
    while (--levels > 0) {
        QDomElement parent = document.createElement(QStringLiteral("Node"));
        parent.appendChild(element);
        element = parent;
    }
    document.appendChild(element);
    StackGauge gauge;
    writeDocument(document, gauge);
    return gauge.least();
}

/// What a level takes of the stack as Qt saves it, with an eighth for safety. That depends on Qt's version
/// and build: 2,000 bytes in the release build of Qt 6.4, nothing where Qt saves without recursion. So it is
/// measured, once.
std::size_t bytesPerLevel()
{
    static const std::size_t measured = stackLeftAtLevel(1) - stackLeftAtLevel(2);
    return std::max(LeastBytesPerLevel, measured + measured / 8);
}

/// How many levels can be saved on the stack that is left.
std::size_t savableLevels()
{
    const std::size_t left = remainingStack();
    return left > StackReserve ? (left - StackReserve) / bytesPerLevel() : 0;
}

bool isElementDeeperThan(std::size_t levels, const QDomElement& root)
{
    QList<QDomNode> level{root};
    for (; !level.isEmpty() && levels > 0; --levels) {
        QList<QDomNode> below;
        for (const QDomNode& node : std::as_const(level)) {
            for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
                below.append(child);
            }
        }
        level.swap(below);
    }
    return !level.isEmpty();
}

/// Frees a tree of any depth, since that of the DOM itself recurses.
void takeApart(const QDomElement& root)
{
    QList<QDomNode> nodes{root};
    while (!nodes.isEmpty()) {
        QDomNode node = nodes.takeLast();
        while (node.hasChildNodes()) {
            nodes.append(node.removeChild(node.firstChild()));
        }
    }
}

} // namespace

// Constructed when the library is loaded, in this order, so that the mutex outlives the map.
QMutex VelorDebugTrace::sMultitonMutex;
QMap<QString, QSharedPointer<VelorDebugTrace>> VelorDebugTrace::sInstances;

VelorDebugTrace& VelorDebugTrace::factory(const QString& name)
{
    const QMutexLocker lock(&sMultitonMutex);
    QSharedPointer<VelorDebugTrace>& instance = sInstances[name];
    if (!instance) {
        instance.reset(new VelorDebugTrace);
    }
    return *instance;
}

// What is removed below goes only after the lock: the destructor of a caller's node or value may call back.

void VelorDebugTrace::releaseInstance(const QString& name)
{
    QSharedPointer<VelorDebugTrace> released;
    const QMutexLocker lock(&sMultitonMutex);
    released = sInstances.take(name);
}

VelorDebugTrace::VelorDebugTrace() = default;

VelorDebugTrace::~VelorDebugTrace() = default;

QSharedPointer<VelorDebugTraceNode> VelorDebugTrace::getBaseNode(const QString& name,
                                                                 const QString& description)
{
    const QMutexLocker lock(&mMutex);
    const auto found = findNodeByName(name);
    if (found != mBaseNodes.end()) {
        return found->second;
    }
    auto node = QSharedPointer<VelorDebugTraceNode>::create(name, description);
    mBaseNodes.append({name, node});
    return node;
}

QSharedPointer<VelorDebugTraceNode> VelorDebugTrace::lastBaseNode()
{
    const QMutexLocker lock(&mMutex);
    return mBaseNodes.isEmpty() ? nullptr : mBaseNodes.constLast().second;
}

void VelorDebugTrace::removeBaseNode(const QString& name)
{
    QSharedPointer<VelorDebugTraceNode> released;
    const QMutexLocker lock(&mMutex);
    const auto found = findNodeByName(name);
    if (found != mBaseNodes.end()) {
        released.swap(found->second);
        mBaseNodes.erase(found);
    }
}

void VelorDebugTrace::clearBaseNodes()
{
    BaseNodes released;
    const QMutexLocker lock(&mMutex);
    released.swap(mBaseNodes);
}

void VelorDebugTrace::addMetadata(const QString& key, const QVariant& value)
{
    QVariant released = value;
    const QMutexLocker lock(&mMutex);
    released.swap(mMetadata[key]);
}

QVariant VelorDebugTrace::getMetadata(const QString& key)
{
    const QMutexLocker lock(&mMutex);
    return mMetadata.value(key);
}

VelorDebugTrace::BaseNodes::iterator VelorDebugTrace::findNodeByName(const QString& name)
{
    return std::find_if(mBaseNodes.begin(), mBaseNodes.end(),
                        [&name](const auto& entry) { return entry.first == name; });
}

VelorDebugTraceNode::VelorDebugTraceNode(const QString& name, const QString& description)
    : mName(name)
    , mDescription(description)
{}

VelorDebugTraceNode::~VelorDebugTraceNode() = default;

const QString& VelorDebugTraceNode::getName() const { return mName; }

QSharedPointer<VelorDebugTraceNode> VelorDebugTraceNode::getChild(const QString& name) const
{
    return mChildren.value(name);
}

void VelorDebugTraceNode::addChild(const QSharedPointer<VelorDebugTraceNode>& child)
{
    if (!mDebugEnabled) {
        return;
    }
    child->mParent = sharedFromThis();
    mChildren.insert(child->mName, child);
}

QSharedPointer<VelorDebugTraceNode> VelorDebugTraceNode::addGroup(const QString& name,
                                                                  const QString& description)
{
    const auto group = QSharedPointer<VelorDebugGenericNode<void>>::create(name, description);
    addChild(group);
    return group;
}

void VelorDebugTraceNode::setParent(const QSharedPointer<VelorDebugTraceNode>& parent)
{
    parent->addChild(sharedFromThis());
}

void VelorDebugTraceNode::setDebugEnabled(bool enabled)
{
    mDebugEnabled = enabled;
    for (const auto& child : std::as_const(mChildren)) {
        child->setDebugEnabled(enabled);
    }
}

void VelorDebugTraceNode::clear()
{
    // The last thing to go, since a child may hold the last reference to this node.
    const auto children = mChildren;
    for (const auto& child : children) {
        child->clear();
    }
    mChildren.clear();
    mDescription.clear();
}

QDomElement VelorDebugTraceNode::toXml(QDomDocument& document)
{
    QDomElement element = document.createElement(QStringLiteral("Node"));
    element.setAttribute(QStringLiteral("name"), xmlText(mName));
    setUnlessEmpty(element, QStringLiteral("description"), mDescription);
    setUnlessEmpty(element, QStringLiteral("type"), mType);
    for (const auto& child : std::as_const(mChildren)) {
        element.appendChild(child->toXml(document));
    }
    return element;
}

bool VelorDebugTraceNode::saveToFile(const QString& path, const QString& file)
{
    const std::size_t levels = savableLevels();
    if (isDeeperThan(levels)) {
        return false;
    }
    QDomDocument document;
    const QDomElement element = toXml(document);
    // An override of toXml may have put in levels of its own.
    if (isElementDeeperThan(levels, element)) {
        takeApart(element);
        return false;
    }
    document.appendChild(element);
    const QDir directory(path);
    if (!directory.exists()) {
        directory.mkpath(QStringLiteral("."));
    }
    QFile output(directory.filePath(file.isEmpty() ? mName + QStringLiteral(".xml") : file));
    if (!output.open(QIODevice::WriteOnly | QIODevice::Text)) {
        return false;
    }
    writeDocument(document, output);
    return true;
}

/// Counts level by level: nothing recurses, a node that is reached on several ways counts once for each
/// level, and where a node is below itself the levels do not end.
bool VelorDebugTraceNode::isDeeperThan(std::size_t levels) const
{
    QSet<const VelorDebugTraceNode*> level{this};
    for (; !level.isEmpty() && levels > 0; --levels) {
        QSet<const VelorDebugTraceNode*> below;
        for (const VelorDebugTraceNode* node : std::as_const(level)) {
            for (const auto& child : node->mChildren) {
                below.insert(child.data());
            }
        }
        level.swap(below);
    }
    return !level.isEmpty();
}
