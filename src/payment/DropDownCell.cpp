#include "payment/DropDownCell.h"

#include "flow/MainKovena.h"
#include "payment/DropDownLayout.h"

#include <QFontMetrics>
#include <QPainter>

namespace kovena {

namespace {

// The current row in the library's accent colour, with white text (contrast above 4.5:1).
const QColor kCurrentBackground(57, 123, 158);
const QColor kCurrentText(Qt::white);
const QColor kHoverBackground(224, 237, 244);
const QColor kSeparator(0, 0, 0, 24);

} // namespace

DropDownCell::DropDownCell(QObject *parent)
    : QStyledItemDelegate(parent)
    , m_font(kovenaFont(dropDownLayout::kFontSize))
{ }

void DropDownCell::paint(
    QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const bool current = option.state.testFlag(QStyle::State_Selected);
    const bool hovered = option.state.testFlag(QStyle::State_MouseOver);
    QColor background = option.palette.color(QPalette::Base);
    QColor text = option.palette.color(QPalette::Text);
    if (current) {
        background = kCurrentBackground;
        text = kCurrentText;
    } else if (hovered) {
        background = kHoverBackground;
    }

    painter->save();
    painter->fillRect(option.rect, background);
    painter->setPen(kSeparator);
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());

    const QRect textRect
        = option.rect.adjusted(dropDownLayout::kTextMargin, 0, -dropDownLayout::kTextMargin, 0);
    const QString shown = QFontMetrics(m_font).elidedText(
        index.data(Qt::DisplayRole).toString(), Qt::ElideRight, textRect.width());
    painter->setFont(m_font);
    painter->setPen(text);
    painter->drawText(
        textRect, QStyle::visualAlignment(option.direction, Qt::AlignLeft | Qt::AlignVCenter), shown);
    painter->restore();
}

QSize DropDownCell::sizeHint(const QStyleOptionViewItem &, const QModelIndex &index) const
{
    const int textWidth = QFontMetrics(m_font).horizontalAdvance(index.data(Qt::DisplayRole).toString());
    return { textWidth + 2 * dropDownLayout::kTextMargin, dropDownLayout::kRowHeight };
}

} // namespace kovena
