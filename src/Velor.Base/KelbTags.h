#pragma once

#include "VelorBaseExport.h"

#include <QtCore/QList>
#include <QtCore/QString>

class KelbSynonyms;
class QDebug;
class QDomElement;

/// The free words that one catalogue item carries, as an implicitly shared value. The words have a text form,
/// `jump, run`, and live in one attribute of an XML element that belongs to the caller.
///
/// There are three rules of case. Two tags are the same tag when QString::compare ignoring case
/// returns 0; `removeTag` alone compares exactly; and the questions that take synonyms ask those, which lower
/// both words. No tag is ever rewritten: of two equal tags, the first stays as it was spelled.
///
/// After `fromString` and `readXML` the list is sorted ignoring case and no two tags are equal;
/// `fromStringList` only sorts, and `addTag` and `learnFromTags` append. No operation reports an error, for
/// every text is valid. A set belongs to one thread at a time, as long as one of them changes it.
class VELOR_BASE_EXPORT KelbTags
{
public:
    /// "Default", the tag that an item gets from a text without tags.
    static const QString DefaultTag;
    /// "male", the word whose synonyms are the male tags.
    static const QString MaleTag;
    /// "female", the word whose synonyms are the female tags.
    static const QString FemaleTag;

    /// No tags at all, not even the default tag.
    KelbTags() = default;
    /// The tags of `text` as `fromString` reads it; a text without tags yields the default tag.
    KelbTags(const QString& text);
    /// See `fromStringList`.
    KelbTags(QList<QString> tags);

    /// The name of the XML attribute that holds the tags: "tags".
    virtual QString XMLElementName();
    /// Whether a text without tags yields the default tag: true.
    virtual bool usesDefault();

    /// Appends `tag`, empty or not, unless a tag equal ignoring case is there.
    void addTag(QString tag);
    /// Removes every tag that equals `tag` exactly, in case too. The last tag leaves an empty list.
    void removeTag(const QString& tag);
    /// `addTag` for each tag of `other`, in its order.
    void learnFromTags(const KelbTags& other);

    /// `fromString` on the attribute `XMLElementName` of `element`; a missing one is the same as an empty
    /// one.
    void readXML(const QDomElement& element);
    /// Sets the attribute `XMLElementName` of `element` to `toString`, also when that is empty.
    void writeXML(QDomElement& element);

    /// Replaces the list by the tags of `text`, which commas separate. Blanks (U+0020) in front of a tag go,
    /// those inside it and behind it stay, as does any other space character; empty tags vanish. A text
    /// without tags yields the default tag if `usesDefault`. The time for n tags grows as n log n.
    void fromString(const QString& text);
    /// Replaces the list by `tags`, sorted ignoring case and otherwise as they are. The order of tags equal
    /// ignoring case is open.
    void fromStringList(QList<QString> tags);

    /// The tags in list order with ", " between them. A tag that holds a comma or begins with a blank is
    /// not read back from this text.
    QString toString() const;
    /// The tags in list order.
    QList<QString> toStringList() const { return mTags; }
    /// The list itself, valid until this set changes.
    const QList<QString>& getTags() const { return mTags; }
    /// How many tags there are.
    /// @{
    int getSize() const { return static_cast<int>(mTags.size()); }
    bool isEmpty() const { return mTags.isEmpty(); }
    /// @}
    /// Leaves no tags at all, not even the default tag.
    void clear() { mTags.clear(); }
    /// Whether a tag equal ignoring case is in the list.
    bool hasTag(const QString& tag) const;

    /// The tags of this set that meet a tag of `other`, being equal ignoring case or synonyms. A tag stands
    /// in the result once for each tag of `other` that it meets, so that the length counts pairs.
    ///
    /// `synonyms` may be null: then only equality counts, and `ignoreGender` has no effect. Otherwise
    /// `ignoreGender` leaves the male and the female tags of both sets out.
    QList<QString> compareTags(const KelbTags& other, const KelbSynonyms* synonyms, bool ignoreGender) const;

    /// Whether a tag is a synonym of "male". The groups alone decide: even the tag "male" itself counts only
    /// where a group holds it. In these three questions `synonyms` must not be null.
    bool hasMaleTag(const KelbSynonyms* synonyms) const;
    /// Whether a tag is a synonym of "female", in the same way.
    bool hasFemaleTag(const KelbSynonyms* synonyms) const;
    /// Whether there are neither male nor female tags, or both.
    bool hasNoGenderTags(const KelbSynonyms* synonyms) const;

    /// Whether both lists are of one length and every tag of this set is in `other`, ignoring case, in any
    /// order. With duplicates, which `fromStringList` lets in, the two sides may answer differently: `a, a`
    /// equals `a, b`, and `a, b` does not equal `a, a`. So there is no qHash: a hash that follows this
    /// equality depends on no more than the number of tags.
    /// @{
    bool operator==(const KelbTags& other) const;
    bool operator!=(const KelbTags& other) const { return !(*this == other); }
    /// @}

    /// Writes `toString`.
    friend VELOR_BASE_EXPORT QDebug operator<<(QDebug debug, const KelbTags& tags);

private:
    QList<QString> mTags;
};

/// The tags of a category. They live in the attribute "categoryTags", and a text without tags yields none.
class VELOR_BASE_EXPORT VelorCategoryTags : public KelbTags
{
public:
    VelorCategoryTags() = default;
    /// As the constructor of `KelbTags`: unlike in `fromString`, a text without tags yields the default tag.
    VelorCategoryTags(const QString& text);

    QString XMLElementName() override;
    bool usesDefault() override;
};
