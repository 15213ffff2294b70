#include "platform/TextField.h"

namespace kovena {

TextField::TextField(QWidget *parent)
    : QLineEdit(parent)
{
    connect(this, &QLineEdit::textEdited, this, &TextField::onTextEdited);
    // textEdited arrives before textChanged and cursorPositionChanged, so these hold the state
    // from before a user edit when onTextEdited runs. text() and cursorPosition() are read
    // rather than the signal arguments, which are stale after a refused edit is rolled back.
    connect(this, &QLineEdit::textChanged, this, [this] { m_accepted = text(); });
    connect(this, &QLineEdit::cursorPositionChanged, this, &TextField::rememberCursor);
    connect(this, &QLineEdit::selectionChanged, this, &TextField::rememberCursor);
}

TextField::Edit TextField::editBetween(const QString &before, const QString &after, int cursor)
{
    const int prefixLimit
        = std::min({ static_cast<int>(before.size()), static_cast<int>(after.size()), std::max(cursor, 0) });
    int prefix = 0;
    while (prefix < prefixLimit && before.at(prefix) == after.at(prefix))
        ++prefix;
    const int suffixLimit
        = std::min(static_cast<int>(before.size()) - prefix, static_cast<int>(after.size()) - prefix);
    int suffix = 0;
    while (
        suffix < suffixLimit && before.at(before.size() - 1 - suffix) == after.at(after.size() - 1 - suffix))
        ++suffix;
    Edit edit;
    edit.start = prefix;
    edit.length = static_cast<int>(before.size()) - prefix - suffix;
    edit.replacement = after.mid(prefix, after.size() - prefix - suffix);
    return edit;
}

void TextField::rememberCursor()
{
    m_acceptedCursor = cursorPosition();
    m_acceptedSelectionStart = selectionStart();
    m_acceptedSelectionLength = static_cast<int>(selectedText().size());
}

void TextField::restoreCursor(int cursor, int selectionStart, int selectionLength)
{
    if (selectionStart >= 0 && selectionLength > 0) {
        // Keep the cursor at the end of the selection it was at.
        if (cursor == selectionStart)
            setSelection(selectionStart + selectionLength, -selectionLength);
        else
            setSelection(selectionStart, selectionLength);
    } else {
        setCursorPosition(std::clamp(cursor, 0, static_cast<int>(text().size())));
    }
}

void TextField::onTextEdited(const QString &newText)
{
    if (m_reverting)
        return;
    const QString before = m_accepted;
    const int beforeCursor = m_acceptedCursor;
    const int beforeSelectionStart = m_acceptedSelectionStart;
    const int beforeSelectionLength = m_acceptedSelectionLength;
    const Edit edit = editBetween(before, newText, cursorPosition());
    if (m_delegate
        && !m_delegate->textFieldShouldChangeCharacters(this, edit.start, edit.length, edit.replacement)) {
        m_reverting = true;
        setText(before);
        restoreCursor(beforeCursor, beforeSelectionStart, beforeSelectionLength);
        m_reverting = false;
        m_accepted = before;
        rememberCursor();
        return;
    }
    m_accepted = newText;
    rememberCursor();
    Q_EMIT editingChanged();
}

} // namespace kovena
