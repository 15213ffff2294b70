// The drop-down list driven as a customer drives it, through the real popup on the offscreen
// platform: keys go to whichever widget has the keyboard, clicks to the rows' own rectangles.
// Also the bundled card scheme images the card screen shows beside the number.
#include "payment/DropDown.h"
#include "PressKeys.h"
#include "flow/MainKovena.h"
#include "payment/DropDownLayout.h"

#include <QAccessible>
#include <QApplication>
#include <QListView>
#include <QPixmap>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace kovena {
namespace {

using testing::press;
using Choice = std::pair<int, QString>;
using Choices = std::vector<Choice>;

const QStringList kMonths = { u"MM"_s, u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s, u"8"_s, u"9"_s,
    u"10"_s, u"11"_s, u"12"_s };
const QStringList kBanks = { u"Andhra Bank"_s, u"Axis Bank"_s, u"Bank of Baroda"_s, u"Canara Bank"_s,
    u"HDFC Bank"_s, u"HSBC"_s, u"ICICI Bank"_s, u"State Bank of India"_s, u"Yes Bank"_s };

class DropDownTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        // Typed keys make one search only while they come close together; a long interval
        // keeps a slow machine from splitting "12" into two searches.
        m_typingInterval = QApplication::keyboardInputInterval();
        QApplication::setKeyboardInputInterval(60'000);

        window.resize(375, 667);
        anchor = new QPushButton(u"MM"_s, &window);
        anchor->setGeometry(24, 100, 120, 36);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        anchor->setFocus();

        dropDown = std::make_unique<DropDown>();
        dropDown->setAnchorView(anchor);
        dropDown->setBottomOffset(QPoint(0, anchor->height()));
        dropDown->setDataSource(kMonths);
        dropDown->setAccessibleName(u"Expiry month"_s);
        dropDown->setSelectionAction(
            [this](int index, const QString &item) { chosen.emplace_back(index, item); });
    }

    void TearDown() override { QApplication::setKeyboardInputInterval(m_typingInterval); }

    QListView *open()
    {
        dropDown->show();
        EXPECT_TRUE(dropDown->isVisible());
        auto *list = window.findChild<QListView *>(u"dropDownList"_s);
        EXPECT_TRUE(list);
        return list;
    }

    static QRect globalRect(const QWidget *w) { return { w->mapToGlobal(QPoint(0, 0)), w->size() }; }

    QWidget window;
    QPushButton *anchor = nullptr;
    std::unique_ptr<DropDown> dropDown;
    Choices chosen;

private:
    int m_typingInterval = 0;
};

struct KeyRow
{
    const char *name;
    const QStringList *items;
    const char *keys;
    std::optional<Choice> choice;
};

class DropDownKeys : public DropDownTest, public ::testing::WithParamInterface<KeyRow>
{
};

// Whatever the keys, the list ends hidden with the keyboard back on the anchor, and the action
// has run once with the expected entry, or not at all.
TEST_P(DropDownKeys, ChoosesWithTheKeyboard)
{
    const KeyRow &row = GetParam();
    dropDown->setDataSource(*row.items);
    ASSERT_EQ(QApplication::focusWidget(), open());

    press(QString::fromUtf8(row.keys));

    EXPECT_FALSE(dropDown->isVisible());
    EXPECT_EQ(QApplication::focusWidget(), anchor);
    EXPECT_EQ(chosen, row.choice ? Choices { *row.choice } : Choices {});
}

// clang-format off
const KeyRow kKeys[] = {
    KeyRow { "ReturnOnTheFirst",     &kMonths, "<Return>",                       Choice { 0, u"MM"_s } },
    KeyRow { "KeypadEnter",          &kMonths, "<Down><Enter>",                  Choice { 1, u"1"_s } },
    KeyRow { "DownDownUp",           &kMonths, "<Down><Down><Down><Up><Return>", Choice { 2, u"2"_s } },
    KeyRow { "UpAtTheTopStays",      &kMonths, "<Up><Return>",                   Choice { 0, u"MM"_s } },
    KeyRow { "DownPastTheEndStays",  &kMonths, "<End><Down><Return>",            Choice { 12, u"12"_s } },
    KeyRow { "EscapeChoosesNothing", &kMonths, "<Down><Down><Escape>",           std::nullopt },
    KeyRow { "TypingOneTwo",         &kMonths, "12<Return>",                     Choice { 12, u"12"_s } },
    KeyRow { "TypingOne",            &kMonths, "1<Return>",                      Choice { 1, u"1"_s } },
    KeyRow { "TypingH",              &kBanks,  "H<Return>",                      Choice { 4, u"HDFC Bank"_s } },
    KeyRow { "TypingIsCaseBlind",    &kBanks,  "s<Return>",                      Choice { 7, u"State Bank of India"_s } },
    KeyRow { "TypingAWord",          &kBanks,  "Bank<Return>",                   Choice { 2, u"Bank of Baroda"_s } },
    KeyRow { "TypingThenArrow",      &kBanks,  "H<Down><Return>",                Choice { 5, u"HSBC"_s } },
    KeyRow { "TypingNoMatchStays",   &kBanks,  "Z<Return>",                      Choice { 0, u"Andhra Bank"_s } },
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Table, DropDownKeys, ::testing::ValuesIn(kKeys),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(DropDownTest, AClickOnARowChoosesItAndOneOutsideChoosesNothing)
{
    QListView *list = open();
    const QRect second = list->visualRect(list->model()->index(1, 0));
    ASSERT_TRUE(list->viewport()->rect().contains(second));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, second.center());
    EXPECT_EQ(chosen, Choices { Choice(1, u"1"_s) }) << "click on a row";
    EXPECT_FALSE(dropDown->isVisible()) << "click on a row";
    EXPECT_EQ(QApplication::focusWidget(), anchor) << "click on a row";

    const QRect popup = open()->window()->geometry();
    const QPoint outside(200, 600);
    ASSERT_FALSE(popup.contains(window.mapToGlobal(outside)));
    // Through the window system, as a real click arrives, so that the open popup sees it first.
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, outside);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dropDown->isVisible(); })) << "click outside";
    EXPECT_EQ(chosen.size(), 1u) << "click outside";
}

