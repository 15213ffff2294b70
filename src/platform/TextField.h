#pragma once

#include <QLineEdit>

namespace kovena {

class TextField;

// Decides, edit by edit, whether a change to a text field is applied.
class TextFieldDelegate
{
public:
    virtual ~TextFieldDelegate() = default;
    // `start`/`length`: the range of the current text that is replaced (in UTF-16 units);
    // `replacement`: the new text for it (empty for a deletion).
    virtual bool textFieldShouldChangeCharacters(
        TextField *field, int start, int length, const QString &replacement)
        = 0;
};

// A line edit that routes every user edit (typing, deletion, paste, input method) through
// its delegate; a refused edit leaves text and cursor as they were.
class TextField : public QLineEdit
{
    Q_OBJECT

public:
    explicit TextField(QWidget *parent = nullptr);
    void setDelegate(TextFieldDelegate *delegate) { m_delegate = delegate; }
    TextFieldDelegate *delegate() const { return m_delegate; }
    // A toolbar shown above the keyboard while the field has focus (the "Done" bar).
    void setInputAccessoryView(QWidget *toolbar) { m_accessory = toolbar; }
    QWidget *inputAccessoryView() const { return m_accessory; }

    // The range of `before` replaced to give `after`, with the cursor at `cursor` after the edit.
    struct Edit
    {
        int start = 0;
        int length = 0;
        QString replacement;
    };
    static Edit editBetween(const QString &before, const QString &after, int cursor);

Q_SIGNALS:
    // An accepted user edit changed the text (after it is applied).
    void editingChanged();

private:
    void onTextEdited(const QString &newText);
    void rememberCursor();
    void restoreCursor(int cursor, int selectionStart, int selectionLength);

    TextFieldDelegate *m_delegate = nullptr;
    QWidget *m_accessory = nullptr;
    QString m_accepted;
    int m_acceptedCursor = 0;
    int m_acceptedSelectionStart = -1;
    int m_acceptedSelectionLength = 0;
    bool m_reverting = false;
};

} // namespace kovena
