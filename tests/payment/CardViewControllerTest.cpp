// The card screen driven through its widgets: keys into the fields, choices from the expiry
// lists, proceed against the in-process sandbox (payCard replies scripted), main-queue work on the
// manual clock. The bank page is a stand-in scene, so the hand-over is checked without a browser.
#include "payment/CardViewController.h"
#include "PressKeys.h"
#include "ScreenFixture.h"
#include "flow/MainKovena.h"
#include "payment/BankPageScreen.h"
#include "payment/CardFormEditing.h"
#include "platform/Storyboard.h"
#include "support/FatalDiagnostic.h"

#include <QDate>
#include <QLabel>
#include <QPushButton>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <functional>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace kovena {
namespace {

const QColor kLightGrey(0xAA, 0xAA, 0xAA);
const QColor kDesignedBlue(0x39, 0x7B, 0x9E);
const int kThisYear = QDate::currentDate().year();

const sandbox::ScriptedReply kBankPage { 200,
    R"({"responseCode":"200MERSUCC","data":{"kovenaTransactionId":1700000000042,)"
    R"("paymentData":{"url":"https://bank.example/pay","data":"a=1&device_type=1"}}})" };
const sandbox::ScriptedReply kDeclined { 200, R"({"responseCode":"400CARDINVALID","data":{}})" };

class FakeBankPage : public BankPageScreen
{
public:
    FakeBankPage() { ++made; }
    static inline int made = 0;
};

QString shownIcon(const QLabel *label)
{
    const QImage shown = label->pixmap().toImage();
    for (const char *name : { "ci_amex.png", "ci_visa.png", "ci_mastercard.png", "ci_maestro.png",
             "ci_diner.png", "ci_jcb.png", "ci_discover.png", "ci_laser.png", "ci_rupee.png" }) {
        if (!shown.isNull() && kovenaImage(QString::fromLatin1(name)).toImage() == shown)
            return QString::fromLatin1(name);
    }
    return shown.isNull() ? QString() : u"?"_s;
}

using testing::kPayEndpoint;
using testing::press;

class CardScreenTest : public testing::ScreenFixture
{
protected:
    static void SetUpTestSuite()
    {
        Storyboard &storyboard = mainKovenaStoryboard();
        storyboard.registerScene(u"PaymentViewController"_s, [] { return new FakeBankPage; });
        storyboard.registerSegue(u"PaymentViewController"_s, u"PaymentViewController"_s);
    }

    void SetUp() override
    {
        testing::resetBackendForCheckout(u"card-test-token"_s);
        FakeBankPage::made = 0;
        screen = qobject_cast<CardViewController *>(
            mainKovenaStoryboard().instantiateViewController(u"CardViewController"_s));
        ASSERT_TRUE(screen);
        prepare(*screen, u"1250.00"_s, u"ORD-CARD-7"_s, u"COL-9"_s);
        show(screen);
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        clock.runDue();
    }

    void type(TextField *field, const QString &keys)
    {
        field->setFocus(Qt::OtherFocusReason);
        press(keys);
    }
    void choose(QPushButton *opener, const QString &keys)
    {
        QTest::mouseClick(opener, Qt::LeftButton);
        ASSERT_EQ(QApplication::focusWidget()->objectName(), u"dropDownList"_s);
        press(keys);
    }
    static QString nth(int row) { return u"<Home>"_s + u"<Down>"_s.repeated(row) + u"<Return>"_s; }
    void chooseMonth(int month) { choose(screen->btnMonth, nth(month)); }
    void chooseYear(int row) { choose(screen->btnYear, nth(row)); } // 0 "YYYY", 1 this year, ...

    void fillForm(const QString &number = u"4111111111111111"_s, const QString &name = u"Asha Verma"_s,
        int month = 7, int yearRow = 2, const QString &cvv = u"739"_s)
    {
        type(screen->tfCardNumber, number);
        type(screen->tfCardName, name);
        if (month >= 0)
            chooseMonth(month);
        if (yearRow >= 0)
            chooseYear(yearRow);
        type(screen->tfCvv, cvv);
    }
    void proceed()
    {
        QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
        clock.runDue();
    }

    QColor proceedColour() const { return screen->btnProceed->palette().color(QPalette::Button); }
    QStringList toasts()
    {
        clock.runDue();
        return testing::toastsOn(screen);
    }
    static std::vector<nlohmann::json> payCardBodies() { return testing::bodiesSentTo(kPayEndpoint); }

    QPointer<CardViewController> screen;
};

struct NumberRow
{
    const char *name, *keys, *shown, *card, *icon;
    int limitLength;
};

class CardNumberTest : public CardScreenTest, public ::testing::WithParamInterface<NumberRow>
{
};

TEST_P(CardNumberTest, GroupsLimitsAndRefusesAsTyped)
{
    const NumberRow &row = GetParam();
    type(screen->tfCardNumber, QString::fromUtf8(row.keys));
    EXPECT_EQ(screen->tfCardNumber->text(), QString::fromUtf8(row.shown));
    EXPECT_EQ(screen->tfCardNumber->cursorPosition(), screen->tfCardNumber->text().size());
    EXPECT_EQ(screen->card, QString::fromUtf8(row.card));
    EXPECT_EQ(shownIcon(screen->iconCardIssuer), QString::fromUtf8(row.icon));
    EXPECT_EQ(screen->limitLength, row.limitLength);
}

// clang-format off
const NumberRow kNumberRows[] = {
    { "visa_grouped",              "4111111111111111",           "4111-1111-1111-1111", "4111111111111111", "ci_visa.png", 3 },
    { "visa_17th_digit_refused",   "41111111111111112",          "4111-1111-1111-1111", "4111111111111111", "ci_visa.png", 3 },
    { "letter_refused",            "41a1",                       "411",                 "411",              "ci_visa.png", 3 },
    { "paste_with_letter",         "41<Paste=11x1>",             "41",                  "41",               "ci_visa.png", 3 },
    { "paste_with_dash",           "<Paste=4111-1111>",          "",                    "",                 "",            3 },
    { "insert_at_start_regroups",  "41111111<Home>5",            "5411-1111-1",         "541111111",        "ci_mastercard.png", 3 },
    { "deleting_a_dash",           "41111<Left><BS>",            "4111-1",              "41111",            "ci_visa.png", 3 },
    { "emptied_keeps_the_number",  "4111111111111111<All><BS>",  "",                    "4111111111111111", "ci_visa.png", 3 },
    { "amex_cvv_four",             "378282246310005",            "3782-8224-6310-005",  "378282246310005",  "ci_amex.png", 4 },
    { "icon_from_grouped_text",    "5123601112345678",           "5123-6011-1234-5678", "5123601112345678", "ci_mastercard.png", 3 },
    // Grouped until the stored number is a Maestro one; the dash hides the scheme from the icon.
    { "maestro_fifth_digit",       "50181",                      "5018-1",              "50181",            "",            3 },
    { "maestro_sheds_its_dash",    "501812",                     "501812",              "501812",           "ci_maestro.png", 3 },
    { "maestro_deletion_ungroups", "50181<BS>",                  "50181",               "50181",            "ci_maestro.png", 3 },
    { "maestro_edit_goes_at_end",  "50181<Home>9",               "501819",              "501819",           "ci_maestro.png", 3 },
    // Past 16 digits the field takes Maestro digits as typed; the stored number stays at 16.
    { "maestro_19_digits",         "50181234567890123456",       "5018123456789012345", "5018123456789012", "ci_maestro.png", 3 },
    { "maestro_paste_past_19",     "5018123456789012<Paste=3456>", "5018123456789012",  "5018123456789012", "ci_maestro.png", 3 },
    { "maestro_paste_to_19",       "5018123456789012<Paste=345>",  "5018123456789012345", "5018123456789012", "ci_maestro.png", 3 },
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(
    Keys, CardNumberTest, ::testing::ValuesIn(kNumberRows), [](const auto &info) { return info.param.name; });

// What the screen forwards: the field's text before the edit, the range and the replacement.
TEST(CardFormEditingTest, NumberAndFollowRules)
{
    using cardFormEditing::NumberEdit;
    const CardUtils utils;
    // A digit of another script is refused.
    EXPECT_EQ(cardFormEditing::numberEdit(utils, u"4111"_s, 4, 0, u"\u0661"_s, u"4111"_s).kind,
        NumberEdit::Kind::Refuse);
    const NumberEdit replaced
        = cardFormEditing::numberEdit(utils, u"4111-1111"_s, 0, 9, u"51051051"_s, u"41111111"_s);
    EXPECT_EQ(replaced.kind, NumberEdit::Kind::Show);
    EXPECT_EQ(replaced.shown, u"5105-1051"_s);
    EXPECT_EQ(replaced.card, u"51051051"_s);

    const std::array<std::array<QString, 4>, 5> follow { { { u"Asha"_s, u"Ash"_s, u"a"_s, u"Asha"_s },
        { u"Asha"_s, u"Asha"_s, u""_s, u"Ash"_s }, { u"José"_s, u"Jose\u0301"_s, u""_s, u"Jos"_s },
        { u""_s, u""_s, u"A"_s, u"A"_s }, { u"kept"_s, u""_s, u""_s, u"kept"_s } } };
    for (const auto &[stored, field, replacement, result] : follow)
        EXPECT_EQ(cardFormEditing::followedText(stored, field, replacement), result) << field.toStdString();
}

struct CvvRow
{
    const char *name, *number, *keys, *laterNumber, *laterKeys, *shown, *cvv;
    int limitLength;
};

class CardCvvTest : public CardScreenTest, public ::testing::WithParamInterface<CvvRow>
{
};

TEST_P(CardCvvTest, LimitsTheCvvByScheme)
{
    const CvvRow &row = GetParam();
    type(screen->tfCardNumber, QString::fromUtf8(row.number));
    type(screen->tfCvv, QString::fromUtf8(row.keys));
    type(screen->tfCardNumber, QString::fromUtf8(row.laterNumber));
    type(screen->tfCvv, QString::fromUtf8(row.laterKeys));
    EXPECT_EQ(screen->tfCvv->text(), QString::fromUtf8(row.shown));
    EXPECT_EQ(screen->cvv, QString::fromUtf8(row.cvv));
    EXPECT_EQ(screen->limitLength, row.limitLength);
}

// clang-format off
const CvvRow kCvvRows[] = {
    { "visa_three",              "4111111111111111", "12345",          "", "",  "123",   "123",   3 },
    { "amex_four",               "378282246310005",  "12345",          "", "",  "1234",  "1234",  4 },
    { "deletion",                "4111111111111111", "123<BS>",        "", "",  "12",    "12",    3 },
    { "letter_refused",          "4111111111111111", "1a2",            "", "",  "12",    "12",    3 },
    { "typed_first_stored_last", "4111111111111111", "12<Home>3",      "", "",  "312",   "123",   3 },
    // Only typing into a non-empty field is held at the limit.
    { "paste_into_empty",        "4111111111111111", "<Paste=12345>",  "", "",  "12345", "12345", 3 },
    { "number_changed_after",    "378282246310005",  "1234", "<All>4111111111111111", "5", "1234", "1234", 3 },
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(
    Keys, CardCvvTest, ::testing::ValuesIn(kCvvRows), [](const auto &info) { return info.param.name; });

// The expiry lists below their buttons and what their buttons choose, then one customer's way
// through the form: proceed follows the checks after every keystroke and choice, in its
// designed colour when enabled, light grey when not.
TEST_F(CardScreenTest, ExpiryListsAndProceedFollowTheFormThroughKeystrokesAndChoices)
{
    QStringList months { u"MM"_s }, years { u"YYYY"_s };
    for (int m = 1; m <= 12; ++m)
        months << QString::number(m);
    for (int y = kThisYear; y < kThisYear + 40; ++y)
        years << QString::number(y);
    const std::tuple<DropDown *, QPushButton *, QStringList, QString> lists[]
        = { { &screen->mmDropDown, screen->btnMonth, months, u"Expiry month"_s },
              { &screen->yyyyDropDown, screen->btnYear, years, u"Expiry year"_s } };
    for (const auto &[list, anchor, items, accessibleName] : lists) {
        EXPECT_EQ(list->dataSource(), items);
        EXPECT_EQ(list->anchorView(), anchor);
        EXPECT_EQ(list->accessibleName(), accessibleName);
    }
    EXPECT_EQ(screen->month, u"mm"_s);
    EXPECT_EQ(screen->year, u"yyyy"_s);
    EXPECT_FALSE(screen->btnProceed->isEnabled()) << "at start-up";
    EXPECT_EQ(proceedColour(), kLightGrey) << "at start-up";

    // Each of the four buttons opens its list; a choice titles the anchor and is stored.
    const std::tuple<QPushButton *, const char *, QString, bool> choices[] = {
        { screen->btnMonth, "<Down><Down><Down><Return>", u"3"_s, true },
        { screen->btnDropMonth, "<End><Return>", u"12"_s, true },
        { screen->btnMonth, "<Home><Down><Escape>", u"12"_s, true }, // no choice
        { screen->btnYear, "<Down><Return>", QString::number(kThisYear), false },
        { screen->btnDropYear, "<End><Return>", QString::number(kThisYear + 39), false },
        { screen->btnDropYear, "<Home><Return>", u"YYYY"_s, false },
    };
    for (const auto &[opener, keys, chosen, isMonth] : choices) {
        choose(opener, QString::fromUtf8(keys));
        EXPECT_EQ((isMonth ? screen->btnMonth : screen->btnYear)->text(), chosen) << keys;
        EXPECT_EQ(isMonth ? screen->month : screen->year, chosen) << keys;
    }

    const std::pair<std::function<void()>, bool> steps[] = {
        { [&] { type(screen->tfCardNumber, u"4111111111111111"_s); }, false },
        { [&] { type(screen->tfCardName, u"Asha"_s); }, false },
        { [&] { chooseMonth(7); }, false },
        { [&] { chooseYear(2); }, false },
        { [&] { type(screen->tfCvv, u"12"_s); }, false },
        { [&] { type(screen->tfCvv, u"3"_s); }, true },
        { [&] { chooseMonth(0); }, false }, // "MM"
        { [&] { chooseMonth(7); }, true },
        { [&] { chooseYear(0); }, false }, // "YYYY"
        { [&] { chooseYear(2); }, true },
        { [&] { type(screen->tfCvv, u"<BS>"_s); }, false },
        { [&] { type(screen->tfCvv, u"3"_s); }, true },
        // Emptied fields leave the stored values of the keystroke before: still complete.
        { [&] { type(screen->tfCardName, u"<All><BS>"_s); }, true },
        { [&] { type(screen->tfCardNumber, u"<All><BS>"_s); }, true },
        { [&] { type(screen->tfCardNumber, u"4111"_s); }, false },
    };
    for (std::size_t step = 0; step < std::size(steps); ++step) {
        steps[step].first();
        EXPECT_EQ(screen->btnProceed->isEnabled(), steps[step].second) << "step " << step;
        EXPECT_EQ(proceedColour(), steps[step].second ? kDesignedBlue : kLightGrey) << "step " << step;
    }
    EXPECT_EQ(screen->name, u"Ash"_s);
}

struct RefusalRow
{
    const char *name, *number, *cardName;
    int month, yearRow; // -1: not chosen
    const char *cvv;
    bool online;
    const char *toast;
};

class CardRefusalTest : public CardScreenTest, public ::testing::WithParamInterface<RefusalRow>
{
};

TEST_P(CardRefusalTest, ProceedExplainsWhatIsWrongAndSendsNothing)
{
    const RefusalRow &row = GetParam();
    fillForm(QString::fromUtf8(row.number), QString::fromUtf8(row.cardName), row.month, row.yearRow,
        QString::fromUtf8(row.cvv));
    network.online = row.online;
    // A form that fails the checks keeps the button disabled: its action runs as a tap would.
    if (screen->btnProceed->isEnabled())
        proceed();
    else
        screen->btnProceedAction();

    EXPECT_EQ(toasts(), QStringList { QString::fromUtf8(row.toast) });
    EXPECT_FALSE(screen->task);
    EXPECT_FALSE(screen->loader().isAnimating());
    EXPECT_TRUE(testing::inProcessBackend().requests().empty());
}

// clang-format off
const RefusalRow kRefusalRows[] = {
    { "twelve_digits", "411111111111",     "Asha", 7,  2,  "739", true,  "Card is not valid !!" },
    { "no_name",       "4111111111111111", "",     7,  2,  "739", true,  "Card name is not valid !!" },
    { "no_year",       "4111111111111111", "Asha", 7,  -1, "739", true,  "Year is not valid !!" },
    { "no_month",      "4111111111111111", "Asha", -1, 2,  "739", true,  "Month is not valid !!" },
    { "short_cvv",     "4111111111111111", "Asha", 7,  2,  "73",  true,  "CVV is not valid !!" },
    { "offline",       "4111111111111111", "Asha", 7,  2,  "739", false, "No Network" },
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Checks, CardRefusalTest, ::testing::ValuesIn(kRefusalRows),
    [](const auto &info) { return info.param.name; });

TEST_F(CardScreenTest, RegistersThePaymentOnceAndHandsTheBankPageOver)
{
    testing::inProcessBackend().enqueueReply(kPayEndpoint, kBankPage);
    fillForm();
    QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
    const DataTaskPtr registration = screen->task;
    ASSERT_TRUE(registration);
    QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
    EXPECT_EQ(screen->task, registration) << "a second proceed while the first runs";

    ASSERT_TRUE(answer(1));
    const auto bodies = payCardBodies();
    ASSERT_EQ(bodies.size(), 1u);
    const nlohmann::json expected = { { "cvv", "739" }, { "collectorId", "COL-9" },
        { "requestedAmount", "1250.00" }, { "merchantTransactionRefNumber", "ORD-CARD-7" },
        { "customerMobNum", "9876543210" }, { "customerEmail", "buyer@example.in" }, { "serviceType", "28" },
        { "requestId", "REQ-1" }, { "retry", false },
        { "bankAccount",
            { { "cardNumber", "4111111111111111" }, { "cardName", "Asha Verma" }, { "cardExpiryMonth", "7" },
                { "cardExpiryYear", std::to_string(kThisYear + 1) } } } };
    EXPECT_EQ(bodies[0], expected);

    auto *page = dynamic_cast<FakeBankPage *>(nav->topViewController());
    ASSERT_TRUE(page);
    EXPECT_EQ(FakeBankPage::made, 1);
    EXPECT_EQ(page->url, u"https://bank.example/pay"_s);
    EXPECT_EQ(page->postData, u"a=1&device_type=1"_s);
    EXPECT_EQ(page->kovenaTransactionId, u"1700000000042"_s);
    EXPECT_EQ(page->merchantVC, merchant.data());
    EXPECT_FALSE(screen->loader().isAnimating());
    EXPECT_EQ(merchant->callCount(), 0u);
}

class CardEmptyAnswerTest : public CardScreenTest,
                            public ::testing::WithParamInterface<std::vector<sandbox::ScriptedReply>>
{
};

TEST_P(CardEmptyAnswerTest, KeepsTheCustomerOnTheFormReadyToTryAgain)
{
    for (const sandbox::ScriptedReply &reply : GetParam())
        testing::inProcessBackend().enqueueReply(kPayEndpoint, reply);
    fillForm();
    proceed();
    ASSERT_TRUE(answer(1));

    EXPECT_EQ(nav->topViewController(), screen.data());
    EXPECT_EQ(FakeBankPage::made, 0);
    EXPECT_FALSE(screen->loader().isAnimating());
    EXPECT_EQ(screen->tfCardNumber->text(), u"4111-1111-1111-1111"_s);
    EXPECT_EQ(merchant->callCount(), 0u);

    testing::inProcessBackend().clearScriptedReplies();
    testing::inProcessBackend().enqueueReply(kPayEndpoint, kDeclined);
    const std::size_t sent = payCardBodies().size();
    const int answered = counting.fromOtherThreads();
    proceed();
    EXPECT_TRUE(answer(answered + 1));
    EXPECT_EQ(payCardBodies().size(), sent + 1);
}

// Two drops: the network stack resends once when a kept-alive connection closes unanswered.
INSTANTIATE_TEST_SUITE_P(Answers, CardEmptyAnswerTest,
    ::testing::Values(std::vector { kDeclined },
        std::vector<sandbox::ScriptedReply> { { 200,
            R"({"responseCode":"200MERSUCC","data":{"kovenaTransactionId":7,"paymentData":{"url":"","data":"a"}}})" } },
        std::vector<sandbox::ScriptedReply> { { 200, "", true }, { 200, "", true } }),
    [](const auto &info) {
        return std::string(std::array { "declined", "no_address", "connection_dropped" }[info.index]);
    });

enum class CancelAt { Form, RequestInFlight, AnswerQueued };

class CardCancelTest : public CardScreenTest, public ::testing::WithParamInterface<CancelAt>
{
};

// "Cancel" in the question keeps the customer on the form; "Proceed" reports -1 once, and no
// bank page follows whatever the registration was doing.
TEST_P(CardCancelTest, CancelAsksFirstThenReportsOnce)
{
    const CancelAt at = GetParam();
    EXPECT_TRUE(nav->backButton()->isHidden());
    DataTaskPtr registration;
    if (at != CancelAt::Form) {
        sandbox::ScriptedReply reply = kBankPage;
        if (at == CancelAt::RequestInFlight)
            reply.delay = 60s; // cut short when the sandbox stops
        testing::inProcessBackend().enqueueReply(kPayEndpoint, reply);
        fillForm();
        proceed();
        registration = screen->task;
        ASSERT_TRUE(testing::inProcessBackend().waitForRequests(1, 10s));
        if (at == CancelAt::AnswerQueued) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return counting.fromOtherThreads() > 0; }, testing::kWaitMs));
        }
    }
    testing::answerCancelQuestion(nav, screen, u"Cancel"_s);
    EXPECT_EQ(merchant->callCount(), 0u);
    testing::answerCancelQuestion(nav, screen, u"Proceed"_s);
    if (registration) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return registration->isFinished(); }, testing::kWaitMs));
    }
    clock.runDue();

    EXPECT_EQ(merchant->statuses(), QStringList { u"-1 Cancelled"_s });
    EXPECT_EQ(FakeBankPage::made, 0);
    EXPECT_FALSE(screen->loader().isAnimating());
}

