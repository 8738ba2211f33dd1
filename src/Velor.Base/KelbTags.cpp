#include "KelbTags.h"

#include "KelbSynonyms.h"

#include <QtCore/QDebug>
#include <QtCore/QStringTokenizer>
#include <QtCore/QVarLengthArray>
#include <QtXml/QDomElement>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

bool isLess(QStringView a, QStringView b) { return a.compare(b, Qt::CaseInsensitive) < 0; }

bool isSameTag(QStringView a, QStringView b) { return a.compare(b, Qt::CaseInsensitive) == 0; }

QStringView withoutLeadingBlanks(QStringView text)
{
    const auto first = std::find_if(text.begin(), text.end(), [](QChar unit) { return unit != u' '; });
    return {first, text.end()};
}

/// The tags of `text` in the order of `QStringList::sort`. Equal ones become neighbours, the first of the
/// text in front, so that comparisons alone find duplicates, as in `addTag`.
QList<QString> tagsOf(const QString& text, bool usesDefault)
{
    QVarLengthArray<QStringView, 32> parts;
    for (const QStringView part : qTokenize(text, u',')) {
        if (const QStringView tag = withoutLeadingBlanks(part); !tag.isEmpty()) {
            parts.append(tag);
        }
    }
    // What `toString` has written is sorted.
    if (!std::is_sorted(parts.begin(), parts.end(), isLess)) {
        std::stable_sort(parts.begin(), parts.end(), isLess);
    }
    const auto end = std::unique(parts.begin(), parts.end(), isSameTag);

    QList<QString> tags;
    tags.reserve(std::distance(parts.begin(), end));
    std::for_each(parts.begin(), end, [&tags](QStringView tag) { tags.append(tag.toString()); });
    if (tags.isEmpty() && usesDefault) {
        tags.append(KelbTags::DefaultTag);
    }
    return tags;
}

bool isGenderTag(const QString& tag, const KelbSynonyms& synonyms)
{
    return synonyms.areSynonyms(tag, KelbTags::MaleTag) || synonyms.areSynonyms(tag, KelbTags::FemaleTag);
}

QList<QString> withoutGender(QList<QString> tags, const KelbSynonyms& synonyms)
{
    tags.removeIf([&](const QString& tag) { return isGenderTag(tag, synonyms); });
    return tags;
}

bool hasSynonymOf(const QString& word, const QList<QString>& tags, const KelbSynonyms& synonyms)
{
    return std::any_of(tags.begin(), tags.end(),
                       [&](const QString& tag) { return synonyms.areSynonyms(tag, word); });
}

} // namespace

const QString KelbTags::DefaultTag = QStringLiteral("Default");
const QString KelbTags::MaleTag = QStringLiteral("male");
const QString KelbTags::FemaleTag = QStringLiteral("female");

KelbTags::KelbTags(const QString& text)
    : mTags(tagsOf(text, true))
{}

KelbTags::KelbTags(QList<QString> tags) { fromStringList(std::move(tags)); }

QString KelbTags::XMLElementName() { return QStringLiteral("tags"); }

bool KelbTags::usesDefault() { return true; }

void KelbTags::addTag(QString tag)
{
    if (!hasTag(tag)) {
        mTags.append(std::move(tag));
    }
}

void KelbTags::removeTag(const QString& tag) { mTags.removeAll(tag); }

void KelbTags::learnFromTags(const KelbTags& other)
{
    for (const QString& tag : other.mTags) {
        addTag(tag);
    }
}

void KelbTags::readXML(const QDomElement& element) { fromString(element.attribute(XMLElementName())); }

void KelbTags::writeXML(QDomElement& element) { element.setAttribute(XMLElementName(), toString()); }

void KelbTags::fromString(const QString& text) { mTags = tagsOf(text, usesDefault()); }

void KelbTags::fromStringList(QList<QString> tags)
{
    mTags = std::move(tags);
    mTags.sort(Qt::CaseInsensitive);
}

QString KelbTags::toString() const { return mTags.join(QStringLiteral(", ")); }

bool KelbTags::hasTag(const QString& tag) const { return mTags.contains(tag, Qt::CaseInsensitive); }

QList<QString> KelbTags::compareTags(const KelbTags& other, const KelbSynonyms* synonyms,
                                     bool ignoreGender) const
{
    const bool dropsGender = ignoreGender && synonyms != nullptr;
    const QList<QString> ours = dropsGender ? withoutGender(mTags, *synonyms) : mTags;
    const QList<QString> theirs = dropsGender ? withoutGender(other.mTags, *synonyms) : other.mTags;
    QList<QString> matches;
    for (const QString& our : ours) {
        for (const QString& their : theirs) {
            if (isSameTag(our, their) || (synonyms != nullptr && synonyms->areSynonyms(our, their))) {
                matches.append(our);
            }
        }
    }
    return matches;
}

bool KelbTags::hasMaleTag(const KelbSynonyms* synonyms) const
{
    return hasSynonymOf(MaleTag, mTags, *synonyms);
}

bool KelbTags::hasFemaleTag(const KelbSynonyms* synonyms) const
{
    return hasSynonymOf(FemaleTag, mTags, *synonyms);
}

bool KelbTags::hasNoGenderTags(const KelbSynonyms* synonyms) const
{
    return hasMaleTag(synonyms) == hasFemaleTag(synonyms);
}

bool KelbTags::operator==(const KelbTags& other) const
{
    return mTags.size() == other.mTags.size() &&
           std::all_of(mTags.begin(), mTags.end(), [&](const QString& tag) { return other.hasTag(tag); });
}

QDebug operator<<(QDebug debug, const KelbTags& tags)
{
    const QDebugStateSaver saver(debug);
    return debug.nospace() << "KelbTags(" << tags.toString() << ')';
}

VelorCategoryTags::VelorCategoryTags(const QString& text)
    : KelbTags(text)
{}

QString VelorCategoryTags::XMLElementName() { return QStringLiteral("categoryTags"); }

bool VelorCategoryTags::usesDefault() { return false; }
