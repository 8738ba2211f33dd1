#include "Search.h"

#include <Velor.Base/VelorDebugTrace.h>

#include <QtCore/QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const KelbSynonyms* synonymsOf(const Query& query) { return query.synonyms ? &*query.synonyms : nullptr; }

bool meets(const QString& tag, const QString& other, const KelbSynonyms* synonyms, bool ignoreGender)
{
    const KelbTags one(QStringList{tag});
    return !one.compareTags(KelbTags(QStringList{other}), synonyms, ignoreGender).isEmpty();
}

/// A tag that does not even meet itself is left out for its gender.
bool isLeftOut(const QString& tag, const Query& query)
{
    return !meets(tag, tag, synonymsOf(query), query.ignoreGender);
}

void addNode(VelorDebugTraceNode& parent, const QString& name, const QString& description)
{
    parent.addChild(QSharedPointer<VelorDebugTraceNode>::create(name, description));
}

void traceTag(VelorDebugTraceNode& parent, const QString& tag, const Query& query)
{
    if (isLeftOut(tag, query)) {
        addNode(parent, tag, u"left out: gender"_s);
        return;
    }
    for (const QString& asked : query.tags.getTags()) {
        if (meets(tag, asked, nullptr, false)) {
            addNode(parent, tag + u" = "_s + asked, u"equal"_s);
        } else if (meets(tag, asked, synonymsOf(query), query.ignoreGender)) {
            addNode(parent, tag + u" ~ "_s + asked, u"synonyms"_s);
        }
    }
}

} // namespace

QList<QString> Query::matches(const KelbTags& theirs) const
{
    return theirs.compareTags(tags, synonymsOf(*this), ignoreGender);
}

QList<Hit> search(const QList<CatalogueItem>& items, const Query& query)
{
    QList<Hit> hits;
    for (const CatalogueItem& item : items) {
        QList<QString> matches = query.matches(item.tags);
        if (!matches.isEmpty()) {
            hits.append({item, std::move(matches)});
        }
    }
    std::stable_sort(hits.begin(), hits.end(),
                     [](const Hit& a, const Hit& b) { return a.matches.size() > b.matches.size(); });
    return hits;
}

bool writeTrace(const QString& path, const QList<Hit>& hits, const Query& query)
{
    const QFileInfo file(path);
    if (file.fileName().isEmpty()) {
        return false;
    }
    const QString traceName = u"catalogue"_s;
    const auto root = VelorDebugTrace::factory(traceName).getBaseNode(u"search"_s, query.tags.toString());
    int rank = 0;
    for (const Hit& hit : hits) {
        // Children are sorted by name: a number of fixed width keeps the order of the hits.
        const QString name = u"%1 %2"_s.arg(++rank, 6, 10, QLatin1Char('0')).arg(hit.item.name);
        const auto group = root->addGroup(
            name, u"%1, matches: %2"_s.arg(hit.item.category, QString::number(hit.matches.size())));
        for (const QString& tag : hit.item.tags.getTags()) {
            traceTag(*group, tag, query);
        }
    }
    const bool isWritten = root->saveToFile(file.path(), file.fileName());
    root->clear();
    VelorDebugTrace::releaseInstance(traceName);
    return isWritten;
}