// The list and its entries are named to a screen reader; entries set anew are offered from the
// first, even while the list is open.
TEST_F(DropDownTest, NamesItsEntriesToScreenReadersAndOffersNewOnesFromTheFirst)
{
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(open());
    ASSERT_TRUE(face);
    EXPECT_EQ(face->role(), QAccessible::List);
    EXPECT_EQ(face->text(QAccessible::Name), u"Expiry month"_s);
    ASSERT_EQ(face->childCount(), kMonths.size());
    for (int i = 0; i < kMonths.size(); ++i)
        EXPECT_EQ(face->child(i)->text(QAccessible::Name), kMonths.at(i));

    dropDown->setAccessibleName(u"Bank"_s);
    EXPECT_EQ(face->text(QAccessible::Name), u"Bank"_s);

    press(u"<Down><Down><Down><Return>"_s);
    dropDown->setDataSource(kBanks);
    QListView *list = open();
    EXPECT_EQ(list->model()->rowCount(), kBanks.size());
    press(u"<Down><Return>"_s);

    // Replaced while open: the current entry goes back to the first.
    open();
    press(u"<Down>"_s);
    dropDown->setDataSource(kMonths);
    press(u"<Return>"_s);
    EXPECT_EQ(chosen, (Choices { { 3, u"3"_s }, { 1, u"Axis Bank"_s }, { 0, u"MM"_s } }));

    dropDown->setDataSource({});
    dropDown->show();
    EXPECT_FALSE(dropDown->isVisible());
}

struct PlaceRow
{
    const char *name;
    QRect anchor;
    QPoint offset;
    QSize wanted;
    QRect bounds;
    QRect expected;
};

class DropDownPlacement : public ::testing::TestWithParam<PlaceRow>
{
};

// The frame takes 2 of the height; rows are 40 high.
TEST_P(DropDownPlacement, StaysInTheWindow)
{
    const PlaceRow &row = GetParam();
    EXPECT_EQ(dropDownLayout::popupGeometry(row.anchor, row.offset, row.wanted, 2, row.bounds), row.expected);
}

const QRect kWindow(0, 0, 375, 667);
const QRect kShort(0, 0, 375, 300);

// clang-format off
const PlaceRow kPlacements[] = {
    //         name               anchor                offset     wanted       bounds   expected
    PlaceRow { "JustBelow",       { 24, 100, 120, 36 }, { 0, 36 }, { 100, 282 }, kWindow, { 24, 136, 120, 282 } },
    PlaceRow { "OffsetMovesIt",   { 24, 100, 120, 36 }, { 8, 40 }, { 100, 82 },  kWindow, { 32, 140, 120, 82 } },
    PlaceRow { "WiderText",       { 24, 100, 60, 36 },  { 0, 36 }, { 150, 82 },  kWindow, { 24, 136, 150, 82 } },
    PlaceRow { "RightEdge",       { 300, 100, 60, 36 }, { 0, 36 }, { 120, 82 },  kWindow, { 255, 136, 120, 82 } },
    PlaceRow { "WiderThanWindow", { 24, 100, 60, 36 },  { 0, 36 }, { 500, 82 },  kWindow, { 0, 136, 375, 82 } },
    PlaceRow { "FitsExactly",     { 24, 349, 120, 36 }, { 0, 36 }, { 100, 282 }, kWindow, { 24, 385, 120, 282 } },
    PlaceRow { "OnePixelShort",   { 24, 350, 120, 36 }, { 0, 36 }, { 100, 282 }, kWindow, { 24, 68, 120, 282 } },
    PlaceRow { "FlipMirrorsGap",  { 24, 560, 120, 36 }, { 0, 40 }, { 100, 282 }, kWindow, { 24, 274, 120, 282 } },
    PlaceRow { "CutBelow",        { 24, 120, 120, 36 }, { 0, 36 }, { 100, 282 }, kShort,  { 24, 156, 120, 122 } },
    PlaceRow { "CutAbove",        { 24, 170, 120, 36 }, { 0, 36 }, { 100, 282 }, kShort,  { 24, 8, 120, 162 } },
    PlaceRow { "Global",          { 524, 400, 120, 36 }, { 0, 36 }, { 100, 282 }, { 500, 300, 375, 667 },
                                                                                          { 524, 436, 120, 282 } },
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Table, DropDownPlacement, ::testing::ValuesIn(kPlacements),
    [](const auto &info) { return std::string(info.param.name); });

