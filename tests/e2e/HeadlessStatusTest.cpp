// Status enquiries through the built demo against its in-process sandbox: what the merchant
// receives, as the demo prints it.
#include "DemoProcess.h"

#include <gtest/gtest.h>

namespace kovena::e2e {
namespace {

struct StoredTransaction
{
    const char *txn;
    const char *order;
    long long paymentStatus;
    const char *description;
};

// Keeps test names readable in ctest.
void PrintTo(const StoredTransaction &t, std::ostream *out)
{
    *out << t.txn << '/' << t.order;
}

class StatusEnquiry : public ::testing::TestWithParam<StoredTransaction>
{
};

TEST_P(StatusEnquiry, ReportsTheStoredOutcomeOnce)
{
    const StoredTransaction &t = GetParam();
    const DemoRun run = runHeadlessDemo({ "--flow", "status", "--txn", t.txn, "--order", t.order });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    ASSERT_TRUE(endedWithOneReport(run, t.paymentStatus, QString::fromLatin1(t.description)));
    EXPECT_TRUE(run.toasts().isEmpty());

    // The record as the library built it from the reply: the backend's ids as exact integers.
    const nlohmann::ordered_json record = run.callbacks().front();
    EXPECT_EQ(record.value("responseCode", ""), "200TRANSRESPSUCC");
    const nlohmann::ordered_json &data = record.at("data");
    ASSERT_TRUE(data.at("kovenaTransactionId").is_number_integer());
    EXPECT_EQ(data.at("kovenaTransactionId").get<long long>(), std::stoll(t.txn));
    EXPECT_EQ(data.value("transactionRefNumber", ""), t.order);
    for (const char *key : { "merchantId", "kovenaRefNumber", "requestStatus",
             "paymentGatewayReferenceNumber", "kovenaServiceId", "status" }) {
        if (data.contains(key)) {
            EXPECT_TRUE(data.at(key).is_number_integer()) << key << " = " << data.at(key).dump();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(StoredTransactions, StatusEnquiry,
    ::testing::Values(StoredTransaction { "42", "ORD-1", 1, "Success" },
        StoredTransaction { "43", "ORD-2", 2, "Fail" }, StoredTransaction { "44", "ORD-3", 14, "Pending" },
        StoredTransaction { "45", "ORD-4", 11, "Success" }, StoredTransaction { "46", "ORD-5", 5, "Error" }));

// The backend refuses an unknown transaction; the library treats the missing record as fatal.
TEST(StatusEnquiryUnknownTransaction, AbortsWithoutCallingTheMerchant)
{
    const DemoRun run
        = runHeadlessDemo({ "--flow", "status", "--txn", "999999", "--order", "NO-SUCH-ORDER" });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    EXPECT_TRUE(run.failed());
    EXPECT_TRUE(run.callbacks().empty());
    EXPECT_TRUE(run.malformedLines.isEmpty());
}

} // namespace
} // namespace kovena::e2e
