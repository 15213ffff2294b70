#pragma once

#include "api/ApiManager.h"
#include "api/Callbacks.h"
#include "api/JsonValue.h"
#include "sandbox/Sandbox.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kovena::test {

// The process's sandbox, started on first use; the client is pointed at it before any request.
sandbox::Sandbox &backend();
// Clears the user defaults, then stores a checkout's "retry" (false) and "requestId".
void resetDefaults();
// Clears the sandbox's requests and scripts, then resets the user defaults.
void resetBackendAndDefaults();
// How long a test waits for a reply before it fails.
inline constexpr int kWaitMs = 10000;
// Returns once every block queued on the session thread so far has run.
void flushSessionThread();
JsonValue bodyOf(const sandbox::RecordedRequest &request);

// Records the client's callbacks and, while a LogCapture is alive, its diagnostics, in order.
class Recorder final : public TransactionStatusCallback,
                       public UPICalback1,
                       public PaymentCallback,
                       public GetNBListCallback
{
public:
    struct Call
    {
        // "status", "upi1", "upi2", "params", "banks"; "log" or "debug" for a diagnostic line
        std::string kind;
        bool onSessionThread = false;
        bool onMainThread = false;
        QString first {}, second {}, third {}; // upi1's or params' strings, or the diagnostic text
        std::shared_ptr<TransactionStatus> status {};
        std::shared_ptr<UPIResponse> upi {};
        QList<std::shared_ptr<BankNBData>> banks {};
        bool isCallback() const { return kind != "log" && kind != "debug"; }
    };

    void getTransactionStatus(std::shared_ptr<TransactionStatus> s) override
    {
        add({ .kind = "status", .status = s });
    }
    void upiCallback1(const QString &id, const QString &ref) override
    {
        add({ .kind = "upi1", .first = id, .second = ref });
    }
    void upiCallback2(std::shared_ptr<UPIResponse> upi) override { add({ .kind = "upi2", .upi = upi }); }
    void getPaymentParams(const QString &url, const QString &postParams, const QString &id) override
    {
        add({ .kind = "params", .first = url, .second = postParams, .third = id });
    }
    void getNBList(QList<std::shared_ptr<BankNBData>> bankList) override
    {
        add({ .kind = "banks", .banks = std::move(bankList) });
    }
    void add(Call call);

    // Waits for one callback, then lets the session thread run past it so that a second call
    // of the same request would be seen.
    bool waitForCallback(int timeoutMs = kWaitMs);
    std::vector<Call> calls() const; // callbacks only
    std::vector<Call> sequence() const;

private:
    mutable std::mutex m_mutex;
    std::vector<Call> m_sequence;
};

class LogCapture
{
public:
    explicit LogCapture(std::shared_ptr<Recorder> recorder);
    ~LogCapture();
};

// A request kind: its path under the server URL, and a send with arguments the test does not look at.
struct Request
{
    const char *path;
    DataTaskPtr (*send)(std::shared_ptr<Recorder>);
};

inline constexpr Request statusRequest {
    "v1/sdk/txn/1/false/2",
    [](auto cb) { return ApiManager::getTransactionStatus(cb, "42", "ORD-1"); },
};
inline constexpr Request paymentRequest {
    "v1/sdk/payForService",
    [](auto cb) { return ApiManager::payUPICollect(cb, "ORD-1", "1.00", "1001"); },
};
inline constexpr Request collectRequest {
    "v1/sdk/sendCollectOrSMS",
    [](auto cb) { return ApiManager::payUPICollectByVPA(cb, "42", {}, "1.00", "a@upi", "1001"); },
};
// The card's details are the ones no log line may show.
inline constexpr const char *kCardNumber = "4111111111111111", *kCardName = "ASHA KUMAR", *kCvv = "739";
inline constexpr Request cardRequest {
    "v1/sdk/payForService",
    [](auto cb) {
        return ApiManager::payCard(cb, "ORD-1", kCardNumber, kCardName, "07", "2031", kCvv, "1.00", "1001");
    },
};
inline constexpr Request netBankingRequest {
    "v1/sdk/payForService",
    [](auto cb) { return ApiManager::payNB(cb, "ORD-1", "SBIB", "1.00", "1001"); },
};
inline constexpr Request bankListRequest {
    "v1/netbanking/listofbanks",
    [](auto cb) { return ApiManager::callApiNBList(cb); },
};

// Sends `request` with `reply` scripted for its path and returns the only callback.
Recorder::Call exchange(const Request &request, const sandbox::ScriptedReply &reply);

} // namespace kovena::test
