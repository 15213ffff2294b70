#include "ScreenTestSupport.h"

#include "platform/TextField.h"

#include <QApplication>
#include <QClipboard>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace kovena {
namespace {

// The edit between two texts: the replaced range of the old one and what replaces it; with a repeated
// letter the cursor decides which one changed.
TEST(EditRange, FindsTheReplacedRange)
{
    struct Row
    {
        const char *before;
        const char *after;
        int cursor;
        int start;
        int length;
        const char *replacement;
    };
    const Row rows[] = { { "abc", "abcd", 4, 3, 0, "d" }, { "ac", "abc", 2, 1, 0, "b" },
        { "", "x", 1, 0, 0, "x" }, { "abc", "ac", 1, 1, 1, "" }, { "abc", "bc", 0, 0, 1, "" },
        { "aa", "a", 1, 1, 1, "" }, { "aa", "aaa", 1, 1, 0, "a" }, { "name", "na@okme", 5, 2, 0, "@ok" },
        { "hello world", "hello there", 11, 6, 5, "there" }, { "abc", "", 0, 0, 3, "" },
        { "a", "a\xF0\x9F\x98\x80", 3, 1, 0, "\xF0\x9F\x98\x80" } };
    for (const Row &c : rows) {
        SCOPED_TRACE(std::string(c.before) + " -> " + c.after);
        const auto edit
            = TextField::editBetween(QString::fromUtf8(c.before), QString::fromUtf8(c.after), c.cursor);
        EXPECT_EQ(edit.start, c.start);
        EXPECT_EQ(edit.length, c.length);
        EXPECT_EQ(edit.replacement, QString::fromUtf8(c.replacement));
        // Applying the edit to the old text always gives the new one.
        EXPECT_EQ(QString::fromUtf8(c.before).replace(edit.start, edit.length, edit.replacement),
            QString::fromUtf8(c.after));
    }
}

// Accepts only lower-case letters, digits and '@', recording what it was asked.
class RecordingDelegate : public TextFieldDelegate
{
public:
    bool textFieldShouldChangeCharacters(
        TextField *, int start, int length, const QString &replacement) override
    {
        calls.push_back({ start, length, replacement });
        for (QChar ch : replacement)
            if (!(ch.isLower() || ch.isDigit() || ch == QLatin1Char('@')))
                return false;
        return true;
    }
    struct Call
    {
        int start;
        int length;
        QString replacement;
        bool operator==(const Call &) const = default;
    };
    std::vector<Call> calls;
};

class TextFieldTest : public ::testing::Test
{
protected:
    TextFieldTest()
    {
        field.setDelegate(&delegate);
        field.show();
        field.setFocus();
    }
    RecordingDelegate delegate;
    TextField field;
};

TEST_F(TextFieldTest, TypingGoesThroughTheDelegateAndRefusalsLeaveTextAndCursor)
{
    QSignalSpy changed(&field, &TextField::editingChanged);
    QTest::keyClicks(&field, u"ab#c"_s);
    EXPECT_EQ(field.text(), u"abc"_s);
    EXPECT_EQ(changed.size(), 3);
    ASSERT_EQ(delegate.calls.size(), 4u);
    EXPECT_EQ(delegate.calls[2], (RecordingDelegate::Call { 2, 0, u"#"_s }));
    EXPECT_EQ(delegate.calls[3], (RecordingDelegate::Call { 2, 0, u"c"_s }));

    field.setCursorPosition(1);
    QTest::keyClick(&field, Qt::Key_Space);
    EXPECT_EQ(field.text(), u"abc"_s);
    EXPECT_EQ(field.cursorPosition(), 1) << "a refused edit puts the cursor back";
    QTest::keyClick(&field, Qt::Key_X);
    EXPECT_EQ(field.text(), u"axbc"_s);
    EXPECT_EQ(delegate.calls.back(), (RecordingDelegate::Call { 1, 0, u"x"_s }));
}

TEST_F(TextFieldTest, DeletionsAndSelectionReplacementReportTheirRange)
{
    field.setText(u"abcdef"_s);
    field.setCursorPosition(3);
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(delegate.calls.back(), (RecordingDelegate::Call { 2, 1, QString() }));
    QTest::keyClick(&field, Qt::Key_Delete);
    EXPECT_EQ(delegate.calls.back(), (RecordingDelegate::Call { 2, 1, QString() }));
    EXPECT_EQ(field.text(), u"abef"_s);

    field.setSelection(1, 2);
    QTest::keyClick(&field, 'Z');
    EXPECT_EQ(delegate.calls.back(), (RecordingDelegate::Call { 1, 2, u"Z"_s }));
    EXPECT_EQ(field.text(), u"abef"_s);
    EXPECT_EQ(field.selectedText(), u"be"_s) << "a refused edit keeps the selection";
    QTest::keyClick(&field, Qt::Key_9);
    EXPECT_EQ(field.text(), u"a9f"_s);
}

TEST_F(TextFieldTest, PasteIsOneEditAndProgrammaticTextIsTheNewBaseline)
{
    field.setText(u"name"_s);
    field.setCursorPosition(2);
    QApplication::clipboard()->setText(u"@ok"_s);
    field.paste();
    EXPECT_EQ(field.text(), u"na@okme"_s);
    EXPECT_EQ(delegate.calls.back(), (RecordingDelegate::Call { 2, 0, u"@ok"_s }));

    QApplication::clipboard()->setText(u"B A D"_s);
    field.paste();
    EXPECT_EQ(field.text(), u"na@okme"_s);

    // A screen that rewrites the text on every change (lower-casing, say) sets the baseline.
    QObject::connect(
        &field, &TextField::editingChanged, &field, [this] { field.setText(field.text().toLower()); });
    field.setDelegate(nullptr);
    field.end(false);
    QTest::keyClicks(&field, u"Q"_s);
    EXPECT_EQ(field.text(), u"na@okmeq"_s);
    field.setDelegate(&delegate);
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(delegate.calls.back(), (RecordingDelegate::Call { 7, 1, QString() }));
    EXPECT_EQ(field.text(), u"na@okme"_s);
}

} // namespace
} // namespace kovena
