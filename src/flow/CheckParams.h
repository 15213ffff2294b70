#pragma once

#include <QString>

#include <optional>

namespace kovena {

// What the checkout validation reports to: the screen that runs it. A failure shows a toast
// (queued on the main queue) and then reports the failure code to the merchant at once.
class CheckParamsTarget
{
public:
    virtual ~CheckParamsTarget() = default;
    virtual void showToast(const QString &message) = 0;
    virtual void btnBack(int status) = 0;
};

// Validates the checkout parameters a payment option screen received. Every failed rule
// reports on its own, in rule order, and the checks go on; an absent amount or order number
// is fatal once reported, as nothing after it could use the value.
void checkParams(CheckParamsTarget &target, const std::optional<QString> &amount,
    const std::optional<QString> &merchantTransactionRefNumber, const std::optional<QString> &accessToken,
    const std::optional<QString> &collectorId, const std::optional<QString> &customerMobNum,
    const std::optional<QString> &customerEmail);

} // namespace kovena
