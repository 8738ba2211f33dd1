#pragma once

#include "VelorBaseExport.h"

#include <QtCore/QEnableSharedFromThis>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QMutex>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>
#include <QtXml/QDomDocument>

#include <cstddef>
#include <utility>

class VelorDebugTraceNode;

/// A named collection of debug trees, reached from anywhere by its name: running code fills the trees, and
/// writes one to an XML file when somebody wants to look at it.
///
/// The library owns the instances; names differ by case. Any thread may call any operation of this class at
/// any time. The nodes that it hands out have no lock: see `VelorDebugTraceNode`. The destructor of a value
/// or a node that is let go of may call back here, but not while the process ends, when all instances go.
///
/// Removing a base node, or releasing a whole trace, does not free a tree: call `clear()` on its root first.
class VELOR_BASE_EXPORT VelorDebugTrace
{
public:
    /// The instance of that name, made on first demand. The reference is good until `releaseInstance` of
    /// that name or the end of the process, and may be used by any thread until then.
    static VelorDebugTrace& factory(const QString& name);

    /// Destroys the instance of that name, for which nobody may hold a reference any more. A later `factory`
    /// makes a new and empty one. An absent name does nothing.
    static void releaseInstance(const QString& name);

    Q_DISABLE_COPY_MOVE(VelorDebugTrace)
    ~VelorDebugTrace();

    /// The root node of that name, made on first demand. A node that is there keeps its own description.
    QSharedPointer<VelorDebugTraceNode> getBaseNode(const QString& name, const QString& description);

    /// The youngest of the root nodes, null if there is none.
    QSharedPointer<VelorDebugTraceNode> lastBaseNode();

    /// Lets go of the root node of that name; an absent name does nothing.
    void removeBaseNode(const QString& name);

    /// Lets go of all root nodes.
    void clearBaseNodes();

    /// Sets the value of `key`, replacing any former one. Metadata is not part of any dump.
    void addMetadata(const QString& key, const QVariant& value);

    /// A copy of the value of `key`, an invalid variant if there is none.
    QVariant getMetadata(const QString& key);

private:
    using BaseNodes = QList<std::pair<QString, QSharedPointer<VelorDebugTraceNode>>>;

    VelorDebugTrace();

    /// The first entry of that name, or the end. The caller holds `mMutex`.
    BaseNodes::iterator findNodeByName(const QString& name);

    BaseNodes mBaseNodes; ///< In the order of their creation.
    QMap<QString, QVariant> mMetadata;
    QMutex mMutex; ///< Guards the fields above.

    static QMutex sMultitonMutex; ///< Guards `sInstances`.
    static QMap<QString, QSharedPointer<VelorDebugTrace>> sInstances;
};

/// A node of a debug tree: a name, a free description, and children that are sorted by their names, by UTF-16
/// units.
///
/// Nodes live in `QSharedPointer`. A parent and its child hold each other strongly, so a handle on any node
/// keeps all its ancestors alive, and a tree is NOT freed when its last outside handle goes: whoever is done
/// with a tree calls `clear()` on its root. That takes the tree apart and frees every node that has no other
/// owner.
///
/// A tree belongs to one thread at a time; handing it from thread to thread is the caller's to order.
///
/// Depth: every operation on a subtree recurses. On a stack of 8 MiB, `clear()`, `setDebugEnabled()` and the
/// end of the nodes are safe for 10,000 levels, on s390x for 5,000. Saving goes through Qt's DOM, which takes
/// more: see `saveToFile()`, which refuses what is too deep.
///
/// A node must not come below itself. Nothing checks that but `saveToFile()`: such a loop is never freed, and
/// `clear()`, `setDebugEnabled()` and `toXml()` recurse until the stack ends.
class VELOR_BASE_EXPORT VelorDebugTraceNode : public QEnableSharedFromThis<VelorDebugTraceNode>
{
public:
    /// An enabled node without parent, children and type.
    VelorDebugTraceNode(const QString& name, const QString& description);

    /// The copy shares parent and children with its source, but is itself nobody's child, and the children
    /// keep their parent.
    VelorDebugTraceNode(const VelorDebugTraceNode& other) = default;

