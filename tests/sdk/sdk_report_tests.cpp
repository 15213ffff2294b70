// The two ways a screen hands an outcome to the merchant.
#include "flow/flow_root_support.h"
#include "platform/ViewController.h"
#include "sdk/MerchantReport.h"
#include "support/FatalDiagnostic.h"

#include <QEvent>

using namespace kovena;
using namespace kovena::testing;

namespace {

TEST(MerchantReport, BtnBackBuildsAFreshRecordDismissesThenReportsAtOnce)
{
    MerchantWindow host;
    ViewController presenter(&host.window);
    QPointer<ViewController> screen = new ViewController;
    presenter.present(screen, false);
    bool dismissedBeforeReport = false;
    host.merchant->onCall = [&](const std::shared_ptr<TransactionStatus> &) {
        dismissedBeforeReport = screen && screen->isHidden() && !presenter.presentedViewController();
    };
    MerchantReport::btnBack(screen, host.merchant, -1);
    host.merchant->onCall = nullptr;
    // -105 and -107 reach the merchant through the facade; see the endings table.
    for (int status : { -101, 1 })
        MerchantReport::btnBack(nullptr, host.merchant, status);

    const auto calls = host.merchant->calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_TRUE(calls[0].onMainThread);
    EXPECT_TRUE(dismissedBeforeReport);
    const char *shapes[] = { R"({"data":{"paymentStatus":-1,"description":"Cancelled"}})",
        R"({"data":{"paymentStatus":-101,"description":"Missing SDK params,amount nil "}})",
        R"({"data":{"paymentStatus":1,"description":"Success"}})" };
    for (std::size_t i = 0; i < calls.size(); ++i)
        EXPECT_EQ(calls[i].record->dictionaryRepresentation(), JsonValue::parse(shapes[i]));
    EXPECT_NE(calls[0].record->data, calls[1].record->data); // every report is a record of its own
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(screen.isNull());
}

TEST(MerchantReport, FinishDescribesTheBackendsStatusAndPassesTheSameRecord)
{
    const std::pair<qint64, const char *> rows[] = { { 1, "Success" }, { 11, "Success" }, { 14, "Pending" },
        { 2, "Fail" }, { 5, "Error" }, { -1, "Cancelled" },
        // Beyond 32 bits: must not wrap around to 1 ("Success").
        { (qint64(1) << 32) + 1, "Error" }, { -(qint64(1) << 32) - 1, "Error" } };
    MerchantWindow host;
    for (const auto &[paymentStatus, description] : rows) {
        auto record = std::make_shared<TransactionStatus>();
        record->data = std::make_shared<TransactionStatus::Data>();
        record->data->paymentStatus = paymentStatus;
        record->data->description = QStringLiteral("from the backend");
        record->data->transactionRefNumber = QStringLiteral("ORD-1");
        MerchantReport::finish(host.merchant, record);
        ASSERT_FALSE(host.merchant->calls().empty());
        EXPECT_EQ(host.merchant->calls().back().record, record);
        EXPECT_EQ(record->data->description, QString::fromLatin1(description)) << paymentStatus;
        EXPECT_EQ(record->data->transactionRefNumber, QStringLiteral("ORD-1"));
    }
    EXPECT_EQ(host.merchant->callCount(), std::size(rows));

    // A record without data is handed over as it came.
    auto bare = std::make_shared<TransactionStatus>();
    bare->responseCode = QStringLiteral("200TRANSRESPSUCC");
    MerchantReport::finish(host.merchant, bare);
    EXPECT_EQ(host.merchant->calls().back().record->dictionaryRepresentation(),
        JsonValue::parse(R"({"responseCode":"200TRANSRESPSUCC"})"));
}

TEST(MerchantReportDeathTest, NoOneToReportToOrNothingToReport)
{
    MerchantWindow host;
    QWidget notACallback;
    auto withoutStatus = std::make_shared<TransactionStatus>();
    withoutStatus->data = std::make_shared<TransactionStatus::Data>();
    auto complete = MerchantReport::decidedRecord(1);

    EXPECT_DEATH(MerchantReport::btnBack(nullptr, nullptr, -1),
        fatalLine("btnBack: no merchant screen to report the outcome to"));
    EXPECT_DEATH(MerchantReport::btnBack(nullptr, &notACallback, -1),
        fatalLine("btnBack: the merchant screen does not implement KovenaCallback"));
    EXPECT_DEATH(
        MerchantReport::finish(host.merchant, nullptr), fatalLine("finish: no transaction status to report"));
    EXPECT_DEATH(MerchantReport::finish(host.merchant, withoutStatus),
        fatalLine("finish: the transaction status has no payment status"));
    EXPECT_DEATH(MerchantReport::finish(nullptr, complete),
        fatalLine("finish: no merchant screen to report the outcome to"));
    EXPECT_DEATH(MerchantReport::finish(&notACallback, complete),
        fatalLine("finish: the merchant screen does not implement KovenaCallback"));
}

} // namespace
