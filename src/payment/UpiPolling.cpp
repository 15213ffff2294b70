#include "payment/UpiPolling.h"

#include "flow/Utils.h"
#include "model/TransactionStatus.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"

namespace kovena {

UpiPolling::UpiPolling()
    : m_self(std::make_shared<UpiPolling *>(this))
{ }

UpiPolling::~UpiPolling() = default;

bool UpiPolling::isFinalPaymentStatus(std::int64_t paymentStatus)
{
    return paymentStatus == 1 || paymentStatus == 2 || paymentStatus == 3;
}

void UpiPolling::startPolling()
{
    if (m_state != State::Idle)
        return;
    m_state = State::Polling;

    // The background step only hands the enquiry to the main queue; it never touches the poller.
    std::weak_ptr<UpiPolling *> weak = m_self;
    mDispatchQuquqCallback3 = dispatch::global();
    mDispatchWorkItemCallback3 = std::make_shared<DispatchWorkItem>([weak] {
        dispatch::main().asyncAfter(kFirstEnquiryDelay, [weak] {
            if (const auto self = weak.lock())
                (*self)->sendFirstEnquiry();
        });
    });
    mDispatchQuquqCallback3->asyncAfter(kBackgroundDelay, mDispatchWorkItemCallback3);
}

void UpiPolling::getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus)
{
    std::weak_ptr<UpiPolling *> weak = m_self;
    dispatch::main().async([weak, status = std::move(trnasactionStatus)] {
        if (const auto self = weak.lock())
            (*self)->judgeAnswer(status);
    });
}

void UpiPolling::cancelTask()
{
    if (task)
        task->cancel();
}

void UpiPolling::stopPolling()
{
    if (mDispatchWorkItem)
        mDispatchWorkItem->cancel();
    if (mDispatchWorkItemCallback3)
        mDispatchWorkItemCallback3->cancel();
}

void UpiPolling::abandonPolling()
{
    m_state = State::Abandoned;
    stopPolling();
    cancelTask();
}

void UpiPolling::judgeAnswer(const std::shared_ptr<TransactionStatus> &trnasactionStatus)
{
    // An answer after the outcome was reported (or after polling gave up) changes nothing: the
    // merchant hears about a payment once.
    if (m_state != State::Polling)
        return;

    const TransactionStatus::Data *data = trnasactionStatus ? trnasactionStatus->data.get() : nullptr;
    if (data && data->paymentStatus && isFinalPaymentStatus(*data->paymentStatus)) {
        m_state = State::Reported;
        stopPolling();
        reportFinalStatus(trnasactionStatus);
        return;
    }

    if (!Utils::isConnectedToNetwork()) {
        m_state = State::NetworkLost;
        stopPolling();
        reportNoNetwork();
        return;
    }
    cancelTask();

    if (!mDispatchWorkItemCallback3)
        return;
    qCDebug(lcPayment) << "UPI status polling cancelled:" << mDispatchWorkItemCallback3->isCancelled();
    if (mDispatchWorkItemCallback3->isCancelled())
        return;

    std::weak_ptr<UpiPolling *> weak = m_self;
    mDispatchQuquq = dispatch::global();
    mDispatchWorkItem = std::make_shared<DispatchWorkItem>([weak, previous = trnasactionStatus] {
        dispatch::main().asyncAfter(kNextEnquiryDelay, [weak, previous] {
            if (const auto self = weak.lock())
                (*self)->sendNextEnquiry(previous);
        });
    });
    mDispatchQuquq->asyncAfter(kBackgroundDelay, mDispatchWorkItem);
}

void UpiPolling::sendFirstEnquiry()
{
    if (m_state != State::Polling)
        return;
    const QString id = firstEnquiryTransactionId();
    const QString reference = enquiryReference();
    qCDebug(lcPayment) << "UPI status enquiry, kovenaTransactionId:" << id
                       << "merchantTransactionRefNumber:" << reference;
    task = sendStatusEnquiry(id, reference);
}

void UpiPolling::sendNextEnquiry(const std::shared_ptr<TransactionStatus> &previous)
{
    if (m_state != State::Polling)
        return;
    // Later enquiries name the transaction by the backend's reference from the previous answer;
    // an answer that led here without one cannot be followed.
    const TransactionStatus::Data *data = previous ? previous->data.get() : nullptr;
    if (!data || !data->kovenaRefNumber)
        fatalError("UPI status polling: the previous answer has no kovenaRefNumber");
    const QString id = QString::number(*data->kovenaRefNumber);
    qCDebug(lcPayment) << "UPI status enquiry, kovenaRefNumber:" << id;
    task = sendStatusEnquiry(id, enquiryReference());
}

} // namespace kovena