    /// Takes over what the copy constructor does. A parent goes on listing this node under its former name.
    VelorDebugTraceNode& operator=(const VelorDebugTraceNode& other) = default;

    virtual ~VelorDebugTraceNode();

    /// The node's name, and its key among the children of its parent.
    const QString& getName() const;

    /// The child of that name, null if there is none.
    QSharedPointer<VelorDebugTraceNode> getChild(const QString& name) const;

    /// Takes `child`, which must not be null, and becomes its parent; a disabled node does nothing instead.
    /// A child of the same name is replaced, and keeps this node for its parent. The former parent of `child`
    /// goes on listing it. A node that no `QSharedPointer` owns takes children too, but their parent is null.
    void addChild(const QSharedPointer<VelorDebugTraceNode>& child);

    /// Adds a new group node, replacing a child of the same name, and returns it. When this node is disabled,
    /// the group that is returned is a tree of its own.
    QSharedPointer<VelorDebugTraceNode> addGroup(const QString& name, const QString& description);

    /// Has `parent`, which must not be null, add this node, which a `QSharedPointer` must own.
    void setParent(const QSharedPointer<VelorDebugTraceNode>& parent);

    /// Whether this node and all nodes below it take children from now on; nothing else depends on it. A node
    /// starts enabled, whatever its parent is when it is added.
    void setDebugEnabled(bool enabled);

    /// Clears each child, in the order of their names, then lets go of all children and empties the
    /// description. Name, type, parent and the enabled state stay.
    virtual void clear();

    /// The element of this node and all below it, made by `document` but not attached to it: `Node`, with the
    /// attributes `name`, and `description` and `type` where they are not empty, and the children's elements.
    ///
    /// What XML 1.0 cannot carry (control characters except tab and line ends, U+FFFE, U+FFFF, lone
    /// surrogates) becomes U+FFFD; a parser reads everything else back as it was, line ends included. An
    /// override that sets attributes of its own has to care for this itself.
    virtual QDomElement toXml(QDomDocument& document);

    /// Writes the element of this node as an XML document in UTF-8, without a declaration, indented by 4.
    /// Qt writes an element's attributes in any order, which differs from run to run.
    ///
    /// `path` is a directory, which is made with its parents if it is absent; empty means the current one.
    /// `file` is taken as it is; where it is empty, the file is named by this node's name and `.xml`. An
    /// existing file is replaced. False if the file cannot be opened; a failure to write, as on a full disk,
    /// is not seen.
    ///
    /// Qt writes the elements by recursion. For a tree that is too deep for what is left of the calling
    /// thread's stack, endless ones included, this returns false before anything on disk is touched; so it
    /// does for elements that overrides of `toXml()` nest too deep. 400 levels fit a stack of 1 MiB and 3,000
    /// one of 8 MiB, if an override takes at most 1 KiB of stack itself.
    ///
    /// The time grows linearly with the number of nodes, but with the square of the number of `<`, `&`, `"`
    /// and line ends in a single text: 100,000 of them in one description take a tenth of a second, a million
    /// ten seconds.
    bool saveToFile(const QString& path, const QString& file);

protected:
    QString mName;             ///< Also the key in the parent: not for subclasses to change.
    QString mDescription;      ///< Left out of the XML where empty.
    QString mType;             ///< Left out of the XML where empty.
    bool mDebugEnabled = true; ///< Whether this node takes children.
    QSharedPointer<VelorDebugTraceNode> mParent;                  ///< Null at the top.
    QMap<QString, QSharedPointer<VelorDebugTraceNode>> mChildren; ///< Each under its name.

private:
    bool isDeeperThan(std::size_t levels) const;
};

/// A node of a type; the library has one such type, the group.
template <typename T>
class VelorDebugGenericNode;

/// A node that groups others. In the XML it has the type "Group", and is else like any node.
template <>
class VelorDebugGenericNode<void> : public VelorDebugTraceNode
{
public:
    /// A group without children.
    VelorDebugGenericNode(const QString& name, const QString& description)
        : VelorDebugTraceNode(name, description)
    {
        mType = QStringLiteral("Group");
    }

    QDomElement toXml(QDomDocument& document) override { return VelorDebugTraceNode::toXml(document); }
};
