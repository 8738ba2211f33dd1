#pragma once

#include <QtWidgets/QListView>

/// Shows a ClipModel, and carries the selected clips away under a fanned image of their pictures.
class ClipView : public QListView
{
    Q_OBJECT

public:
    explicit ClipView(QWidget* parent = nullptr);

    /// `hint` stands in the middle as long as there are no clips.
    void setHint(const QString& hint);
    /// Selects `count` clips from `row` on and no others, and scrolls to them.
    void selectOnly(int row, int count);

    /// The selected clips in list order.
    QModelIndexList sortedSelection() const;
    /// Removes the selected clips, and selects the clip that follows them.
    void removeSelection();

protected:
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap dragImage(const QModelIndexList& indexes) const;
    void setDropHighlighted(bool highlighted);

    QString mHint;
    bool mIsDropHighlighted = false;
};
