#include "DemoOptions.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QUrl>

#include <cmath>

using namespace Qt::StringLiterals;

namespace kovena::demo {
namespace {

struct OptionDef
{
    const char *name;
    const char *valueName; // nullptr: a switch
    const char *description;
};

constexpr OptionDef kOptions[] = {
    { "headless", nullptr, "Run one scripted flow offscreen and print one JSON event per line." },
    { "tour", nullptr,
        "Run a UPI, a card and a net-banking payment, a cancellation and a status enquiry headless, "
        "one after another, and print one line per outcome." },
    { "server", "URL", "Backend base URL ending in /KoVena/ (default: an in-process sandbox)." },
    { "record", "FILE", "Append every request the in-process sandbox receives to FILE." },
    { "flow", "FLOW", "checkout (default) or status." },
    { "timeout", "S", "Headless: give up after S seconds with exit code 3 (default 60)." },
    { "settings", "DIR", "Headless: keep the library's user defaults in DIR (default: a temporary folder)." },
    { "amount", "AMOUNT", "Checkout amount (default 100)." },
    { "order", "ORDER", "Order number of a checkout (default ORD-<n>), order id of a status enquiry." },
    { "token", "TOKEN", "Merchant access token (default demo-token)." },
    { "collector", "ID", "Collector id (default COLL-1)." },
    { "mobile", "NUMBER", "Customer mobile number (default 9876543210)." },
    { "email", "EMAIL", "Customer e-mail (default customer@example.com)." },
    { "request-id", "ID", "Merchant request id (default empty: the order number is used)." },
    { "app-name", "NAME", "Merchant name shown on the payment screen (default Demo Store)." },
    { "mode", "MODE", "Payment mode: 1 UPI, 2 card, 3 net banking (default 1)." },
    { "vpa", "VPA", "Headless, mode 1: type VPA into the UPI screen and proceed." },
    { "cancel", nullptr, "Headless: press the current screen's Cancel and confirm it." },
    { "card", "NUMBER", "Headless, mode 2: type NUMBER into the card number field." },
    { "card-name", "NAME", "Headless, mode 2: type NAME into the name on card." },
    { "month", "M", "Headless, mode 2: choose M (MM, 1 to 12) from the expiry month list." },
    { "year", "Y", "Headless, mode 2: choose Y (YYYY or a year) from the expiry year list." },
    { "cvv", "CVV", "Headless, mode 2: type CVV into the CVV field." },
    { "bank", "CODE", "Headless, mode 3: tap the popular bank SBIB, AXIB, HDFB, YESB, PNBB or ICIB." },
    { "bank-index", "I", "Headless, mode 3: choose entry I (from 0) of the bank list and proceed." },
    { "bank-page", "ACTION", "Headless, modes 2 and 3: approve, decline or leave the bank's page." },
    { "txn", "ID", "Transaction id of a status enquiry." },
};

// Options that only a checkout takes, and the ones only a scripted run takes.
const QStringList kCardOptions = { u"card"_s, u"card-name"_s, u"month"_s, u"year"_s, u"cvv"_s };
const QStringList kBankOptions = { u"bank"_s, u"bank-index"_s };
const QStringList kCustomerOptions = kCardOptions + kBankOptions + QStringList { u"bank-page"_s };
const QStringList kCheckoutOnly = QStringList { u"amount"_s, u"collector"_s, u"mobile"_s, u"email"_s,
    u"request-id"_s, u"app-name"_s, u"mode"_s, u"vpa"_s, u"cancel"_s }
    + kCustomerOptions;
const QStringList kHeadlessOnly
    = QStringList { u"vpa"_s, u"cancel"_s, u"timeout"_s, u"settings"_s } + kCustomerOptions;
// The popular banks' buttons by the code of their bank.
const QStringList kPopularBankCodes = { u"SBIB"_s, u"AXIB"_s, u"HDFB"_s, u"YESB"_s, u"PNBB"_s, u"ICIB"_s };

QString defaultOrderNo()
{
    return u"ORD-"_s + QString::number(QDateTime::currentMSecsSinceEpoch());
}

bool isBackendUrl(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && (url.scheme() == "http"_L1 || url.scheme() == "https"_L1) && !url.host().isEmpty()
        && url.path().endsWith("/KoVena/"_L1) && !url.hasQuery() && !url.hasFragment();
}

// The card, bank and bank page options: what they need, and their values. "" when they are fine.
QString takeCustomerOptions(const QCommandLineParser &parser, DemoOptions &o)
{
    const auto optional = [&parser](const QString &name) {
        return parser.isSet(name) ? std::optional<QString>(parser.value(name)) : std::nullopt;
    };
    for (const QString &name : kCardOptions) {
        if (parser.isSet(name) && o.paymentMode != "2"_L1)
            return u"--%1 needs the card payment mode (--mode 2)"_s.arg(name);
    }
    for (const QString &name : kBankOptions) {
        if (parser.isSet(name) && o.paymentMode != "3"_L1)
            return u"--%1 needs the net banking payment mode (--mode 3)"_s.arg(name);
    }
    o.cardNumber = optional(u"card"_s);
    o.cardName = optional(u"card-name"_s);
    o.expiryMonth = optional(u"month"_s);
    o.expiryYear = optional(u"year"_s);
    o.cvv = optional(u"cvv"_s);

    if (parser.isSet(u"bank"_s) && parser.isSet(u"bank-index"_s))
        return u"--bank and --bank-index are two ways to choose a bank: give one"_s;
    if (parser.isSet(u"bank"_s)) {
        o.bankCode = parser.value(u"bank"_s);
        if (!kPopularBankCodes.contains(*o.bankCode))
            return u"--bank must be one of %1, not \"%2\""_s.arg(
                kPopularBankCodes.join(u", "_s), *o.bankCode);
    }
    if (parser.isSet(u"bank-index"_s)) {
        bool ok = false;
        const int index = parser.value(u"bank-index"_s).toInt(&ok);
        if (!ok || index < 0)
            return u"--bank-index must be a whole number from 0, not \"%1\""_s.arg(
                parser.value(u"bank-index"_s));
        o.bankIndex = index;
    }

    if (parser.isSet(u"bank-page"_s)) {
        const QString action = parser.value(u"bank-page"_s);
        if (action == "approve"_L1)
            o.bankPage = DemoOptions::BankPage::Approve;
        else if (action == "decline"_L1)
            o.bankPage = DemoOptions::BankPage::Decline;
        else if (action == "leave"_L1)
            o.bankPage = DemoOptions::BankPage::Leave;
        else
            return u"--bank-page must be approve, decline or leave, not \"%1\""_s.arg(action);
        if (o.paymentMode != "2"_L1 && o.paymentMode != "3"_L1)
            return u"--bank-page needs the card or net banking payment mode (--mode 2 or 3)"_s;
    }
    return {};
}

ParseOutcome fail(ParseOutcome outcome, const QString &error)
{
    outcome.kind = ParseOutcome::Kind::Error;
    outcome.error = error;
    return outcome;
}

} // namespace

ParseOutcome parseDemoOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Merchant test application for the Kovena checkout library.\n"
        "Without --headless it opens a merchant window; with it, it runs one flow and prints\n"
        "{\"event\":\"toast\"|\"screen\"|\"onTransactionComplete\",...} lines on stdout."_s);
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    for (const OptionDef &def : kOptions) {
        QCommandLineOption option(QString::fromLatin1(def.name), QString::fromLatin1(def.description));
        if (def.valueName)
            option.setValueName(QString::fromLatin1(def.valueName));
        parser.addOption(option);
    }

    ParseOutcome outcome;
    outcome.helpText = parser.helpText();
    if (!parser.parse(arguments))
        return fail(outcome, parser.errorText());
    if (parser.isSet(help)) {
        outcome.kind = ParseOutcome::Kind::Help;
        return outcome;
    }
    if (parser.isSet(version)) {
        outcome.kind = ParseOutcome::Kind::Version;
        return outcome;
    }
    if (!parser.positionalArguments().isEmpty())
        return fail(outcome, u"unexpected argument: "_s + parser.positionalArguments().constFirst());

    DemoOptions &o = outcome.options;
    o.headless = parser.isSet(u"headless"_s);
    o.tour = parser.isSet(u"tour"_s);
    if (o.tour) {
        // The tour chooses every flow's arguments itself; it only takes the backend.
        for (const OptionDef &def : kOptions) {
            const QString name = QString::fromLatin1(def.name);
            if (name != "tour"_L1 && name != "server"_L1 && parser.isSet(name))
                return fail(outcome, u"--tour takes no --%1 (only --server)"_s.arg(name));
        }
    }

    const QString flow = parser.isSet(u"flow"_s) ? parser.value(u"flow"_s) : u"checkout"_s;
    if (flow == "checkout"_L1)
        o.flow = DemoOptions::Flow::Checkout;
    else if (flow == "status"_L1)
        o.flow = DemoOptions::Flow::Status;
    else
        return fail(outcome, u"--flow must be checkout or status, not \"%1\""_s.arg(flow));

    if (!o.headless) {
        for (const QString &name : kHeadlessOnly) {
            if (parser.isSet(name))
                return fail(outcome, u"--%1 needs --headless"_s.arg(name));
        }
    }
    if (o.flow == DemoOptions::Flow::Status) {
        for (const QString &name : kCheckoutOnly) {
            if (parser.isSet(name))
                return fail(outcome, u"--%1 does not apply to a status enquiry"_s.arg(name));
        }
    } else if (parser.isSet(u"txn"_s)) {
        return fail(outcome, u"--txn applies to a status enquiry only (--flow status)"_s);
    }

    if (parser.isSet(u"server"_s)) {
        o.serverUrl = parser.value(u"server"_s);
        if (!isBackendUrl(o.serverUrl))
            return fail(outcome,
                u"--server must be an absolute http(s) URL ending in /KoVena/, not \"%1\""_s.arg(
                    o.serverUrl));
        if (parser.isSet(u"record"_s))
            return fail(outcome, u"--record applies to the in-process sandbox only (drop --server)"_s);
    }
    if (parser.isSet(u"record"_s)) {
        o.recordFile = parser.value(u"record"_s);
        if (o.recordFile.isEmpty())
            return fail(outcome, u"--record needs a file name"_s);
    }

    if (parser.isSet(u"timeout"_s)) {
        bool ok = false;
        o.timeoutSeconds = parser.value(u"timeout"_s).toDouble(&ok);
        if (!ok || !std::isfinite(o.timeoutSeconds) || o.timeoutSeconds <= 0)
            return fail(outcome,
                u"--timeout must be a positive number of seconds, not \"%1\""_s.arg(
                    parser.value(u"timeout"_s)));
    }

    const auto take = [&parser](const QString &name, QString &field) {
        if (parser.isSet(name))
            field = parser.value(name);
    };
    take(u"amount"_s, o.amount);
    take(u"token"_s, o.accessToken);
    take(u"collector"_s, o.collectorId);
    take(u"mobile"_s, o.customerMobNum);
    take(u"email"_s, o.customerEmail);
    take(u"request-id"_s, o.requestId);
    take(u"app-name"_s, o.appName);
    take(u"mode"_s, o.paymentMode);
    take(u"txn"_s, o.kovenaTransactionId);
    take(u"settings"_s, o.settingsDir);
    o.cancel = parser.isSet(u"cancel"_s);
    if (parser.isSet(u"vpa"_s)) {
        o.vpa = parser.value(u"vpa"_s);
        if (o.paymentMode != "1"_L1)
            return fail(outcome, u"--vpa needs the UPI payment mode (--mode 1)"_s);
    }

    if (const QString error = takeCustomerOptions(parser, o); !error.isEmpty())
        return fail(outcome, error);

    if (o.flow == DemoOptions::Flow::Status) {
        if (!parser.isSet(u"txn"_s) || !parser.isSet(u"order"_s))
            return fail(outcome, u"a status enquiry needs --txn and --order"_s);
        o.orderNo = parser.value(u"order"_s);
    } else {
        o.orderNo = parser.isSet(u"order"_s) ? parser.value(u"order"_s) : defaultOrderNo();
    }
    return outcome;
}

} // namespace kovena::demo
