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

    /// The words of `query`, which are separated by commas; none for one that is empty or blank.
    static QStringList wordsOf(const QString& query);

    /// The clips that meet all `words`: by a tag, by a synonym of a tag, or by a part of the name.
    QList<Clip> find(const QStringList& words) const;

private:
    bool meets(const Clip& clip, const QString& word) const;

    QList<Clip> mClips;
    KelbSynonyms mSynonyms;
};
