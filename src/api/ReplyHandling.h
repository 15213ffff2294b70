#pragma once

#include "api/ApiRequest.h"

#include <memory>

namespace kovena {

class GetNBListCallback;
class PaymentCallback;
class TransactionStatusCallback;
class UPICalback1;

// What each backend operation does with a reply that passed the common reply path, and its
// failure value. ApiManager pairs these with the requests it sends; they live apart so that a
// reply can be handled without sending anything. Internal: no public header includes this one.
class ReplyHandling
{
public:
    ReplyHandling() = delete;

    // Each operation's name in diagnostics, as ApiRequest is given it.
    static constexpr const char *TRANSACTION_STATUS = "transaction status";
    static constexpr const char *UPI_PAYMENT = "UPI payment";
    static constexpr const char *UPI_COLLECT = "UPI collect request";
    static constexpr const char *CARD_PAYMENT = "card payment";
    static constexpr const char *NET_BANKING_PAYMENT = "net-banking payment";
    static constexpr const char *BANK_LIST = "bank list";

    // getTransactionStatus: the status record when its code is "200TRANSRESPSUCC".
    static ReplyHandlers transactionStatus(std::shared_ptr<TransactionStatusCallback> callback);
    // payUPICollect: the backend's transaction id and the merchant reference.
    static ReplyHandlers upiPayment(std::shared_ptr<UPICalback1> callback);
    // payUPICollectByVPA: the reply record when its code is "200MERSUCC".
    static ReplyHandlers upiCollect(std::shared_ptr<UPICalback1> callback);
    // payCard and payNB: the bank page's address, its form body and the backend's transaction id.
    static ReplyHandlers cardPayment(std::shared_ptr<PaymentCallback> callback);
    static ReplyHandlers netBankingPayment(std::shared_ptr<PaymentCallback> callback);
    // callApiNBList: the banks, whatever the reply's code.
    static ReplyHandlers bankList(std::shared_ptr<GetNBListCallback> callback);
};

} // namespace kovena
