#include "flow/CheckParams.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

using Opt = std::optional<QString>;

// Records the reports in arrival order: a toast as its message, a merchant report as its
// status. With `echo` it also writes them to stderr, so a death test sees what came first.
class RecordingTarget : public kovena::CheckParamsTarget
{
public:
    explicit RecordingTarget(bool echo = false)
        : m_echo(echo)
    { }
    void showToast(const QString &message) override { record(message); }
    void btnBack(int status) override { record(QString::number(status)); }
    QString events() const { return m_events.join(u", "_s); }

private:
    void record(const QString &event)
    {
        m_events << event;
        if (m_echo)
            std::fprintf(stderr, "[%s]\n", qPrintable(event));
    }
    QStringList m_events;
    bool m_echo;
};

struct Checkout
{
    Opt amount = u"100"_s;
    Opt orderNo = u"ORD-1"_s;
    Opt accessToken = u"token"_s;
    Opt collectorId = u"42"_s;
    Opt customerMobNum = u"9876543210"_s;
    Opt customerEmail = u"buyer@example.in"_s;
};

void run(kovena::CheckParamsTarget &target, const Checkout &c)
{
    kovena::checkParams(
        target, c.amount, c.orderNo, c.accessToken, c.collectorId, c.customerMobNum, c.customerEmail);
}

TEST(CheckParams, ReportsEveryFailedRuleInRuleOrder)
{
    const QString range = u"Invalid amount range, -104"_s;
    const std::pair<Checkout, QString> rows[] = {
        { {}, {} },
        { { .amount = u"1"_s }, {} },
        { { .amount = u"999999"_s }, {} },
        { { .amount = u"999999.96"_s }, {} }, // just below one million in single precision
        { { .amount = u"0.99"_s }, range },
        { { .amount = u"1000000"_s }, range },
        { { .amount = u"999999.97"_s }, range },
        { { .amount = u"-5"_s }, u"No valid amount, -103, "_s + range },
        { { .amount = u"1e3"_s }, u"No valid amount, -103"_s }, // in range, but not a valid amount
        { { .orderNo = u""_s }, u"OrderId missing, -106"_s },
        { { .accessToken = u""_s }, u"AccessToken Error, -105"_s },
        { { .accessToken = std::nullopt }, u"AccessToken Error, -105"_s },
        { { .collectorId = std::nullopt }, u"CollectorId Error, -106"_s },
        { { .customerMobNum = u""_s }, u"Customer Mobile Number Error, -107"_s },
        { { .customerEmail = std::nullopt }, u"Customer Email Error, -107"_s },
        { { .accessToken = u""_s, .customerEmail = u""_s },
            u"AccessToken Error, -105, Customer Email Error, -107"_s },
        { { u"0.5"_s, u""_s, u""_s, u""_s, u""_s, u""_s },
            range
                + u", OrderId missing, -106, AccessToken Error, -105, CollectorId Error, -106, "
                  "Customer Mobile Number Error, -107, Customer Email Error, -107"_s },
        // Only emptiness is checked, never the form.
        { { .orderNo = u" "_s, .customerMobNum = u"x"_s, .customerEmail = u"not an e-mail"_s }, {} },
    };
    for (const auto &[checkout, expected] : rows) {
        RecordingTarget target;
        run(target, checkout);
        EXPECT_EQ(target.events(), expected) << checkout.amount.value_or(u"nil"_s).toStdString();
    }
}

TEST(CheckParamsDeath, EndsTheProcessAfterReporting)
{
    // stderr of the dying process: what was reported, in order, before it ended.
    const std::pair<Checkout, const char *> rows[] = {
        { { .amount = std::nullopt }, R"(\[Amount nil\].*\[-101\].*fatal)" },
        { { .amount = u""_s }, R"(\[Amount missing\].*\[-102\].*\[No valid amount\].*\[-103\].*fatal)" },
        { { .orderNo = std::nullopt }, R"(\[OrderId nil\].*\[-105\].*fatal)" },
        { { .amount = u"0.99"_s, .orderNo = std::nullopt }, R"(\[-104\].*\[OrderId nil\].*\[-105\].*fatal)" },
        // Letters: the range rule cannot read them, so the process ends before its report.
        { { .amount = u"abc"_s }, R"(\[No valid amount\].*\[-103\][^[]*fatal[^[]*$)" },
    };
    for (const auto &[checkout, expected] : rows) {
        EXPECT_DEATH(
            {
                RecordingTarget target(true);
                run(target, checkout);
            },
            expected);
    }
}

} // namespace
