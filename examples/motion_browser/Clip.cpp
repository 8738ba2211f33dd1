#include "Clip.h"

#include <Velor.Base/VelorLog.h>

QString clipCount(qsizetype count)
{
    return count == 1 ? QStringLiteral("1 clip") : QStringLiteral("%1 clips").arg(count);
}

QString shownText(const QString& text)
{
    constexpr qsizetype Longest = 500;
    return text.size() <= Longest ? text : text.first(Longest) + QStringLiteral("...");
}

void logInfo(const QString& text) { VelorLogManager::getSingleton().logMessage(text.toStdString()); }

VelorDropData toPayload(const QList<Clip>& clips)
{
    VelorDropData payload({}, VelorDropData::Clip);
    for (const Clip& clip : clips) {
        payload.addItem({clip.name, clip.tags.toString().toUtf8()});
    }
    return payload;
}

QList<Clip> clipsOf(const VelorDropData& payload)
{
    QList<Clip> clips;
    if (payload.getType() == VelorDropData::Clip) {
        for (const VelorDropData::Item& item : payload.getItems()) {
            clips.append({item.name, KelbTags(QString::fromUtf8(item.data))});
        }
    }
    return clips;
}
