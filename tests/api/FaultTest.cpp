// Every request type against every fault the sandbox plays through a "fault-<name>" token: the
// one callback and what it carries, the diagnostic after an undecodable reply, or the fatal error
// where a reply lacks a member the operation must read. Nothing else may end the process.
#include "ApiTestSupport.h"

#include "model/BankNBData.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
#include "platform/UserDefaults.h"
#include "sandbox/Fault.h"

#include <QDate>
#include <QTest>

#include <gtest/gtest.h>

#include <array>
#include <chrono>

using namespace kovena;
using namespace kovena::test;

namespace {

const QString kReference = QStringLiteral("ORD-F");

// One request type, sent with arguments the sandbox accepts, so that a fault that leaves the
// reply a valid success shows as one.
struct RequestType
{
    const char *name;
    bool registersPayment; // a success stores "retry"
    // `pendingId`: a registered UPI payment, for the collect request.
    DataTaskPtr (*send)(std::shared_ptr<Recorder> recorder, const QString &pendingId);
    // The callback in a few words: "failure" for the failure value, else what it carried.
    std::string (*describe)(const Recorder::Call &call);
};

std::string describeStatus(const Recorder::Call &call)
{
    if (call.kind != "status")
        return "callback " + call.kind;
    if (!call.status)
        return "failure";
    const auto &data = call.status->data;
    const auto paymentStatus = data ? data->paymentStatus : std::nullopt;
    return "record " + call.status->responseCodeValue().toStdString() + ", paymentStatus "
        + (paymentStatus ? std::to_string(*paymentStatus) : "absent");
}

std::string describeRegistration(const Recorder::Call &call)
{
    if (call.kind != "upi1")
        return "callback " + call.kind;
    if (call.first.isEmpty() && call.second.isEmpty())
        return "failure";
    bool numeric = false;
    call.first.toLongLong(&numeric);
    return (numeric ? "registered " : "registered without an id ") + call.second.toStdString();
}

std::string describeCollect(const Recorder::Call &call)
{
    if (call.kind != "upi2")
        return "callback " + call.kind;
    return call.upi ? "collect " + call.upi->responseCode.value_or(QString()).toStdString() : "failure";
}

std::string describePaymentParams(const Recorder::Call &call)
{
    if (call.kind != "params")
        return "callback " + call.kind;
    if (call.first.isEmpty() && call.second.isEmpty() && call.third.isEmpty())
        return "failure";
    const bool page = call.first.endsWith(QStringLiteral("/bank/pay"))
        && call.second.contains(QStringLiteral("kovenaTransactionId=") + call.third);
    return page ? "bank page" : "params " + call.first.toStdString();
}

std::string describeBanks(const Recorder::Call &call)
{
    if (call.kind != "banks")
        return "callback " + call.kind;
    if (call.banks.isEmpty())
        return "failure";
    const bool complete = std::size_t(call.banks.size()) == backend().bankList().size();
    const bool idsAbsent = std::all_of(
        call.banks.begin(), call.banks.end(), [](const auto &bank) { return !bank->netBankingId; });
    return std::string(complete ? "all banks" : "some banks") + (idsAbsent ? ", ids absent" : "");
}

QString nextYear()
{
    return QString::number(QDate::currentDate().year() + 1);
}

const RequestType kTypes[] = {
    { "status", false,
        [](auto cb, const QString &) {
            return ApiManager::getTransactionStatus(cb, QStringLiteral("42"), QStringLiteral("ORD-1"));
        },
        describeStatus },
    { "upiCollect", true,
        [](auto cb, const QString &) {
            return ApiManager::payUPICollect(cb, kReference, QStringLiteral("1.00"), QStringLiteral("1001"));
        },
        describeRegistration },
    { "collectByVpa", false,
        [](auto cb, const QString &pendingId) {
            return ApiManager::payUPICollectByVPA(cb, pendingId, kReference, QStringLiteral("1.00"),
                QStringLiteral("success@kovena"), QStringLiteral("1001"));
        },
        describeCollect },
    { "card", true,
        [](auto cb, const QString &) {
            return ApiManager::payCard(cb, kReference, QString::fromLatin1(kCardNumber),
                QString::fromLatin1(kCardName), QStringLiteral("07"), nextYear(), QString::fromLatin1(kCvv),
                QStringLiteral("1.00"), QStringLiteral("1001"));
        },
        describePaymentParams },
    { "netBanking", true,
        [](auto cb, const QString &) {
            return ApiManager::payNB(
                cb, kReference, QStringLiteral("1001"), QStringLiteral("1.00"), QStringLiteral("1001"));
        },
        describePaymentParams },
    { "bankList", false, [](auto cb, const QString &) { return ApiManager::callApiNBList(cb); },
        describeBanks },
};
constexpr std::size_t kTypeCount = std::size(kTypes);

using Outcomes = std::array<std::string, kTypeCount>; // in the order of kTypes

const std::string kFailure = "failure";
// An undecodable body: the failure value first, then one diagnostic line.
const std::string kUndecodable = "failure, then a diagnostic";
const Outcomes kFailures { kFailure, kFailure, kFailure, kFailure, kFailure, kFailure };
const Outcomes kUndecodables { kUndecodable, kUndecodable, kUndecodable, kUndecodable, kUndecodable,
    kUndecodable };
const Outcomes kSuccesses {
    "record 200TRANSRESPSUCC, paymentStatus 1",
    "registered ORD-F",
    "collect 200MERSUCC",
    "bank page",
    "bank page",
    "all banks",
};
const std::string kFatal = "fatal: ";
std::string idNotAnInteger(const char *reply)
{
    return kFatal + reply + ": member \"kovenaTransactionId\" is missing or not a 64-bit integer";
}

struct FaultRow
{
    const char *fault; // the token is "fault-" and this
    Outcomes outcomes;
};

// The late reply has a test of its own, where its six requests wait together.
const FaultRow kRows[] = {
    { "reset-before-headers", kFailures },
    { "reset-after-headers", kFailures },
    { "cut-body", kFailures },
    { "http-500", kSuccesses },
    { "html", kUndecodables },
    { "empty-body", kFailures },
    { "huge-body", kSuccesses },
    // Refused before it is built: a tree that deep would be copied recursively while parsing.
    { "deep-nesting", kUndecodables },
    { "invalid-utf8", kUndecodables },
    // Beyond 64 bits a number still decodes: optional fields stay absent, a required id is fatal.
    { "big-numbers",
        { "record 200TRANSRESPSUCC, paymentStatus absent", idNotAnInteger("UPI payment reply"),
            "collect 200MERSUCC", idNotAnInteger("card payment reply"),
            idNotAnInteger("net-banking payment reply"), "all banks, ids absent" } },
    // Beyond any double a number does not decode at all.
    { "huge-numbers", kUndecodables },
};

void useToken(const QString &token)
{
    UserDefaults::standard().setString(QStringLiteral("accessToken"), token);
}

// A pending UPI payment registered under an ordinary token, for a collect request to name.
QString registerPendingPayment()
{
    useToken(QStringLiteral("setup-token"));
    auto recorder = std::make_shared<Recorder>();
    ApiManager::payUPICollect(
        recorder, QStringLiteral("ORD-P"), QStringLiteral("1.00"), QStringLiteral("1001"));
    EXPECT_TRUE(recorder->waitForCallback());
    const auto calls = recorder->calls();
    return calls.empty() ? QString() : calls.front().first;
}

// Sends one request of `type` under the fault's token and describes the outcome.
std::string sendUnderFault(const RequestType &type, const std::string &fault)
{
    resetBackendAndDefaults();
    const QString pendingId = registerPendingPayment();
    resetBackendAndDefaults();
    useToken(QString::fromStdString("fault-" + fault));

    auto recorder = std::make_shared<Recorder>();
    LogCapture capture(recorder);
    type.send(recorder, pendingId);
    if (!recorder->waitForCallback())
        return "no callback";

    const auto calls = recorder->calls();
    EXPECT_EQ(calls.size(), 1u) << "exactly one callback";
    EXPECT_TRUE(calls.front().onSessionThread);
    // A payment request never reaches the backend twice, even when Qt could send it again.
    EXPECT_EQ(backend().requests().size(), 1u);

    std::string outcome = type.describe(calls.front());
    const auto sequence = recorder->sequence();
    if (sequence.size() == 2 && sequence[0].isCallback() && sequence[1].kind == "log")
        outcome += ", then a diagnostic";
    else
        EXPECT_EQ(sequence.size(), 1u) << "no diagnostic but after an undecodable body";
    if (type.registersPayment) {
        const bool registered = outcome == kSuccesses[std::size_t(&type - kTypes)];
        EXPECT_EQ(UserDefaults::standard().boolean(QStringLiteral("retry")), registered)
            << "\"retry\" is stored once a registration succeeds, and only then";
    }
    return outcome;
}

TEST(Faults, EachRequestTypeAnswersEachFaultAsSpecified)
{
    for (const FaultRow &row : kRows) {
        for (std::size_t i = 0; i < kTypeCount; ++i) {
            const std::string &expected = row.outcomes[i];
            if (expected.starts_with(kFatal))
                continue; // the death test's rows
            SCOPED_TRACE(std::string(row.fault) + " / " + kTypes[i].name);
            EXPECT_EQ(sendUnderFault(kTypes[i], row.fault), expected);
        }
    }
}

TEST(FaultsDeathTest, RepliesWithoutAReadableIdStop)
{
    int deaths = 0;
    for (const FaultRow &row : kRows) {
        for (std::size_t i = 0; i < kTypeCount; ++i) {
            const std::string &expected = row.outcomes[i];
            if (!expected.starts_with(kFatal))
                continue;
            SCOPED_TRACE(std::string(row.fault) + " / " + kTypes[i].name);
            // The statement runs only in the child; there no callback may come before the abort.
            EXPECT_DEATH(
                {
                    const std::string outcome = sendUnderFault(kTypes[i], row.fault);
                    std::fprintf(stderr, "survived with: %s\n", outcome.c_str());
                },
                "kovena: fatal error: " + expected.substr(kFatal.size()));
            ++deaths;
        }
    }
    EXPECT_EQ(deaths, 3);
}

// The six requests wait for their late replies together, so the suite waits the 30 s once.
TEST(Faults, RepliesLateWithinTheTimeoutStillCount)
{
    resetBackendAndDefaults();
    const QString pendingId = registerPendingPayment();
    resetBackendAndDefaults();
    useToken(QStringLiteral("fault-late"));

    std::vector<std::shared_ptr<Recorder>> recorders;
    const auto start = std::chrono::steady_clock::now();
    for (const RequestType &type : kTypes) {
        recorders.push_back(std::make_shared<Recorder>());
        type.send(recorders.back(), pendingId);
    }
    const auto allAnswered = [&] {
        return std::all_of(
            recorders.begin(), recorders.end(), [](const auto &r) { return !r->calls().empty(); });
    };
    const int limitMs = int(std::chrono::milliseconds(sandbox::Fault::kLateBy).count()) + 20000;
    ASSERT_TRUE(QTest::qWaitFor(allAnswered, limitMs));
    const auto waited = std::chrono::steady_clock::now() - start;
    flushSessionThread();

    EXPECT_GE(waited, sandbox::Fault::kLateBy) << "the replies really were late";
    EXPECT_EQ(backend().requests().size(), kTypeCount);
    for (std::size_t i = 0; i < kTypeCount; ++i) {
        SCOPED_TRACE(kTypes[i].name);
        const auto calls = recorders[i]->calls();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(kTypes[i].describe(calls.front()), kSuccesses[i]);
    }
}

} // namespace