INSTANTIATE_TEST_SUITE_P(Moments, CardCancelTest,
    ::testing::Values(CancelAt::Form, CancelAt::RequestInFlight, CancelAt::AnswerQueued),
    [](const auto &info) {
        return std::string(
            std::array { "on_the_form", "request_in_flight", "answer_queued" }[int(info.param)]);
    });

TEST_F(CardScreenTest, DisappearingCancelsTheRequest)
{
    sandbox::ScriptedReply slow = kDeclined;
    slow.delay = 60s;
    testing::inProcessBackend().enqueueReply(kPayEndpoint, slow);
    fillForm();
    proceed();
    const DataTaskPtr registration = screen->task;
    ASSERT_TRUE(registration && testing::inProcessBackend().waitForRequests(1, 10s));
    EXPECT_FALSE(registration->isFinished());
    EXPECT_TRUE(screen->loader().isAnimating());

    // Covered by another screen it disappears but stays alive, so only disappearing can cancel.
    nav->pushViewController(new ViewController, false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return registration->isFinished(); }, testing::kWaitMs));
    ASSERT_TRUE(screen);
}

TEST_F(CardScreenTest, EditingTheCvvLiftsTheScreenAndReturnOnTheNameEndsEditing)
{
    ASSERT_EQ(screen->y(), 0);
    QTest::mouseClick(screen->tfCvv, Qt::LeftButton);
    EXPECT_EQ(screen->y(), -70);
    QTest::mouseClick(screen->tfCardName, Qt::LeftButton);
    EXPECT_EQ(screen->y(), 0);
    QTest::mouseClick(screen->tfCvv, Qt::LeftButton);
    QTest::mouseClick(screen, Qt::LeftButton, {}, QPoint(4, 300)); // a tap on the background
    EXPECT_EQ(screen->y(), 0);
    EXPECT_FALSE(screen->tfCvv->hasFocus());

    QTest::mouseClick(screen->tfCardName, Qt::LeftButton);
    QTest::keyClick(screen->tfCardName, Qt::Key_Return);
    EXPECT_FALSE(screen->tfCardName->hasFocus());
}

using CardScreenDeathTest = CardScreenTest;

TEST_F(CardScreenDeathTest, FatalSpotsTheScreenReaches)
{
    // Issuer LASER, type Maestro: the year check lets "yyyy" through to the month check, which
    // cannot read it as a number once a month is chosen.
    type(screen->tfCardNumber, u"6304123456789012"_s);
    type(screen->tfCardName, u"Asha"_s);
    EXPECT_DEATH(chooseMonth(6), testing::fatalLine("CardUtils::isValidMonth: year is not a number"));

    fillForm(u"<All><BS>4111111111111111"_s, {}, 6, 2, u"739"_s);
    ASSERT_TRUE(screen->btnProceed->isEnabled());
    screen->merchantTransactionRefNumber.reset();
    EXPECT_DEATH(
        proceed(), testing::fatalLine("CardViewController: merchantTransactionRefNumber is missing"));
    screen->merchantTransactionRefNumber = u"ORD-CARD-7"_s;
    screen->collectorId.reset();
    EXPECT_DEATH(proceed(), testing::fatalLine("CardViewController: collectorId is missing"));
}

} // namespace
} // namespace kovena