class DropDownOnScreen : public DropDownTest, public ::testing::WithParamInterface<std::pair<int, bool>>
{
};

// The 41-entry year list, with its anchor high (opens below) or low (opens above) in the window:
// seven rows at once, and the last choice in view when it opens again.
TEST_P(DropDownOnScreen, OpensAtTheAnchorWithSevenRows)
{
    const auto [anchorTop, above] = GetParam();
    anchor->move(24, anchorTop);
    QStringList years { u"YYYY"_s };
    for (int year = 2030; year < 2070; ++year)
        years << QString::number(year);
    dropDown->setDataSource(years);
    QListView *list = open();
    const QRect popup = list->window()->geometry();
    const QRect at = globalRect(anchor);

    if (above)
        EXPECT_EQ(popup.y() + popup.height(), at.y());
    else
        EXPECT_EQ(popup.topLeft(), at.topLeft() + QPoint(0, anchor->height()));
    EXPECT_GE(popup.width(), anchor->width());
    EXPECT_TRUE(globalRect(&window).contains(popup));
    EXPECT_EQ(list->viewport()->height(), 7 * dropDownLayout::kRowHeight);
    EXPECT_GT(list->verticalScrollBar()->maximum(), 0);

    press(u"<End><Return>"_s);
    ASSERT_EQ(chosen, Choices { Choice(40, u"2069"_s) });
    list = open();
    EXPECT_EQ(list->currentIndex().row(), 40);
    EXPECT_TRUE(list->viewport()->rect().contains(list->visualRect(list->currentIndex())));
}

INSTANTIATE_TEST_SUITE_P(
    Table, DropDownOnScreen, ::testing::Values(std::pair(100, false), std::pair(600, true)));

// A screen's anchor goes away with the screen; the list must neither stay nor hand the keyboard
// to a widget being deleted.
TEST_F(DropDownTest, GoesAwayWithItsAnchor)
{
    open();
    anchor->hide();
    EXPECT_FALSE(dropDown->isVisible());

    anchor->show();
    open();
    delete anchor;
    EXPECT_FALSE(dropDown->isVisible());
    EXPECT_EQ(dropDown->anchorView(), nullptr);
    EXPECT_NE(QApplication::focusWidget(), dropDown->listView());
    dropDown->show();
    EXPECT_FALSE(dropDown->isVisible());
    EXPECT_TRUE(chosen.empty());
}

// A screen may drop its list in the selection action, while the list is still handling the click.
TEST_F(DropDownTest, ActionMayDeleteTheList)
{
    dropDown->setSelectionAction([this](int index, const QString &item) {
        chosen.emplace_back(index, item);
        dropDown.reset();
    });
    QListView *list = open();
    QTest::mouseClick(
        list->viewport(), Qt::LeftButton, {}, list->visualRect(list->model()->index(2, 0)).center());
    EXPECT_EQ(chosen, Choices { Choice(2, u"2"_s) });
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window.findChild<QListView *>(u"dropDownList"_s); }));
}

// Each icon fills a 40 by 26 point slot, drawn at twice that; no two are alike. Any other name,
// however close, finds nothing.
TEST(KovenaImage, FindsEveryCardSchemeIconAndNothingElse)
{
    std::vector<QImage> seen;
    for (const char *name : { "ci_visa.png", "ci_amex.png", "ci_mastercard.png", "ci_maestro.png",
             "ci_diner.png", "ci_jcb.png", "ci_discover.png", "ci_laser.png", "ci_rupee.png" }) {
        const QPixmap icon = kovenaImage(QString::fromLatin1(name));
        ASSERT_FALSE(icon.isNull()) << name;
        EXPECT_EQ(icon.deviceIndependentSize(), QSizeF(40, 26)) << name;
        const QImage image = icon.toImage();
        EXPECT_EQ(image.pixelColor(40, 26).alpha(), 255) << name;
        EXPECT_EQ(std::count(seen.begin(), seen.end(), image), 0) << name;
        seen.push_back(image);
    }
    for (const char *name : { "", "ci_unionpay.png", "ci_visa", "CI_VISA.PNG", "../fonts/OFL.txt",
             "../fonts/Montserrat-Light.ttf", "/ci_visa.png" })
        EXPECT_TRUE(kovenaImage(QString::fromLatin1(name)).isNull()) << name;
}

} // namespace
} // namespace kovena
