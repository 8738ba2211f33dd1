#pragma once

#include <QtWidgets/QListView>

/// Shows a ClipModel, and carries the selected clips away under a fanned image of their pictures.
class ClipView : public QListView
{
    Q_OBJECT

public:
    /// `hint` stands in the middle as long as there are no clips.
    explicit ClipView(const QString& hint, QWidget* parent = nullptr);

    /// The selected clips in list order.
    QModelIndexList sortedSelection() const;
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

    const QString mHint;
    bool mIsDropHighlighted = false;
};
