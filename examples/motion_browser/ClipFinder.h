#pragma once

#include "Clip.h"

#include <Velor.Base/KelbSynonyms.h>

/// The clips of a catalogue file, and the synonyms by which they are found.
class ClipFinder
{
public:
    /// Reads both files; false, with a line for the user in `error`, when one of them cannot be read.
    bool load(const QString& cataloguePath, const QString& synonymsPath, QString& error);

    const QList<Clip>& clips() const { return mClips; }

    /// The clips that meet all words of `query`, which are separated by commas: by a tag, by a synonym of a
    /// tag, or by a part of the name. All clips for an empty query.
    QList<Clip> find(const QString& query) const;

private:
    bool meets(const Clip& clip, const QString& word) const;

    QList<Clip> mClips;
    KelbSynonyms mSynonyms;
};
