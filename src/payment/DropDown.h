#pragma once

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>

class QFrame;
class QListView;
class QModelIndex;
class QStringListModel;
class QWidget;

namespace kovena {

class DropDownCell;

// A list of texts that drops down below an anchor view (the expiry month and year, the bank);
// choosing an entry, with the pointer or with arrows and Enter, hides the list and runs the
// selection action with the entry's index and text. Typing jumps to the first entry that starts
// with what was typed; Escape or a click elsewhere hides it without a choice.
class DropDown : public QObject
{
    Q_OBJECT

public:
    using SelectionAction = std::function<void(int index, const QString &item)>;

    explicit DropDown(QObject *parent = nullptr);
    ~DropDown() override;

    QStringList dataSource() const { return m_dataSource; }
    // Replaces the entries; a list that is showing shows the new ones from the first.
    void setDataSource(const QStringList &items);

    QWidget *anchorView() const { return m_anchorView; }
    void setAnchorView(QWidget *anchor);

    // Where the list's top-left corner goes relative to the anchor's: QPoint(0, anchor height)
    // puts it just below the anchor.
    QPoint bottomOffset() const { return m_bottomOffset; }
    void setBottomOffset(QPoint offset) { m_bottomOffset = offset; }

    // Called once per choice, after the list has hidden.
    void setSelectionAction(SelectionAction action) { m_selectionAction = std::move(action); }

    // What a screen reader calls the list ("Expiry month", "Bank"); each entry is called by its text.
    QString accessibleName() const { return m_accessibleName; }
    void setAccessibleName(const QString &name);

    // Shows the list in the anchor's window with the keyboard on it, the last chosen entry (else
    // the first) current. Nothing happens without entries or without an anchor on screen.
    void show();
    // Hides it without a choice; the keyboard goes back to the anchor.
    void hide();
    bool isVisible() const;

    // The list while it exists (object name "dropDownList"): built by the first show, a child of
    // the anchor's window.
    QListView *listView() const;

    static constexpr const char *kListObjectName = "dropDownList";

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildPopup(QWidget *window);
    void discardPopup();
    void place();
    void choose(const QModelIndex &index);

    QStringList m_dataSource;
    QPointer<QWidget> m_anchorView;
    QPoint m_bottomOffset;
    SelectionAction m_selectionAction;
    QString m_accessibleName;
    int m_chosenRow = -1;

    QStringListModel *m_model;
    DropDownCell *m_cell;
    QPointer<QFrame> m_popup;
    QPointer<QListView> m_listView;
};

} // namespace kovena
