#pragma once

#include "Clip.h"

#include <QtCore/QAbstractListModel>

/// A list of clips that can be dragged out as a VelorDropData, and dropped into if it is a playlist.
class ClipModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Kind
    {
        Catalogue,
        Playlist,
    };
    enum Role
    {
        TagsRole = Qt::UserRole,
    };

    explicit ClipModel(Kind kind, QObject* parent);

    const QList<Clip>& clips() const { return mClips; }
    void setClips(const QList<Clip>& clips);
    /// Puts `clips` in front of `row`.
    void insertClips(int row, const QList<Clip>& clips);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool removeRows(int row, int count, const QModelIndex& parent = {}) override;

    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

private:
    const Kind mKind;
    QList<Clip> mClips;
};
