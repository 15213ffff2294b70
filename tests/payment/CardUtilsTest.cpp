// Card scheme detection and the card form's checks: issuer rules, scheme table, expiry and CVV
// rules, the order of the form checks with their one toast, and the compiled-once patterns
// against fresh compilations.
#include "payment/CardUtils.h"
#include "payment/CardIssuerRules.h"
#include "platform/ManualScheduler.h"
#include "platform/ToastPresenter.h"
#include "support/FatalDiagnostic.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <functional>
#include <ostream>
#include <random>
#include <set>

using namespace Qt::StringLiterals;

// Readable QString values in failure messages.
void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace kovena {
namespace {

using Opt = std::optional<QString>;
const QString none = QString();

// A fixed "today": June 2031.
CardUtils inJune2031()
{
    return CardUtils([] { return QDate(2031, 6, 15); });
}

QString loneSurrogateAfter(const QString &text)
{
    return text + QChar(0xD800);
}

struct IssuerRow
{
    QString number, issuer;
};

// Rows shared by the issuer table and the cached-against-fresh comparison.
const std::vector<IssuerRow> &issuerRows()
{
    static const std::vector<IssuerRow> rows = { { u"4"_s, u"VISA"_s }, { u"4606985"_s, u"VISA"_s },
        { u"34"_s, none }, { u"341"_s, u"AMEX"_s }, { u"3411111"_s, u"AMEX"_s },
        // Rule three needs a digit after 6011 or 65xx, and takes the 65xx range before the Rupay rule.
        { u"6011"_s, none }, { u"60111"_s, u"DISCOVER"_s }, { u"6011111111111117"_s, u"DISCOVER"_s },
        { u"652150"_s, u"DISCOVER"_s },
        // 6011 or 65xx and seven more digits anywhere: LASER before MASTER and MAESTRO.
        { u"5123601112345678"_s, u"LASER"_s }, { u"512360111234567"_s, u"LASER"_s },
        { u"51236011123456"_s, u"MASTER"_s }, { u"5165001234567"_s, u"LASER"_s },
        { u"5123-6011-1234-5678"_s, u"MASTER"_s }, { u"5123 6011 1234 5678"_s, u"MASTER"_s },
        { u"6304"_s, none }, { u"63041"_s, u"LASER"_s }, { u"67061"_s, u"LASER"_s },
        { u"67091"_s, u"LASER"_s }, { u"67071"_s, u"MAESTRO"_s }, { u"63901"_s, u"MAESTRO"_s },
        { u"51"_s, none }, { u"511"_s, u"MASTER"_s }, { u"5018"_s, none }, { u"50181"_s, u"MAESTRO"_s },
        { u"5018 1234"_s, none }, { u"508500"_s, u"MAESTRO"_s }, { u"5085001"_s, u"MAESTRO"_s },
        { u"3001"_s, u"DINER"_s }, { u"3061"_s, none }, { u"2131"_s, none }, { u"21311"_s, u"JCB"_s },
        { u"35280"_s, none }, { u"352800"_s, u"JCB"_s }, { u"606985"_s, u"RUPAY"_s },
        { u"6069851"_s, u"RUPAY"_s }, { u"606984"_s, none }, { u"607984"_s, u"RUPAY"_s },
        { u"607985"_s, none }, { u"608001"_s, u"RUPAY"_s }, { u"608500"_s, u"RUPAY"_s },
        { u"608501"_s, none }, { u"9606985"_s, u"RUPAY"_s },
        // The negative look-ahead: 608000 is refused where it starts, found elsewhere.
        { u"608000"_s, none }, { u"6080001"_s, none }, { u"96080001"_s, none }, { u"6080011"_s, u"RUPAY"_s },
        // "\d" is any decimal digit, "[0-9]" only ASCII ones.
        { u"6304\u0661"_s, u"LASER"_s }, { u"6304a"_s, none }, { u"51\u0663"_s, u"MASTER"_s },
        { u"5\u0661\u0663"_s, none }, { u"5018\u0967"_s, u"MAESTRO"_s }, { u"34\u0967"_s, none },
        { u"56011123456\u0667"_s, u"LASER"_s }, { u"5\u0666\u0660\u0661\u0661123456\u0667"_s, none },
        { u""_s, none }, { u"\u0664"_s, none },
        // The rules search as many UTF-16 units as the number has characters: a combining
        // mark costs the last digit.
        { u"e60111234567"_s, u"LASER"_s }, { u"e\u030160111234567"_s, none },
        { loneSurrogateAfter(u"4"_s), u"VISA"_s }, { loneSurrogateAfter(u"5018"_s) + u'1', none } };
    return rows;
}

TEST(CardUtils, IssuerRulesAreTriedInOrderAndSearchAnywhere)
{
    const CardUtils utils;
    for (const auto &[number, issuer] : issuerRows())
        EXPECT_EQ(utils.getCardIssuer(number), issuer) << number.toStdString();
}

TEST(CardUtils, IconFollowsTheIssuer)
{
    const std::pair<QString, QString> rows[] = { { u"341"_s, u"ci_amex.png"_s }, { u"4"_s, u"ci_visa.png"_s },
        { u"511"_s, u"ci_mastercard.png"_s }, { u"50181"_s, u"ci_maestro.png"_s },
        { u"3001"_s, u"ci_diner.png"_s }, { u"21311"_s, u"ci_jcb.png"_s },
        { u"60111"_s, u"ci_discover.png"_s }, { u"5123601112345678"_s, u"ci_laser.png"_s },
        { u"606985"_s, u"ci_rupee.png"_s }, { u"4111-1111-1111-1111"_s, u"ci_visa.png"_s },
        { u"6212345678901234"_s, none }, { u""_s, none } };
    const CardUtils utils;
    for (const auto &[number, icon] : rows)
        EXPECT_EQ(utils.getCardIssuerIcon(number), icon) << number.toStdString();
}

TEST(CardUtils, TypeMatchesTheWholeDigitStringAndDecidesTheCvvLength)
{
    const std::tuple<QString, Opt, int> rows[] = { { u"4"_s, u"Visa"_s, 3 }, { u"341"_s, {}, 3 },
        { u"3411111"_s, u"Amex"_s, 4 }, { u"37-11 111"_s, u"Amex"_s, 4 },
        { u"3411\u00b2111"_s, u"Amex"_s, 4 }, // "²" is not a decimal digit
        { u"508500"_s, u"Rupay"_s, 3 }, { u"5085001"_s, {}, 3 }, { u"606985"_s, u"Rupay"_s, 3 },
        { u"6069851"_s, {}, 3 }, { u"608000"_s, {}, 3 }, { u"608001"_s, u"Rupay"_s, 3 },
        { u"652150"_s, u"Rupay"_s, 3 }, { u"5105105105105100"_s, u"MasterCard"_s, 3 },
        { u"51051051051051001"_s, {}, 3 }, { u"5018123456789"_s, u"Maestro"_s, 3 },
        { u"6304123456789"_s, u"Maestro"_s, 3 }, { u"30012345678901"_s, u"Diners"_s, 3 },
        { u"3528000000000000"_s, u"JCB"_s, 3 }, { u"6011111111111117"_s, u"Discover"_s, 3 },
        { u"6212345678901234"_s, u"UnionPay"_s, 3 }, { u"2200123456789012"_s, u"Mir"_s, 3 }, { u""_s, {}, 3 },
        { u"abc"_s, {}, 3 }, { u"4\u0967\u0968"_s, u"Visa"_s, 3 }, { u"4\U0001D7CF"_s, u"Visa"_s, 3 },
        { u"34\u0661\u0661\u0661\u0661\u0661"_s, {}, 3 } };
    const CardUtils utils;
    for (const auto &[number, type, cvvLength] : rows) {
        const auto found = utils.type(number);
        EXPECT_EQ(found ? Opt(found->name) : Opt(), type) << number.toStdString();
        EXPECT_EQ(utils.getCvvLength(number), cvvLength) << number.toStdString();
    }
}

TEST(CardUtils, CvvYearAndMonthRules)
{
    const CardUtils utils = inJune2031();
    // number, cvv, valid
    const std::tuple<QString, Opt, bool> cvvRows[] = { { u"4111"_s, u"123"_s, true },
        { u"4111"_s, u"1234"_s, false }, { u"4111"_s, u"12"_s, false }, { u"4111"_s, u""_s, false },
        { u"4111"_s, u"12a"_s, true }, { u"4111"_s, u"1\u03012"_s, false },
        { u"4111"_s, u"1\u030123"_s, true }, { u"341"_s, u"1234"_s, true }, { u"341"_s, u"123"_s, false },
        { u"63041"_s, u"123"_s, true }, { u"50181"_s, {}, true }, { u"50181"_s, u""_s, true } };
    for (const auto &[number, cvv, valid] : cvvRows)
        EXPECT_EQ(utils.isValidCvv(number, cvv), valid)
            << number.toStdString() << " " << cvv.value_or(u"nil"_s).toStdString();

    // number, year, valid. The year check goes by the scheme table: only a "Maestro" type skips it.
    const std::tuple<QString, Opt, bool> yearRows[]
        = { { u"4111"_s, u"2031"_s, true }, { u"4111"_s, u"1999"_s, true }, { u"4111"_s, u"YYYY"_s, false },
              { u"4111"_s, u"yyyy"_s, false }, { u"4111"_s, u""_s, false }, { u"5018123456789"_s, {}, true },
              { u"6304123456789"_s, u"YYYY"_s, true }, { u"50181"_s, u"YYYY"_s, false } };
    for (const auto &[number, year, valid] : yearRows)
        EXPECT_EQ(utils.isValidYear(number, year), valid) << number.toStdString();

    // number, month, year, valid. The month check goes by the issuer.
    const std::tuple<QString, Opt, Opt, bool> monthRows[]
        = { { u"4111"_s, u"05"_s, u"+2031"_s, false }, { u"4111"_s, u"06"_s, u"2031"_s, true },
              { u"4111"_s, u"1"_s, u"2030"_s, true }, { u"4111"_s, u""_s, u"2031"_s, false },
              { u"4111"_s, u"MM"_s, u"2031"_s, false }, { u"4111"_s, u"mm"_s, u"YYYY"_s, false },
              { u"50181"_s, {}, {}, true }, { u"6304123456789"_s, u"MM"_s, u"YYYY"_s, false } };
    for (const auto &[number, month, year, valid] : monthRows)
        EXPECT_EQ(utils.isValidMonth(number, month, year), valid) << number.toStdString();

    for (int month = 1; month <= 12; ++month) {
        const QString m = QString::number(month);
        EXPECT_EQ(utils.isValidMonth(u"4111"_s, m, u"2031"_s), month >= 6) << month;
        EXPECT_TRUE(utils.isValidMonth(u"4111"_s, m, u"2032"_s)) << month;
    }
}

TEST(CardUtils, MonthRuleReadsTheLocalCalendarByDefault)
{
    const QDate before = QDate::currentDate();
    const CardUtils utils;
    const QString year = QString::number(before.year());
    const bool current = utils.isValidMonth(u"4111"_s, QString::number(before.month()), year);
    const bool previous = utils.isValidMonth(u"4111"_s, QString::number(before.month() - 1), year);
    if (QDate::currentDate().month() != before.month())
        GTEST_SKIP() << "the month changed while the test ran";
    EXPECT_TRUE(current);
    EXPECT_FALSE(previous);
}

struct FakePresenter : ToastPresenter
{
    explicit FakePresenter(QStringList &shown)
        : shown(shown)
    { }
    void showToast(const QString &message) override { shown.append(message); }
    QStringList &shown;
};

struct Form
{
    Opt card = u"4111111111111111"_s, name = u"A Customer"_s, month = u"6"_s, year = u"2031"_s,
        cvv = u"123"_s;
};

TEST(CardUtils, CardDetailsStopAtTheFirstFailureWithOneToastOnTheMainQueue)
{
    const QString card = u"Card is not valid !!"_s, name = u"Card name is not valid !!"_s,
                  year = u"Year is not valid !!"_s, month = u"Month is not valid !!"_s,
                  cvv = u"CVV is not valid !!"_s;
    const std::pair<Form, QString> rows[] = { { {}, none }, { { .card = u""_s }, card },
        { { .card = u"411111111111"_s }, card }, { { .card = u"4111111111111"_s }, none },
        { { .card = u"4111 1111 111"_s }, none }, // separators count as characters
        { { .card = u"411111111111\u0301"_s }, card }, // twelve characters in thirteen units
        { { .card = u"6212345678901234"_s }, card }, { { .card = u"1234567890123"_s }, card },
        { { .name = u""_s, .year = u"YYYY"_s }, name }, { { .name = u" "_s }, none },
        { { .month = u"MM"_s, .year = u"YYYY"_s }, year }, { { .month = u"MM"_s, .cvv = u""_s }, month },
        { { .month = u"5"_s }, month }, { { .month = u"1"_s, .year = u"2032"_s }, none },
        { { .cvv = u""_s }, cvv }, { { .cvv = u"1234"_s }, cvv }, { { .card = u"341111111111111"_s }, cvv },
        { { .card = u"341111111111111"_s, .cvv = u"1234"_s }, none },
        // Maestro by issuer and by type: every expiry and CVV value passes.
        { { .card = u"5018123456789"_s, .month = u"MM"_s, .year = u"YYYY"_s, .cvv = u""_s }, none },
        // Maestro by issuer only (twenty digits are no type): the year is still checked.
        { { .card = u"50181234567890123456"_s, .year = u"YYYY"_s }, year },
        { { .card = u"50181234567890123456"_s, .month = u"MM"_s, .cvv = u""_s }, none },
        // Maestro by type only (issuer LASER): the year passes, the month does not.
        { { .card = u"6304123456789"_s, .month = u"MM"_s, .year = u"YYYY"_s }, month } };
    const CardUtils utils = inJune2031();
    for (const auto &[form, toast] : rows) {
        ManualScheduler clock;
        ScopedScheduler scoped(clock);
        QStringList shown;
        FakePresenter presenter(shown);
        const std::string label = form.card->toStdString() + " -> " + toast.toStdString();
        EXPECT_EQ(utils.isButtonProceedEnabled(form.card, form.name, form.month, form.year, form.cvv),
            toast.isNull())
            << label;
        EXPECT_EQ(clock.pendingCount(), 0) << label;
        EXPECT_EQ(utils.isValidCardDetails(presenter, form.card, form.name, form.month, form.year, form.cvv),
            toast.isNull())
            << label;
        EXPECT_TRUE(shown.isEmpty()) << label;
        EXPECT_EQ(clock.pendingQueues(),
            toast.isNull() ? std::vector<QueueKind> {} : std::vector { QueueKind::Main })
            << label;
        clock.runDue();
        EXPECT_EQ(shown, toast.isNull() ? QStringList() : QStringList { toast }) << label;
    }
}

TEST(CardUtils, ToastIsSkippedWhenTheScreenIsGoneFirst)
{
    ManualScheduler clock;
    ScopedScheduler scoped(clock);
    QStringList shown;
    auto presenter = std::make_unique<FakePresenter>(shown);
    const Form form { .cvv = u""_s };
    EXPECT_FALSE(
        inJune2031().isValidCardDetails(*presenter, form.card, form.name, form.month, form.year, form.cvv));
    presenter.reset();
    EXPECT_EQ(clock.runDue(), 1);
    EXPECT_TRUE(shown.isEmpty());
}

TEST(CardUtilsDeath, AbsentArgumentsThatAStepReads)
{
    const CardUtils utils = inJune2031();
    const Opt visa = u"4111111111111111"_s, nil;
    const QString a = u"A"_s, m = u"6"_s, y = u"2031"_s, c = u"123"_s;
    QStringList shown;
    FakePresenter presenter(shown);
    const std::pair<std::function<void()>, const char *> rows[] = {
        { [&] { utils.isValidCvv(nil, c); }, "CardUtils::isValidCvv: cardNumber is nil" },
        { [&] { utils.isValidCvv(visa, nil); }, "CardUtils::isValidCvv: cvv is nil" },
        { [&] { utils.isValidMonth(nil, m, y); }, "CardUtils::isValidMonth: cardNumber is nil" },
        { [&] { utils.isValidMonth(visa, nil, y); }, "CardUtils::isValidMonth: month is nil" },
        { [&] { utils.isValidMonth(visa, m, nil); }, "CardUtils::isValidMonth: year is nil" },
        { [&] { utils.isValidMonth(visa, m, u" 2031"_s); }, "CardUtils::isValidMonth: year is not a number" },
        { [&] { utils.isValidMonth(visa, u"June"_s, y); }, "CardUtils::isValidMonth: month is not a number" },
        { [&] { utils.isValidYear(nil, y); }, "CardUtils::isValidYear: cardNumber is nil" },
        { [&] { utils.isValidYear(visa, nil); }, "CardUtils::isValidYear: year is nil" },
        { [&] { utils.isButtonProceedEnabled(nil, a, m, y, c); },
            "CardUtils::isButtonProceedEnabled: cardNumber is nil" },
        { [&] { utils.isButtonProceedEnabled(visa, nil, m, y, c); },
            "CardUtils::isButtonProceedEnabled: cardName is nil" },
        { [&] { utils.isButtonProceedEnabled(visa, a, m, y, nil); }, "CardUtils::isValidCvv: cvv is nil" },
        { [&] { utils.isValidCardDetails(presenter, nil, a, m, y, c); },
            "CardUtils::isValidCardDetails: cardNumber is nil" },
        { [&] { utils.isValidCardDetails(presenter, visa, nil, m, y, c); },
            "CardUtils::isValidCardDetails: cardName is nil" },
        // Maestro by type, LASER by issuer: the year check lets the placeholder through to the
        // month check, which cannot read it. The card screen reaches this once a month is chosen.
        { [&] { utils.isButtonProceedEnabled(u"6304123456789"_s, a, m, u"YYYY"_s, c); },
            "CardUtils::isValidMonth: year is not a number" }
    };
    for (const auto &[call, diagnostic] : rows)
        EXPECT_DEATH(call(), kovena::testing::fatalLine(diagnostic));
}

// Everything the tables above use, then generated numbers near the scheme prefixes with
// separators, letters, combining marks, surrogates and digits of other scripts mixed in.
QStringList comparisonInputs()
{
    QStringList inputs;
    for (const auto &row : issuerRows())
        inputs << row.number;
    inputs << u"30012345678901"_s << u"3528000000000000"_s << u"6212345678901234"_s << u"2200123456789012"_s
           << u"5105105105105100"_s << u"5018123456789"_s;
    const QStringList prefixes = { u""_s, u"4"_s, u"34"_s, u"37"_s, u"6011"_s, u"65"_s, u"6304"_s, u"6706"_s,
        u"6771"_s, u"50"_s, u"508"_s, u"56"_s, u"6390"_s, u"6069"_s, u"607"_s, u"608"_s, u"6080"_s, u"652"_s,
        u"653"_s, u"30"_s, u"36"_s, u"35"_s, u"2131"_s, u"1800"_s, u"62"_s, u"22"_s };
    const QStringList pieces
        = { u"0"_s, u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s, u"8"_s, u"9"_s, u"0"_s, u"1"_s,
              u"5"_s, u"6"_s, u"8"_s, u"-"_s, u" "_s, u"a"_s, u"X"_s, u"\u0661"_s, u"\u0968"_s, u"\uff15"_s,
              u"\u00b2"_s, u"\u0301"_s, u"\U0001D7D8"_s, u"\U0001F600"_s, QString(QChar(0xDC00)) };
    std::mt19937 random(20310615);
    for (int i = 0; i < 3000; ++i) {
        QString text = prefixes[random() % prefixes.size()];
        for (int n = random() % 21; n > 0; --n)
            text += pieces[random() % pieces.size()];
        inputs << text;
    }
    return inputs;
}

QString freshIssuer(const QString &number)
{
    const QString subject = cardrules::issuerSearchText(number);
    for (const cardrules::IssuerRule &rule : cardrules::issuerRules) {
        const QRegularExpression re(rule.pattern.toString(), cardrules::issuerPatternOptions);
        if (re.isValid() && re.match(subject).hasMatch())
            return rule.issuer.toString();
    }
    return QString();
}

Opt freshType(const CardUtils &utils, const QString &number)
{
    QString digits;
    for (const char32_t c : number.toUcs4()) {
        if (QChar::category(c) == QChar::Number_DecimalDigit)
            digits += QString::fromUcs4(&c, 1);
    }
    for (const CreditCardValidationType &record : utils.types()) {
        const QRegularExpression re(
            QRegularExpression::anchoredPattern(record.regex), cardrules::typePatternOptions);
        if (re.match(digits).hasMatch())
            return record.name;
    }
    return std::nullopt;
}

TEST(CardUtils, CompiledOncePatternsAgreeWithFreshCompilations)
{
    const CardUtils utils;
    std::set<QString> issuers, types;
    for (const QString &number : comparisonInputs()) {
        const QString issuer = freshIssuer(number);
        const Opt type = freshType(utils, number);
        ASSERT_EQ(utils.getCardIssuer(number), issuer) << number.toStdString();
        const auto found = utils.type(number);
        ASSERT_EQ(found ? Opt(found->name) : Opt(), type) << number.toStdString();
        issuers.insert(issuer);
        types.insert(type.value_or(QString()));
    }
    // The inputs reach every issuer and every scheme record, and the "none" answers.
    EXPECT_EQ(issuers.size(), 10u);
    EXPECT_EQ(types.size(), 11u);
}

} // namespace
} // namespace kovena
