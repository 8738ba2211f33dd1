#pragma once

#include <Velor.Base/KelbTags.h>
#include <Velor.Base/VelorVersion.h>

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

/// One motion clip of a catalogue.
struct CatalogueItem
{
    QString category;
    QString name;
    VelorVersion version; ///< Of the library that is needed to play the clip; null where the file names none.
    KelbTags tags;        ///< Its own tags, then those of its category.
};

/// The items of the catalogue file at `path`, in the order of the file; docs/metadata.md has the format.
/// Nothing, with one line in `error`, when the file cannot be opened or is no catalogue.
std::optional<QList<CatalogueItem>> loadCatalogue(const QString& path, QString& error);
