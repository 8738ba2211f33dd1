#include "ClipView.h"

#include "ClipModel.h"
#include "ClipPicture.h"

#include <Velor.Base/VelorLog.h>

#include <QtCore/QMimeData>
#include <QtGui/QDrag>
#include <QtGui/QDragEnterEvent>
#include <QtGui/QPainter>

#include <algorithm>

namespace {

/// The pointer holds the image by its first card.
constexpr QPoint HotSpot(VelorDropData::DragPixmapSize / 2, VelorDropData::DragPixmapSize / 2);

QString endOfDrag(Qt::DropAction action)
{
    switch (action) {
    case Qt::CopyAction:
        return QStringLiteral("copied");
    case Qt::MoveAction:
        return QStringLiteral("moved");
    default:
        return QStringLiteral("not dropped");
    }
}

/// What the place under the pointer answers, which comes late where another process has to be asked.
void logAnswer(Qt::DropAction action)
{
    VelorLogManager::getSingleton().logMessage(
        action == Qt::IgnoreAction ? "A drop here is refused" : "A drop here is welcome", VelorLog::Debug0);
}

} // namespace

ClipView::ClipView(QWidget* parent)
    : QListView(parent)
{
    setSelectionMode(ExtendedSelection);
    setDragEnabled(true);
    setDragDropOverwriteMode(false);
    setUniformItemSizes(true);
    setVerticalScrollMode(ScrollPerPixel);
}

void ClipView::setHint(const QString& hint)
{
    mHint = hint;
    setAccessibleDescription(hint);
    viewport()->update();
}

void ClipView::selectOnly(int row, int count)
{
    const QModelIndex first = model()->index(row, 0);
    const QModelIndex last = model()->index(row + count - 1, 0);
    setCurrentIndex(first);
    selectionModel()->select(QItemSelection(first, last), QItemSelectionModel::ClearAndSelect);
    scrollTo(last);
}

QModelIndexList ClipView::sortedSelection() const
{
    QModelIndexList indexes = selectedIndexes();
    std::sort(indexes.begin(), indexes.end());
    return indexes;
}

void ClipView::removeSelection()
{
    const QModelIndexList indexes = sortedSelection();
    for (auto index = indexes.rbegin(); index != indexes.rend(); ++index) {
        model()->removeRow(index->row());
    }
    const int count = model()->rowCount();
    if (!indexes.isEmpty() && count > 0) {
        selectOnly(std::min(indexes.first().row(), count - 1), 1);
    }
}

void ClipView::startDrag(Qt::DropActions actions)
{
    const QModelIndexList indexes = sortedSelection();
    if (indexes.isEmpty()) {
        return;
    }
    // The drop may put clips into this very list, and move these.
    const QList<QPersistentModelIndex> dragged(indexes.begin(), indexes.end());
    const bool canMove = actions.testFlag(Qt::MoveAction);
    auto* drag = new QDrag(this);
    drag->setMimeData(model()->mimeData(indexes));
    drag->setPixmap(dragImage(indexes));
    drag->setHotSpot(HotSpot);
    connect(drag, &QDrag::actionChanged, this, logAnswer);
    logInfo(QStringLiteral("Dragging %1").arg(clipCount(dragged.size())));
    const Qt::DropAction action = drag->exec(actions, canMove ? Qt::MoveAction : Qt::CopyAction);

    logInfo(QStringLiteral("Dragged %1: %2").arg(clipCount(dragged.size()), endOfDrag(action)));
    if (action == Qt::MoveAction && canMove) {
        for (const QPersistentModelIndex& index : dragged) {
            model()->removeRow(index.row());
        }
    }
}

QPixmap ClipView::dragImage(const QModelIndexList& indexes) const
{
    const qsizetype shown = std::min<qsizetype>(indexes.size(), VelorDropData::DragMultipleDefaultLimit);
    QList<QPixmap> pictures;
    for (const QModelIndex& index : indexes.first(shown)) {
        pictures.append(clipPicture(index.data().toString(), VelorDropData::DragPixmapSize,
                                    devicePixelRatioF(), palette()));
    }
    return VelorDropData::getDragMultiplePixmap(pictures, indexes.size() > shown, devicePixelRatioF());
}

void ClipView::dragEnterEvent(QDragEnterEvent* event)
{
    QListView::dragEnterEvent(event);
    const bool isWelcome = event->isAccepted();
    setDropHighlighted(isWelcome);
    const QString formats = shownText(event->mimeData()->formats().join(QStringLiteral(", "))).simplified();
    VelorLogManager::getSingleton().logMessage(
        (isWelcome ? QStringLiteral("Clips come over the playlist")
                   : QStringLiteral("The playlist takes clips alone, not %1").arg(formats))
            .toStdString(),
        isWelcome ? VelorLog::Debug0 : VelorLog::Warning);
}

void ClipView::dragLeaveEvent(QDragLeaveEvent* event)
{
    QListView::dragLeaveEvent(event);
    setDropHighlighted(false);
}

void ClipView::dropEvent(QDropEvent* event)
{
    setDropHighlighted(false);
    // QListView would move rows within one list by itself; here a move is a drop like any other.
    QAbstractItemView::dropEvent(event); // NOLINT(bugprone-parent-virtual-call)
}

void ClipView::setDropHighlighted(bool highlighted)
{
    mIsDropHighlighted = highlighted;
    viewport()->update();
}

void ClipView::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    QPainter painter(viewport());
    if (model()->rowCount() == 0) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, mHint);
    }
    if (mIsDropHighlighted) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 3));
        painter.drawRect(viewport()->rect().adjusted(1, 1, -2, -2));
    }
}
