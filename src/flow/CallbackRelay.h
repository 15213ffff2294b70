#pragma once

#include "api/Callbacks.h"

#include <memory>
#include <mutex>

namespace kovena {

// Lets the API client hold a callback strongly while the screen behind it may go away.
// The screen owns a relay, passes it to ApiManager, and detaches it in its destructor;
// calls that arrive later (a reply to a cancelled request) are dropped. Calls reach the
// screen on the session thread, under the relay's lock, so the screen cannot be destroyed
// while one of its callback methods runs.
template<class Screen>
class CallbackRelay final : public TransactionStatusCallback,
                            public UPICalback1,
                            public PaymentCallback,
                            public GetNBListCallback
{
public:
    explicit CallbackRelay(Screen *screen)
        : m_screen(screen)
    { }

    void detach()
    {
        std::lock_guard lock(m_mutex);
        m_screen = nullptr;
    }

    void getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) override
    {
        if constexpr (std::is_base_of_v<TransactionStatusCallback, Screen>) {
            std::lock_guard lock(m_mutex);
            if (m_screen)
                m_screen->getTransactionStatus(std::move(trnasactionStatus));
        }
    }
    void upiCallback1(const QString &kovenaTransactionId, const QString &transactionRefNum) override
    {
        if constexpr (std::is_base_of_v<UPICalback1, Screen>) {
            std::lock_guard lock(m_mutex);
            if (m_screen)
                m_screen->upiCallback1(kovenaTransactionId, transactionRefNum);
        }
    }
    void upiCallback2(std::shared_ptr<UPIResponse> upiResponse) override
    {
        if constexpr (std::is_base_of_v<UPICalback1, Screen>) {
            std::lock_guard lock(m_mutex);
            if (m_screen)
                m_screen->upiCallback2(std::move(upiResponse));
        }
    }

    void getPaymentParams(
        const QString &url, const QString &postParams, const QString &kovenaTransactionId) override
    {
        if constexpr (std::is_base_of_v<PaymentCallback, Screen>) {
            std::lock_guard lock(m_mutex);
            if (m_screen)
                m_screen->getPaymentParams(url, postParams, kovenaTransactionId);
        }
    }
    void getNBList(QList<std::shared_ptr<BankNBData>> bankList) override
    {
        if constexpr (std::is_base_of_v<GetNBListCallback, Screen>) {
            std::lock_guard lock(m_mutex);
            if (m_screen)
                m_screen->getNBList(std::move(bankList));
        }
    }

private:
    std::mutex m_mutex;
    Screen *m_screen;
};

} // namespace kovena
