// Every CardUtils operation on arbitrary text. The first byte says which arguments are absent
// (bits 0-4: card number, name, month, year, CVV), which day it is (bits 5-6) and whether the
// card screen is gone before its toast is shown (bit 7); the rest is the five texts, separated
// by U+001F, read once as UTF-8 and once as raw UTF-16.
#include "FuzzSupport.h"

#include "payment/CardUtils.h"
#include "platform/ManualScheduler.h"
#include "platform/ToastPresenter.h"

#include <QDate>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

// A day in the middle of a year, the first and last days of one, and a leap day.
const std::array<QDate, 4> kDays { QDate(2025, 6, 15), QDate(2026, 1, 1), QDate(2031, 12, 31),
    QDate(2028, 2, 29) };

const QStringList kToasts { QStringLiteral("Card is not valid !!"),
    QStringLiteral("Card name is not valid !!"), QStringLiteral("Year is not valid !!"),
    QStringLiteral("Month is not valid !!"), QStringLiteral("CVV is not valid !!") };

class Screen final : public ToastPresenter
{
public:
    void showToast(const QString &message) override { toasts.append(message); }
    QStringList toasts;
};

// Runs a check that may stop the library; nothing when it did.
template<class Check> std::optional<bool> outcome(Check &&check)
{
    std::optional<bool> result;
    if (stops([&] { result = check(); }))
        return std::nullopt;
    return result;
}

void fuzzCard(ManualScheduler &clock, std::uint8_t flags, const QStringList &texts)
{
    const auto argument = [&](int i) { return (flags >> i) & 1 ? std::nullopt : std::optional(texts.at(i)); };
    const std::optional<QString> number = argument(0), name = argument(1), month = argument(2),
                                 year = argument(3), cvv = argument(4);
    const CardUtils utils([day = kDays[(flags >> 5) & 3]] { return day; });

    const QString issuer
        = mustReturn([&] { return utils.getCardIssuer(texts.at(0)); }, "getCardIssuer stopped");
    using Issuer = CardUtils::CardIssuer;
    const QStringView issuers[] { Issuer::AMEX, Issuer::VISA, Issuer::MASTER, Issuer::MAESTRO, Issuer::DINER,
        Issuer::JCB, Issuer::DISCOVER, Issuer::LASER, Issuer::RUPAY };
    require(
        issuer.isEmpty() || std::find(std::begin(issuers), std::end(issuers), issuer) != std::end(issuers),
        "an issuer outside the issuer constants");
    const QString icon
        = mustReturn([&] { return utils.getCardIssuerIcon(texts.at(0)); }, "getCardIssuerIcon stopped");
    require(icon.isEmpty() == issuer.isEmpty() && (icon.isEmpty() || icon.endsWith(u".png")),
        "an icon that does not follow the issuer");
    const auto type = mustReturn([&] { return utils.type(texts.at(0)); }, "type(from:) stopped");
    require(!type || utils.types().contains(*type), "a card type outside the type table");
    const int cvvLength = mustReturn([&] { return utils.getCvvLength(texts.at(0)); }, "getCvvLength stopped");
    require(
        cvvLength == (type && type->name == u"Amex" ? 4 : 3), "a CVV length that does not follow the type");

    const std::optional<bool> cvvValid = outcome([&] { return utils.isValidCvv(number, cvv); });
    const std::optional<bool> monthValid = outcome([&] { return utils.isValidMonth(number, month, year); });
    const std::optional<bool> yearValid = outcome([&] { return utils.isValidYear(number, year); });
    const std::optional<bool> enabled
        = outcome([&] { return utils.isButtonProceedEnabled(number, name, month, year, cvv); });
    if (enabled == true) {
        require(!issuer.isEmpty() && cvvValid == true && monthValid == true && yearValid == true,
            "the proceed button is enabled for a card that fails a check");
    }

    // The checks with a toast agree with the silent ones and queue one toast per failure.
    auto screen = std::make_unique<Screen>();
    const std::optional<bool> valid
        = outcome([&] { return utils.isValidCardDetails(*screen, number, name, month, year, cvv); });
    require(valid == enabled, "isValidCardDetails and isButtonProceedEnabled disagree");
    require(clock.pendingCount() == (valid == false ? 1 : 0), "not one toast queued per failed card");
    if (flags & 0x80)
        screen.reset();
    clock.runDue();
    if (screen) {
        require(screen->toasts.size() == (valid == false ? 1 : 0)
                && (screen->toasts.isEmpty() || kToasts.contains(screen->toasts.front())),
            "the toast is not one of the card form's messages");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // Installed for the whole run and never destroyed, so no block can outlive it.
    static ManualScheduler &clock = *new ManualScheduler;
    static const bool initialised = [] {
        initialise();
        setScheduler(&clock);
        return true;
    }();
    (void)initialised;
    if (size == 0)
        return 0;
    latestStop().clear();
    fuzzCard(clock, data[0], splitArguments(lenientUtf8(data + 1, size - 1), 5));
    fuzzCard(clock, data[0], splitArguments(rawUtf16(data + 1, size - 1), 5));
    return 0;
}
