// Every request type against every fault the sandbox plays through a "fault-<name>" token: the
// one callback and what it carries, the diagnostic after an undecodable reply, or the fatal error
// where a reply lacks a member the operation must read. Nothing else may end the process.
#include "RequestTypes.h"

#include "platform/UserDefaults.h"
#include "sandbox/Fault.h"

#include <QTest>

#include <gtest/gtest.h>

#include <array>
#include <chrono>

using namespace kovena;
using namespace kovena::test;

namespace {

const std::string kFailure = "failure";
// An undecodable body: the failure value first, then one diagnostic line.
const std::string kUndecodable = "failure, then a diagnostic";
const Outcomes kFailures { kFailure, kFailure, kFailure, kFailure, kFailure, kFailure };
const Outcomes kUndecodables { kUndecodable, kUndecodable, kUndecodable, kUndecodable, kUndecodable,
    kUndecodable };
const std::string kFatal = "fatal: ";
std::string idNotAnInteger(const char *reply)
{
    return kFatal + reply + ": member \"kovenaTransactionId\" is missing or not a 64-bit integer";
}

// A 10 MiB reply takes seconds to arrive and decode in a Debug build on a busy machine; a
// stalled transfer ends at the client's own 60 s timeout.
constexpr int kFaultWaitMs = 60000;

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
            idNotAnInteger("net-banking payment reply"), "banks, ids absent" } },
    // Beyond any double a number does not decode at all.
    { "huge-numbers", kUndecodables },
};

// Sends one request of `type` under the fault's token and describes the outcome.
std::string sendUnderFault(const RequestType &type, const std::string &fault)
{
    resetBackendAndDefaults();
    const QString pendingId = type.namesPendingPayment ? registerPendingPayment() : QString();
    resetBackendAndDefaults();
    UserDefaults::standard().setString(
        QStringLiteral("accessToken"), QString::fromStdString("fault-" + fault));

    auto recorder = std::make_shared<Recorder>();
    LogCapture capture(recorder);
    type.send(recorder, pendingId);
    if (!recorder->waitForCallback(kFaultWaitMs))
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
        const bool registered = outcome == kSuccesses[std::size_t(&type - kRequestTypes.data())];
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
            SCOPED_TRACE(std::string(row.fault) + " / " + kRequestTypes[i].name);
            EXPECT_EQ(sendUnderFault(kRequestTypes[i], row.fault), expected);
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
            SCOPED_TRACE(std::string(row.fault) + " / " + kRequestTypes[i].name);
            // In the child the request must end in the abort: a callback would let the statement
            // run to its end and say what came.
            EXPECT_DEATH(
                {
                    const std::string outcome = sendUnderFault(kRequestTypes[i], row.fault);
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
    UserDefaults::standard().setString(QStringLiteral("accessToken"), QStringLiteral("fault-late"));

    std::vector<std::shared_ptr<Recorder>> recorders;
    const auto start = std::chrono::steady_clock::now();
    for (const RequestType &type : kRequestTypes) {
        recorders.push_back(std::make_shared<Recorder>());
        type.send(recorders.back(), pendingId);
    }
    const auto allAnswered = [&] {
        return std::all_of(
            recorders.begin(), recorders.end(), [](const auto &r) { return !r->calls().empty(); });
    };
    const int limitMs = int(std::chrono::milliseconds(sandbox::Fault::kLateBy).count()) + kFaultWaitMs;
    ASSERT_TRUE(QTest::qWaitFor(allAnswered, limitMs));
    const auto waited = std::chrono::steady_clock::now() - start;
    flushSessionThread();

    EXPECT_GE(waited, sandbox::Fault::kLateBy) << "the replies really were late";
    EXPECT_EQ(backend().requests().size(), kTypeCount);
    for (std::size_t i = 0; i < kTypeCount; ++i) {
        SCOPED_TRACE(kRequestTypes[i].name);
        const auto calls = recorders[i]->calls();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(kRequestTypes[i].describe(calls.front()), kSuccesses[i]);
    }
}

} // namespace
