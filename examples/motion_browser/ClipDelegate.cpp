#include "ClipDelegate.h"

#include "ClipModel.h"
#include "ClipPicture.h"

#include <QtGui/QPainter>
#include <QtWidgets/QApplication>

namespace {

constexpr int PictureSide = 44;
constexpr int Padding = 6;
constexpr int SmallestTextWidth = 100;

/// `option` with a fainter selection for a list that has not the focus.
QStyleOptionViewItem withSelectionColours(const QStyleOptionViewItem& option)
{
    constexpr double Tint = 0.25;
    QStyleOptionViewItem shown(option);
    QPalette& palette = shown.palette;
    const QColor base = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::Text);
    const auto mix = [](int from, int to) { return static_cast<int>(from + (to - from) * Tint); };
    palette.setColor(
        QPalette::Inactive, QPalette::Highlight,
        QColor(mix(base.red(), text.red()), mix(base.green(), text.green()), mix(base.blue(), text.blue())));
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText, text);
    palette.setCurrentColorGroup(option.state.testFlag(QStyle::State_Active) ? QPalette::Active
                                                                             : QPalette::Inactive);
    return shown;
}

QColor textColour(const QStyleOptionViewItem& option)
{
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    return option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
}

/// The colour of the second line: the text's own, with something of the ground, or all of it on a selection,
/// whose ground may be too near to it.
QColor fainter(QColor text, const QStyleOptionViewItem& option)
{
    text.setAlphaF(option.state.testFlag(QStyle::State_Selected) ? 1.0F : 0.65F);
    return text;
}

void paintPicture(QPainter* painter, const QStyleOptionViewItem& option, const QRect& inner,
                  const QString& name)
{
    const QPixmap picture =
        clipPicture(name, PictureSide, painter->device()->devicePixelRatioF(), option.palette);
    painter->drawPixmap(QStyle::alignedRect(option.direction, Qt::AlignLeft | Qt::AlignVCenter,
                                            QSize(PictureSide, PictureSide), inner),
                        picture);
}

void paintLine(QPainter* painter, const QStyleOptionViewItem& option, const QRect& place,
               Qt::Alignment alignment, const QString& text)
{
    const int flags = static_cast<int>(alignment | Qt::AlignLeading) | Qt::TextSingleLine;
    painter->drawText(place, flags, option.fontMetrics.elidedText(text, Qt::ElideRight, place.width()));
}

void paintText(QPainter* painter, const QStyleOptionViewItem& option, const QRect& inner,
               const QModelIndex& index)
{
    const int beside = PictureSide + 2 * Padding;
    const QRect lines = QStyle::visualRect(option.direction, inner, inner.adjusted(beside, 0, 0, 0));
    const int half = lines.height() / 2;
    const QColor colour = textColour(option);
    painter->setPen(colour);
    paintLine(painter, option, lines.adjusted(0, 0, 0, -half), Qt::AlignBottom, index.data().toString());
    painter->setPen(fainter(colour, option));
    paintLine(painter, option, lines.adjusted(0, half, 0, 0), Qt::AlignTop,
              index.data(ClipModel::TagsRole).toString());
}

void paintFocus(QPainter* painter, const QStyleOptionViewItem& option)
{
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        painter->setPen(QPen(textColour(option), 1, Qt::DashLine));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
}

} // namespace

void ClipDelegate::paint(QPainter* painter, const QStyleOptionViewItem& item, const QModelIndex& index) const
{
    const QStyleOptionViewItem option = withSelectionColours(item);
    const QStyle* style = option.widget != nullptr ? option.widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);

    const QRect inner = option.rect.adjusted(Padding, Padding, -Padding, -Padding);
    painter->save();
    paintPicture(painter, option, inner, index.data().toString());
    paintText(painter, option, inner, index);
    paintFocus(painter, option);
    painter->restore();
}

QSize ClipDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    const int height = std::max(PictureSide, 2 * option.fontMetrics.height());
    return {PictureSide + 4 * Padding + SmallestTextWidth, height + 2 * Padding};
}
