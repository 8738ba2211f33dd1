#pragma once

#include "Catalogue.h"

#include <Velor.Base/KelbSynonyms.h>

#include <optional>

/// What is asked of a catalogue.
struct Query
{
    KelbTags tags;
    std::optional<KelbSynonyms> synonyms; ///< Without them, tags meet only where they are equal.
    bool ignoreGender = false;            ///< Male and female tags do not count; needs `synonyms`.

    /// The tags among `theirs` that meet the query, one for each pair.
    QList<QString> matches(const KelbTags& theirs) const;
};

/// An item that meets a query.
struct Hit
{
    CatalogueItem item;
    QList<QString> matches; ///< The item's tags, one for each pair with a tag of the query.
};

/// The items with a match, those with the most first, otherwise in the order of `items`.
QList<Hit> search(const QList<CatalogueItem>& items, const Query& query);

/// Writes to the XML file at `path` why each hit was found: a group for each hit, in order, with a node for
/// each of its tags that meets a tag of the query or was left out. False when `path` names no file or
/// one that cannot be opened.
bool writeTrace(const QString& path, const QList<Hit>& hits, const Query& query);
