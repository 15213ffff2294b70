#pragma once

#include "model/TransactionStatus.h"
#include "sdk/KovenaCallback.h"

#include <QMainWindow>
#include <QPointer>
#include <QWidget>

#include <atomic>
#include <chrono>

namespace kovena::bench {

// The merchant's screen: counts the reports and notes when the latest one arrived.
class MerchantScreen : public QWidget, public KovenaCallback
{
public:
    void onTransactionComplete(std::shared_ptr<TransactionStatus> transactionStatus) override
    {
        lastAt = std::chrono::steady_clock::now();
        lastStatus = transactionStatus && transactionStatus->data
            ? transactionStatus->data->paymentStatus.value_or(0)
            : 0;
        ++reports;
    }
    std::chrono::steady_clock::time_point lastAt;
    std::int64_t lastStatus = 0;
    std::atomic<int> reports { 0 };
};

// A merchant application's window whose content is the merchant's screen.
struct MerchantWindow
{
    MerchantWindow()
    {
        window.setCentralWidget(merchant);
        window.resize(400, 700);
        window.show();
    }
    QMainWindow window;
    QPointer<MerchantScreen> merchant = new MerchantScreen;
};

} // namespace kovena::bench
