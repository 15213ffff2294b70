#include "flow/CheckParams.h"

#include "flow/Utils.h"
#include "platform/FatalError.h"
#include "sdk/CheckoutStatusCode.h"

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

bool isNilOrEmpty(const std::optional<QString> &value)
{
    return !value || value->isEmpty();
}

void fail(CheckParamsTarget &target, const QString &message, int status)
{
    target.showToast(message);
    target.btnBack(status);
}

} // namespace

void checkParams(CheckParamsTarget &target, const std::optional<QString> &amount,
    const std::optional<QString> &merchantTransactionRefNumber, const std::optional<QString> &accessToken,
    const std::optional<QString> &collectorId, const std::optional<QString> &customerMobNum,
    const std::optional<QString> &customerEmail)
{
    namespace code = CheckoutStatusCode;
    // Every failed rule reports by itself and the checks go on, so the merchant hears of each
    // problem of one checkout. The token and collector id reuse the order-number codes.
    if (!amount) {
        fail(target, u"Amount nil"_s, code::AMOUNT_NIL);
        fatalError("checkParams: amount is nil");
    }
    if (amount->isEmpty())
        fail(target, u"Amount missing"_s, code::AMOUNT_EMPTY);
    if (!Utils::isValidAmount(amount))
        fail(target, u"No valid amount"_s, code::AMOUNT_INVALID);
    if (!Utils::isValidRange(amount))
        fail(target, u"Invalid amount range"_s, code::AMOUNT_RANGE_INVALID);

    if (!merchantTransactionRefNumber) {
        fail(target, u"OrderId nil"_s, code::ORDER_ID_NIL);
        fatalError("checkParams: order number is nil");
    }
    if (merchantTransactionRefNumber->isEmpty())
        fail(target, u"OrderId missing"_s, code::ORDER_ID_EMPTY);
    if (isNilOrEmpty(accessToken))
        fail(target, u"AccessToken Error"_s, code::ORDER_ID_NIL);
    if (isNilOrEmpty(collectorId))
        fail(target, u"CollectorId Error"_s, code::ORDER_ID_EMPTY);
    if (isNilOrEmpty(customerMobNum))
        fail(target, u"Customer Mobile Number Error"_s, code::CUSTOMER_DETAIL_MISSING);
    if (isNilOrEmpty(customerEmail))
        fail(target, u"Customer Email Error"_s, code::CUSTOMER_DETAIL_MISSING);
}

} // namespace kovena
