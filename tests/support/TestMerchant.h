#pragma once

// A merchant screen for tests: records every report it receives and the thread it came on.
#include "model/TransactionStatus.h"
#include "sdk/KovenaCallback.h"

#include <QCoreApplication>
#include <QMutex>
#include <QStringList>
#include <QThread>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace kovena::testing {

class TestMerchant : public QWidget, public KovenaCallback
{
public:
    struct Call
    {
        std::shared_ptr<TransactionStatus> record;
        bool onMainThread = false;
    };
    void onTransactionComplete(std::shared_ptr<TransactionStatus> transactionStatus) override
    {
        if (onCall)
            onCall(transactionStatus);
        QMutexLocker lock(&m_mutex);
        m_calls.push_back({ std::move(transactionStatus), QThread::currentThread() == qApp->thread() });
    }
    std::vector<Call> calls() const
    {
        QMutexLocker lock(&m_mutex);
        return m_calls;
    }
    std::size_t callCount() const { return calls().size(); }
    QStringList statuses() const // "<paymentStatus> <description>" per report
    {
        QStringList out;
        for (const Call &c : calls())
            out << QString::number(c.record->data->paymentStatus.value_or(0)) + u' '
                    + c.record->data->description.value_or(QString());
        return out;
    }
    // Runs inside the callback, before it is recorded (to look at the screens at that moment).
    std::function<void(const std::shared_ptr<TransactionStatus> &)> onCall;

private:
    mutable QMutex m_mutex;
    std::vector<Call> m_calls;
};

} // namespace kovena::testing
