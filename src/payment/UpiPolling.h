#pragma once

#include "api/Callbacks.h"
#include "api/DataTask.h"
#include "platform/Dispatch.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace kovena {

class TransactionStatus;

// Follows an accepted UPI collect request until its status is final. The first status enquiry
// goes out 1 s (background queue) + 10 s (main queue) after start, each further one 1 s + 3 s
// after a non-final answer, with no limit on their number. It ends with exactly one final
// report, with a lost network, or at the first answer after stopPolling().
// The screen that derives from it sends the enquiries and shows the outcome.
class UpiPolling : public TransactionStatusCallback
{
public:
    static constexpr std::chrono::milliseconds kBackgroundDelay { 1000 };
    static constexpr std::chrono::milliseconds kFirstEnquiryDelay { 10000 };
    static constexpr std::chrono::milliseconds kNextEnquiryDelay { 3000 };

    enum class State { Idle, Polling, Reported, NetworkLost, Abandoned };

    UpiPolling();
    ~UpiPolling() override;
    UpiPolling(const UpiPolling &) = delete;
    UpiPolling &operator=(const UpiPolling &) = delete;

    // The request in flight (collect or status), cancelled when the screen goes away.
    DataTaskPtr task;
    // The pending re-poll and the queue it waits on.
    std::optional<DispatchQueue> mDispatchQuquq;
    std::shared_ptr<DispatchWorkItem> mDispatchWorkItem;
    // The first poll; once it is cancelled no further enquiry is scheduled.
    std::optional<DispatchQueue> mDispatchQuquqCallback3;
    std::shared_ptr<DispatchWorkItem> mDispatchWorkItemCallback3;

    // Main thread. Schedules the first enquiry; does nothing once polling has started.
    void startPolling();
    // Any thread: the answer to an enquiry. It is judged on the main queue.
    void getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) override;
    // Main thread. Cancels the request in flight, if any.
    void cancelTask();
    // Main thread. Cancels both pending steps; an enquiry already handed to the main queue still
    // goes out, and polling ends at the next answer.
    void stopPolling();
    // Main thread. The checkout ended another way (the customer cancelled): the request in
    // flight is cancelled, nothing more is sent and no answer is reported.
    void abandonPolling();

    State pollingState() const { return m_state; }

    // 1, 2 and 3 end the polling; every other status (pending, unknown) asks again.
    static bool isFinalPaymentStatus(std::int64_t paymentStatus);

protected:
    // The id and reference the first enquiry carries.
    virtual QString firstEnquiryTransactionId() const = 0;
    virtual QString enquiryReference() const = 0;
    virtual DataTaskPtr sendStatusEnquiry(
        const QString &kovenaTransactionId, const QString &transactionRefNumber)
        = 0;
    // Called once, on the main thread, with the first final answer.
    virtual void reportFinalStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) = 0;
    // Called once, on the main thread, when an answer finds the network gone.
    virtual void reportNoNetwork() = 0;

private:
    void judgeAnswer(const std::shared_ptr<TransactionStatus> &trnasactionStatus);
    void sendFirstEnquiry();
    void sendNextEnquiry(const std::shared_ptr<TransactionStatus> &previous);

    // Scheduled blocks hold this weakly and check it on the main thread, so a destroyed
    // poller is never touched.
    std::shared_ptr<UpiPolling *> m_self;
    State m_state = State::Idle;
};

} // namespace kovena
