#pragma once

#include <cstdint>
#include <memory>

class QWidget;

namespace kovena {

class KovenaCallback;
class TransactionStatus;
class ViewController;

// How every screen hands an outcome to the merchant.
namespace MerchantReport {

// A new record whose data holds only `status` and its text.
std::shared_ptr<TransactionStatus> decidedRecord(std::int32_t status);

// The merchant screen as its callback. A missing screen, or one that does not implement
// KovenaCallback, is fatal; the diagnostic names `reporter`, the operation that reports.
KovenaCallback &merchantCallback(QWidget *merchantVC, const char *reporter);

// An outcome the library decided itself (cancel, failed validation): builds the record,
// dismisses `screen` (animated), then calls the merchant at once.
void btnBack(ViewController *screen, QWidget *merchantVC, std::int32_t status);

// An outcome the backend decided: fills data.description from data.paymentStatus and calls the
// merchant with the record. A missing record, or data without a payment status, is fatal.
void finish(QWidget *merchantVC, std::shared_ptr<TransactionStatus> trnasactionStatus);

} // namespace MerchantReport
} // namespace kovena
