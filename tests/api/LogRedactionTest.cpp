// Diagnostics never carry the token, card details or the customer's contact details.
#include "ApiTestSupport.h"

#include "api/LogRedaction.h"
#include "platform/UserDefaults.h"

#include <QLoggingCategory>

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::test;

namespace {

TEST(LogRedaction, HidesSensitiveValuesAtAnyDepth)
{
    const std::pair<const char *, const char *> rows[] = {
        { R"({"bankAccount":{"cardNumber":"4111111111111111"},"cvv":"123","serviceType":"28"})",
            R"({"bankAccount":"<redacted>","cvv":"<redacted>","serviceType":"28"})" },
        { R"({"a":[{"cardNumber":"4111","cardName":"A","cardExpiryMonth":"01","cardExpiryYear":"30"}]})",
            R"({"a":[{"cardNumber":"<redacted>","cardName":"<redacted>","cardExpiryMonth":"<redacted>","cardExpiryYear":"<redacted>"}]})" },
        { R"({"customerMobNum":"98","customerEmail":"","virtualAddress":null,"kovenaRefNumber":"9"})",
            R"({"customerMobNum":"<redacted>","customerEmail":"","virtualAddress":null,"kovenaRefNumber":"9"})" },
    };
    for (const auto &[body, expected] : rows)
        EXPECT_EQ(LogRedaction::redacted(JsonValue::parse(body)), JsonValue::parse(expected)) << body;
}

TEST(LogRedaction, DiagnosticsOfARealRequestHoldNothingSensitive)
{
    QLoggingCategory::setFilterRules(QStringLiteral("kovena.api.debug=true"));
    resetBackendAndDefaults();
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setString(QStringLiteral("accessToken"), QStringLiteral("tok-SECRET-1"));
    defaults.setString(QStringLiteral("customerMobNum"), QStringLiteral("9812345678"));
    defaults.setString(QStringLiteral("customerEmail"), QStringLiteral("someone@mail.in"));
    backend().enqueueReply("v1/sdk/payForService", { 200, "not json" });

    auto recorder = std::make_shared<Recorder>();
    {
        LogCapture capture(recorder);
        ApiManager::payUPICollect(recorder, QStringLiteral("ORD-1"), "1.00", QStringLiteral("1001"));
        ASSERT_TRUE(recorder->waitForCallback());
    }
    QLoggingCategory::setFilterRules(QString());

    int lines = 0;
    for (const auto &entry : recorder->sequence()) {
        if (entry.isCallback())
            continue;
        ++lines;
        for (const char *secret : { "tok-SECRET-1", "9812345678", "someone@mail.in", "not json" })
            EXPECT_FALSE(entry.first.contains(QLatin1String(secret))) << qPrintable(entry.first);
    }
    EXPECT_EQ(lines, 2) << "the request line and the decoding diagnostic";
}

} // namespace
