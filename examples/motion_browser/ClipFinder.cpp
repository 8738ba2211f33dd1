#include "ClipFinder.h"

#include "catalogue/Catalogue.h"

#include <algorithm>

bool ClipFinder::load(const QString& cataloguePath, const QString& synonymsPath, QString& error)
{
    const auto items = loadCatalogue(cataloguePath, error);
    if (!items) {
        return false;
    }
    if (!mSynonyms.load(synonymsPath)) {
        error = QStringLiteral("cannot read %1, or it holds no synonyms").arg(synonymsPath);
        return false;
    }
    for (const CatalogueItem& item : *items) {
        // Sorted, as the tags of a dropped clip are.
        mClips.append({item.name, KelbTags(item.tags.toStringList())});
    }
    return true;
}

QStringList ClipFinder::wordsOf(const QString& query)
{
    QStringList words;
    for (const QString& word : query.split(u',')) {
        words.append(word.trimmed());
    }
    words.removeAll(QString());
    return words;
}

QList<Clip> ClipFinder::find(const QStringList& words) const
{
    QList<Clip> found;
    for (const Clip& clip : mClips) {
        if (std::all_of(words.begin(), words.end(), [&](const QString& word) { return meets(clip, word); })) {
            found.append(clip);
        }
    }
    return found;
}

bool ClipFinder::meets(const Clip& clip, const QString& word) const
{
    const KelbTags asked(QList<QString>{word});
    return !clip.tags.compareTags(asked, &mSynonyms, false).isEmpty() ||
           clip.name.contains(word, Qt::CaseInsensitive);
}
