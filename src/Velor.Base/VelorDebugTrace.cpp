#include "VelorDebugTrace.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMutexLocker>
#include <QtCore/QTextStream>

#include <algorithm>
#include <utility>

namespace {

constexpr int XmlIndent = 4;

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

} // namespace

// Both are there before any code runs, and the mutex outlives the map, since it is built first.
constinit QMutex VelorDebugTrace::sMultitonMutex;
constinit QMap<QString, QSharedPointer<VelorDebugTrace>> VelorDebugTrace::sInstances;

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
    const QDir directory(path);
    if (!directory.exists()) {
        directory.mkpath(QStringLiteral("."));
    }
    QFile output(directory.filePath(file.isEmpty() ? mName + QStringLiteral(".xml") : file));
    if (!output.open(QIODevice::WriteOnly | QIODevice::Text)) {
        return false;
    }
    QDomDocument document;
    document.appendChild(toXml(document));
    QTextStream stream(&output);
    document.save(stream, XmlIndent, QDomNode::EncodingFromDocument);
    return true;
}
