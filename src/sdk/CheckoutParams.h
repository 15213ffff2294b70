#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

namespace kovena {

// The checkout as the merchant started it: carried by the navigation controller and copied,
// field by field, into each screen as it opens.
struct CheckoutParams
{
    QString amount;
    QString merchantTransactionRefNumber; // the merchant's order number
    QString collectorId;
    QString accessToken;
    QString customerMobNum;
    QString customerEmail;
    QString merchantAppName;
    QString requestId;
    QString paymentMode;
    QString kovenaTxnId; // status enquiry: the backend's id of the earlier payment
    QString orderId; // status enquiry: the merchant's order id of that payment
    bool isStatusClicked = false;
    QPointer<QWidget> merchantVC; // also a KovenaCallback; receives the outcome
};

} // namespace kovena
