#pragma once

#include <QFont>
#include <QStyledItemDelegate>

namespace kovena {

// Draws one row of a drop-down list: its text in the library's font on a band that shows which
// row is current (the one Enter chooses) and which one the pointer is over.
class DropDownCell : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit DropDownCell(QObject *parent = nullptr);

    void paint(
        QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    const QFont &font() const { return m_font; }

private:
    QFont m_font;
};

} // namespace kovena
