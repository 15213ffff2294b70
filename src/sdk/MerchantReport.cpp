#include "sdk/MerchantReport.h"

#include "flow/Utils.h"
#include "model/TransactionStatus.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/ViewController.h"
#include "sdk/KovenaCallback.h"

#include <QWidget>

#include <limits>
#include <string>

namespace kovena::MerchantReport {

namespace {

// A status outside the 32-bit range has no text of its own; truncating it could turn it into
// one that reads as a success, so it is reported as an error.
QString descriptionOf(qint64 paymentStatus)
{
    if (paymentStatus < std::numeric_limits<std::int32_t>::min()
        || paymentStatus > std::numeric_limits<std::int32_t>::max())
        return QStringLiteral("Error");
    return Utils::getStatusDescription(static_cast<std::int32_t>(paymentStatus));
}

} // namespace

std::shared_ptr<TransactionStatus> decidedRecord(std::int32_t status)
{
    auto record = std::make_shared<TransactionStatus>();
    record->data = std::make_shared<TransactionStatus::Data>();
    record->data->paymentStatus = status;
    record->data->description = Utils::getStatusDescription(status);
    return record;
}

KovenaCallback &merchantCallback(QWidget *merchantVC, const char *reporter)
{
    if (!merchantVC)
        fatalError((std::string(reporter) + ": no merchant screen to report the outcome to").c_str());
    auto *callback = dynamic_cast<KovenaCallback *>(merchantVC);
    if (!callback)
        fatalError(
            (std::string(reporter) + ": the merchant screen does not implement KovenaCallback").c_str());
    return *callback;
}

void btnBack(ViewController *screen, QWidget *merchantVC, std::int32_t status)
{
    auto record = decidedRecord(status);
    if (screen)
        screen->dismiss(true);
    qCDebug(lcFlow) << "reporting status" << status << "to the merchant";
    merchantCallback(merchantVC, "btnBack").onTransactionComplete(std::move(record));
}

void finish(QWidget *merchantVC, std::shared_ptr<TransactionStatus> trnasactionStatus)
{
    if (!trnasactionStatus)
        fatalError("finish: no transaction status to report");
    if (const auto &data = trnasactionStatus->data) {
        if (!data->paymentStatus)
            fatalError("finish: the transaction status has no payment status");
        data->description = descriptionOf(*data->paymentStatus);
    }
    merchantCallback(merchantVC, "finish").onTransactionComplete(std::move(trnasactionStatus));
}

} // namespace kovena::MerchantReport
