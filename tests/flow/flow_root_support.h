#pragma once

// Helpers shared by the flow and facade suites: a merchant screen that records what it is told,
// a window that hosts it the way a merchant application does, and a catcher for log lines.

#include "model/TransactionStatus.h"
#include "sdk/KovenaCallback.h"

#include <QCoreApplication>
#include <QMainWindow>
#include <QMutex>
#include <QPointer>
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

    // Runs inside the callback, before it is recorded (to look at the screens at that moment).
    std::function<void(const std::shared_ptr<TransactionStatus> &)> onCall;

private:
    mutable QMutex m_mutex;
    std::vector<Call> m_calls;
};

// A merchant application's window whose content is the merchant screen.
struct MerchantWindow
{
    MerchantWindow()
    {
        merchant = new TestMerchant;
        merchant->setObjectName(QStringLiteral("merchantScreen"));
        window.setCentralWidget(merchant);
        window.resize(400, 700);
        window.show();
    }
    QMainWindow window;
    QPointer<TestMerchant> merchant;
};

// Collects the messages of one logging category (debug level included) while it lives.
class LogCatcher
{
public:
    explicit LogCatcher(const char *category);
    ~LogCatcher();
    QStringList messages() const;

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &message);
};

} // namespace kovena::testing
