#include "payment/DropDown.h"

#include "payment/DropDownCell.h"
#include "payment/DropDownLayout.h"
#include "platform/Logging.h"

#include <QEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QListView>
#include <QScrollBar>
#include <QStringListModel>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kovena {

DropDown::DropDown(QObject *parent)
    : QObject(parent)
    , m_model(new QStringListModel(this))
    , m_cell(new DropDownCell(this))
{ }

DropDown::~DropDown()
{
    discardPopup();
}

void DropDown::setDataSource(const QStringList &items)
{
    m_dataSource = items;
    m_model->setStringList(items);
    m_chosenRow = -1;
    if (!isVisible())
        return;
    if (items.isEmpty()) {
        hide();
        return;
    }
    m_listView->setCurrentIndex(m_model->index(0));
    place();
}

void DropDown::setAnchorView(QWidget *anchor)
{
    if (anchor == m_anchorView)
        return;
    hide();
    if (m_anchorView) {
        m_anchorView->removeEventFilter(this);
        disconnect(m_anchorView, nullptr, this, nullptr);
    }
    m_anchorView = anchor;
    if (anchor) {
        // The list belongs to its anchor: it goes when the anchor is hidden or deleted. A widget
        // announces its end while still reachable: it must not get the keyboard back then.
        anchor->installEventFilter(this);
        connect(anchor, &QObject::destroyed, this, [this] {
            m_anchorView = nullptr;
            hide();
        });
    }
}

void DropDown::setAccessibleName(const QString &name)
{
    m_accessibleName = name;
    if (m_listView)
        m_listView->setAccessibleName(name);
}

void DropDown::show()
{
    QWidget *anchor = m_anchorView;
    if (!anchor || !anchor->isVisible()) {
        qCWarning(lcPayment) << "a drop-down list cannot show without an anchor view on screen";
        return;
    }
    if (m_dataSource.isEmpty())
        return;
    if (!m_popup || m_popup->parentWidget() != anchor->window())
        buildPopup(anchor->window());

    m_listView->setCurrentIndex(m_model->index(std::max(m_chosenRow, 0)));
    place();
    m_popup->show();
    m_listView->setFocus(Qt::PopupFocusReason);
    m_listView->scrollTo(m_listView->currentIndex(), QAbstractItemView::PositionAtCenter);
}

void DropDown::hide()
{
    if (isVisible())
        m_popup->hide();
}

bool DropDown::isVisible() const
{
    return m_popup && m_popup->isVisible();
}

QListView *DropDown::listView() const
{
    return m_listView;
}

bool DropDown::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_listView && event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent *>(event)->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            choose(m_listView->currentIndex());
            return true;
        case Qt::Key_Escape:
            hide();
            return true;
        default:
            // Arrows, page keys and typing to jump are the list view's own.
            break;
        }
    } else if (watched == m_popup && event->type() == QEvent::Hide) {
        // However the list went (a choice, Escape, a click elsewhere), the keyboard goes back to
        // the control that opened it.
        if (m_anchorView && m_anchorView->isVisible())
            m_anchorView->setFocus(Qt::PopupFocusReason);
        else if (m_listView && m_listView->hasFocus())
            m_listView->clearFocus(); // a hidden list must not keep the keyboard
    } else if (watched == m_anchorView && event->type() == QEvent::Hide) {
        hide();
    }
    return QObject::eventFilter(watched, event);
}

void DropDown::buildPopup(QWidget *window)
{
    discardPopup();
    m_popup = new QFrame(window, Qt::Popup);
    m_popup->setObjectName(u"dropDownPopup"_s);
    m_popup->setFrameStyle(QFrame::Box | QFrame::Plain);
    // A light outline like the fields', and a brand-coloured edge on top towards the anchor.
    m_popup->setStyleSheet(u"QFrame#dropDownPopup { background-color: #FFFFFF; border: 1px solid #C4C4C4;"
                           " border-top: 2px solid #397B9E; }"_s);
    m_popup->installEventFilter(this);

    m_listView = new QListView(m_popup);
    m_listView->setObjectName(QString::fromLatin1(kListObjectName));
    m_listView->setAccessibleName(m_accessibleName);
    m_listView->setFrameShape(QFrame::NoFrame);
    m_listView->setModel(m_model);
    m_listView->setItemDelegate(m_cell);
    m_listView->setUniformItemSizes(true);
    m_listView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_listView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_listView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_listView->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_listView->setMouseTracking(true);
    m_listView->viewport()->setAttribute(Qt::WA_Hover);
    m_listView->installEventFilter(this);
    connect(m_listView, &QAbstractItemView::clicked, this, &DropDown::choose);

    auto *layout = new QVBoxLayout(m_popup);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_listView);
}

void DropDown::discardPopup()
{
    if (!m_popup)
        return;
    hide();
    m_listView->setModel(nullptr);
    // Later, not now: this may run while the list is handling the click or key that chose.
    m_popup->deleteLater();
    m_popup = nullptr;
    m_listView = nullptr;
}

void DropDown::place()
{
    using namespace dropDownLayout;
    QWidget *window = m_anchorView->window();
    const QRect anchor(m_anchorView->mapToGlobal(QPoint(0, 0)), m_anchorView->size());
    const QRect bounds(window->mapToGlobal(QPoint(0, 0)), window->size());
    // The outline is thicker on top than below: measure the frame's edges rather than assume one
    // width all round.
    m_popup->ensurePolished();
    const QRect inner = m_popup->contentsRect();
    const int chrome = m_popup->height() - inner.height();
    const auto count = static_cast<int>(m_dataSource.size());
    int width = m_listView->sizeHintForColumn(0) + (m_popup->width() - inner.width());
    if (count > kMaxVisibleRows)
        width += m_listView->verticalScrollBar()->sizeHint().width();
    const QSize wanted(width, std::min(count, kMaxVisibleRows) * kRowHeight + chrome);
    m_popup->setGeometry(popupGeometry(anchor, m_bottomOffset, wanted, chrome, bounds));
}

void DropDown::choose(const QModelIndex &index)
{
    if (!index.isValid() || index.row() >= m_dataSource.size())
        return;
    const int row = index.row();
    const QString item = m_dataSource.at(row);
    m_chosenRow = row;
    hide();
    // The action may replace the entries or delete this list: nothing of it is touched after.
    if (const SelectionAction action = m_selectionAction)
        action(row, item);
}

} // namespace kovena
