#pragma once

#include <QtWidgets/QStyledItemDelegate>

/// Paints a clip as its picture, its name, and its tags in a fainter line below.
class ClipDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& item, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
