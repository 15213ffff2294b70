#pragma once

#include "sdk/KovenaExport.h"

#include <memory>

namespace kovena {

class TransactionStatus;

// Implemented by the merchant's screen (a QWidget that also derives from this class): receives
// the outcome of a checkout or of a status enquiry, once per flow, on the main thread.
class KOVENA_EXPORT KovenaCallback
{
public:
    virtual ~KovenaCallback() = default;
    virtual void onTransactionComplete(std::shared_ptr<TransactionStatus> transactionStatus) = 0;
};

} // namespace kovena
