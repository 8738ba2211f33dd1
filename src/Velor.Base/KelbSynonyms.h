#pragma once

#include "VelorBaseExport.h"

#include <QtCore/QHashFunctions>
#include <QtCore/QList>
#include <QtCore/QString>

#include <algorithm>

class QDebug;
class QDomElement;

/// One group of words that mean the same, read from XML alone. The words are kept in lower case
/// (QString::toLower), in the order of the XML, duplicates and empty words included. A plain,
/// implicitly shared value; a moved-from group has no words.
class VELOR_BASE_EXPORT KelbSynonym
{
public:
    /// Adds the words of the attribute "values" of `element` behind those already there. Words are separated
    /// by a comma and exactly one blank; nothing is trimmed, so that `a,b` is one word. An empty or missing
    /// attribute adds nothing.
    void readXML(const QDomElement& element);

    /// Whether the group has no words.
    bool isEmpty() const { return mValues.isEmpty(); }

    /// Whether the group holds both words, in any case.
    bool areSynonyms(const QString& first, const QString& second) const;

    /// Exchanges the words without copying.
    void swap(KelbSynonym& other) noexcept { mValues.swap(other.mValues); }

    /// The same words in the same order.
    friend bool operator==(const KelbSynonym& a, const KelbSynonym& b) { return a.mValues == b.mValues; }

    /// Fits `==`.
    friend size_t qHash(const KelbSynonym& group, size_t seed = 0) { return qHash(group.mValues, seed); }

    /// Writes the words.
    friend VELOR_BASE_EXPORT QDebug operator<<(QDebug debug, const KelbSynonym& group);

private:
    friend class KelbSynonyms;

    bool holds(const QString& lowerFirst, const QString& lowerSecond) const;

    QList<QString> mValues;
};

Q_DECLARE_SHARED(KelbSynonym)

/// The groups of words that one or more synonyms files list, and the answer to whether two words stand
/// together in one of them. Nothing but `load` adds groups.
///
/// The set owns its groups. A copy has groups of its own, whose words are implicitly shared with the source;
/// a moved-from set has no groups. A set belongs to one thread at a time, as long as one of them changes it.
class VELOR_BASE_EXPORT KelbSynonyms
{
public:
    /// The name of the document element of a synonyms file: "KelbSynonyms".
    static const QString DocumentRoot;
    /// The name of the element of one group: "KelbSynonym".
    static const QString DocumentSynonymRoot;

    /// No groups, or those of `other`, as described above.
    /// @{
    KelbSynonyms() = default;
    KelbSynonyms(const KelbSynonyms& other);
    KelbSynonyms(KelbSynonyms&& other) noexcept;
    KelbSynonyms& operator=(KelbSynonyms other) noexcept;
    /// @}
    ~KelbSynonyms();

    /// Adds the groups of the XML file at `path` behind those already there; docs/metadata.md has the format.
    ///
    /// False, with the set as it was, when the file cannot be opened, is no well-formed XML, or has another
    /// document element. A file without a usable group is a success. Groups without words are left out,
    /// elements of other names are passed over. The time grows with the number of elements, but with the
    /// square of the number of attributes of one element. Elements nested ten thousand deep are safe on a
    /// stack of 1 MiB; Qt's document tree needs more stack for more.
    [[nodiscard]] bool load(const QString& path);

    /// Whether one group holds both words, in any case. Groups that share a word are not joined, and a word
    /// that stands in no group is no synonym, not even of itself. Each call walks the groups in order.
    bool areSynonyms(const QString& first, const QString& second) const;

    /// Exchanges the groups without copying.
    void swap(KelbSynonyms& other) noexcept { mGroups.swap(other.mGroups); }

    /// Equal groups in the same order.
    friend bool operator==(const KelbSynonyms& a, const KelbSynonyms& b)
    {
        return std::equal(a.mGroups.begin(), a.mGroups.end(), b.mGroups.begin(), b.mGroups.end(),
                          [](const KelbSynonym* one, const KelbSynonym* other) { return *one == *other; });
    }

    /// Fits `==`.
    friend size_t qHash(const KelbSynonyms& synonyms, size_t seed = 0)
    {
        for (const KelbSynonym* group : synonyms.mGroups) {
            seed = qHashMulti(seed, *group);
        }
        return seed;
    }

    /// Writes the groups.
    friend VELOR_BASE_EXPORT QDebug operator<<(QDebug debug, const KelbSynonyms& synonyms);

private:
    QList<KelbSynonym*> mGroups;
};

Q_DECLARE_SHARED(KelbSynonyms)
