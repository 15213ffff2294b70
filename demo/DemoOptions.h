#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kovena::demo {

// The demo's command line: where the backend is, whether to run a scripted flow without a
// window, and the arguments of that flow. Every checkout argument has a value that the local
// sandbox accepts; a value given on the command line, even an empty one, is used as given.
struct DemoOptions
{
    enum class Flow { Checkout, Status };

    bool headless = false;
    bool tour = false; // run the scripted tour: several headless runs, one readable line each
    QString serverUrl; // empty: start the sandbox in-process
    QString recordFile; // sandbox only: where its request log goes
    QString settingsDir; // headless: where the library keeps its user defaults (empty: a temporary folder)
    Flow flow = Flow::Checkout;
    double timeoutSeconds = 60;

    // Checkout.
    QString amount = QStringLiteral("100");
    QString orderNo; // "ORD-<n>" unless given
    QString accessToken = QStringLiteral("demo-token");
    QString collectorId = QStringLiteral("COLL-1");
    QString customerMobNum = QStringLiteral("9876543210");
    QString customerEmail = QStringLiteral("customer@example.com");
    QString requestId;
    QString appName = QStringLiteral("Demo Store");
    QString paymentMode = QStringLiteral("1");
    std::optional<QString> vpa;
    bool cancel = false;

    // Card (mode 2): each typed key by key into its field, or chosen from its list, then Proceed.
    std::optional<QString> cardNumber;
    std::optional<QString> cardName;
    std::optional<QString> expiryMonth;
    std::optional<QString> expiryYear;
    std::optional<QString> cvv;
    // Net banking (mode 3): a popular bank's button by its code, or an entry of the bank list
    // (from 0) chosen from the drop-down list, then Proceed.
    std::optional<QString> bankCode;
    std::optional<int> bankIndex;
    // What the customer does on the bank's page.
    enum class BankPage { None, Approve, Decline, Leave };
    BankPage bankPage = BankPage::None;

    // Status enquiry (the order number above is its order id).
    QString kovenaTransactionId;
};

// What parsing the command line gave: options to run with, or a reason to stop at once.
struct ParseOutcome
{
    enum class Kind { Run, Help, Version, Error };
    Kind kind = Kind::Run;
    DemoOptions options;
    QString error; // Kind::Error: one line saying what is wrong
    QString helpText; // the usage text, for Help and Error
};

// `arguments` starts with the program name, as QCoreApplication::arguments() does.
ParseOutcome parseDemoOptions(const QStringList &arguments);

} // namespace kovena::demo
