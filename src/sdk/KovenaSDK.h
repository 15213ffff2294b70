#pragma once

#include "sdk/KovenaExport.h"

#include <QString>

#include <optional>

class QWidget;

namespace kovena {

// The library's entry point. Starts a checkout or a status enquiry from the merchant's screen,
// whose window then shows the library's screens; the outcome reaches the merchant's
// KovenaCallback. Call on the main thread.
class KOVENA_EXPORT KovenaSDK
{
public:
    static KovenaSDK &instance();

    KovenaSDK(const KovenaSDK &) = delete;
    KovenaSDK &operator=(const KovenaSDK &) = delete;

    // Starts a new payment. merchantVC, orderNo, amount, customerMobNum and customerEmail are
    // required; an empty requestId is replaced by orderNo.
    void kovenaInit(QWidget *merchantVC, const QString &appName, const std::optional<QString> &orderNo,
        const QString &accessToken, const QString &collectorId, const std::optional<QString> &amount,
        const std::optional<QString> &customerMobNum, const std::optional<QString> &customerEmail,
        const QString &requestId, const QString &paymentMode);

    // Asks the backend for the outcome of an earlier payment. merchantVC and orderId are required.
    void kovenaStatusInit(QWidget *merchantVC, const QString &kovenaTransactionId,
        const std::optional<QString> &orderId, const QString &accessToken);

private:
    KovenaSDK() = default;
};

} // namespace kovena
