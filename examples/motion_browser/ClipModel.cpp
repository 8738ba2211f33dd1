#include "ClipModel.h"

#include <Velor.Base/VelorLog.h>

#include <QtCore/QMimeData>
#include <QtGui/QTextDocument>

#include <algorithm>

namespace {

constexpr int NamesInLog = 5;

/// The first names of a list for a line of the log. A name may come from another process: no line ends.
QString shortList(const QList<Clip>& clips)
{
    QStringList names;
    for (const Clip& clip : clips.first(std::min<qsizetype>(clips.size(), NamesInLog))) {
        names.append(shownText(clip.name).simplified());
    }
    if (clips.size() > NamesInLog) {
        names.append(QStringLiteral("..."));
    }
    return names.join(QStringLiteral(", "));
}

/// The whole name, which a list may elide, and the tags. What looks like a tag of HTML is shown as it is, for
/// a tooltip would load the images that it names.
QString toolTip(const Clip& clip)
{
    // A name that is wider than the screen may be broken behind each underscore.
    const QString name = shownText(clip.name).replace(u'_', QStringLiteral("_\u200B"));
    return Qt::convertFromPlainText(name + u'\n' + shownText(clip.tags.toString()), Qt::WhiteSpaceNormal);
}

} // namespace

ClipModel::ClipModel(Kind kind, QObject* parent)
    : QAbstractListModel(parent)
    , mKind(kind)
{}

void ClipModel::setClips(const QList<Clip>& clips)
{
    beginResetModel();
    mClips = clips;
    endResetModel();
}

void ClipModel::insertClips(int row, const QList<Clip>& clips)
{
    if (clips.isEmpty()) {
        return;
    }
    beginInsertRows({}, row, row + static_cast<int>(clips.size()) - 1);
    mClips = mClips.first(row) + clips + mClips.sliced(row);
    endInsertRows();
    logInfo(QStringLiteral("Added %1 to the playlist: %2").arg(clipCount(clips.size()), shortList(clips)));
}

int ClipModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mClips.size());
}

QVariant ClipModel::data(const QModelIndex& index, int role) const
{
    const Clip& clip = mClips.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return shownText(clip.name);
    case Qt::ToolTipRole:
        return toolTip(clip);
    case TagsRole:
    case Qt::AccessibleDescriptionRole:
        return shownText(clip.tags.toString());
    default:
        return {};
    }
}

Qt::ItemFlags ClipModel::flags(const QModelIndex& index) const
{
    // Clips are dropped between others, never onto one.
    if (index.isValid()) {
        return QAbstractListModel::flags(index) | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
    }
    return mKind == Playlist ? Qt::ItemIsDropEnabled : Qt::NoItemFlags;
}

bool ClipModel::removeRows(int row, int count, const QModelIndex& parent)
{
    beginRemoveRows(parent, row, row + count - 1);
    mClips.remove(row, count);
    endRemoveRows();
    return true;
}

QStringList ClipModel::mimeTypes() const { return {QString::fromLatin1(VelorDropData::MetaTypeName)}; }

QMimeData* ClipModel::mimeData(const QModelIndexList& indexes) const
{
    QList<Clip> dragged;
    for (const QModelIndex& index : indexes) {
        dragged.append(mClips.at(index.row()));
    }
    return toPayload(dragged).getMimeData();
}

Qt::DropActions ClipModel::supportedDragActions() const
{
    return mKind == Playlist ? Qt::MoveAction | Qt::CopyAction : Qt::CopyAction;
}

Qt::DropActions ClipModel::supportedDropActions() const
{
    return mKind == Playlist ? Qt::CopyAction | Qt::MoveAction : Qt::IgnoreAction;
}

bool ClipModel::dropMimeData(const QMimeData* data, Qt::DropAction, int row, int, const QModelIndex&)
{
    const QList<Clip> clips = clipsOf(VelorDropData(data));
    if (clips.isEmpty()) {
        VelorLogManager::getSingleton().logWarning("What was dropped holds no clips");
        return false;
    }
    insertClips(row < 0 ? rowCount() : row, clips);
    return true;
}
