#pragma once

#include <Velor.Base/KelbTags.h>
#include <Velor.Base/VelorDropData.h>

#include <QtCore/QList>
#include <QtCore/QString>

/// One motion of the catalogue.
struct Clip
{
    QString name;
    KelbTags tags;
};

/// "1 clip", "2 clips".
QString clipCount(qsizetype count);

/// `text`, which may come from another process, as long as a widget can show it at once.
QString shownText(const QString& text);

/// Logs what the user should see.
void logInfo(const QString& text);

/// The clips as they travel: each item's name is the clip's, its data the text of the tags in UTF-8.
VelorDropData toPayload(const QList<Clip>& clips);

/// The clips of a payload, in its order; none if the payload holds something else than clips.
QList<Clip> clipsOf(const VelorDropData& payload);
