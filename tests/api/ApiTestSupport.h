#pragma once

#include "api/ApiManager.h"
#include "api/Callbacks.h"
#include "api/JsonValue.h"
#include "sandbox/Sandbox.h"

#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kovena::test {

// The process's sandbox, started on first use; the client is pointed at it before any request.
sandbox::Sandbox &backend();
// Clears the sandbox's requests and scripts and the user defaults, then stores a checkout's
// "retry" (false) and "requestId".
void resetBackendAndDefaults();
// Waits, processing Qt events, until `done` holds; false if it never does within 10 s.
bool waitUntil(const std::function<bool()> &done);
// Returns once every block queued on the session thread so far has run.
void flushSessionThread();
JsonValue bodyOf(const sandbox::RecordedRequest &request);

// Records the client's callbacks and, while a LogCapture is alive, its diagnostics, in order.
class Recorder final : public TransactionStatusCallback, public UPICalback1
{
public:
    struct Call
    {
        std::string kind; // "status", "upi1", "upi2"; "log" or "debug" for a diagnostic line
        bool onSessionThread = false;
        bool onMainThread = false;
        QString first, second; // upi1's strings, or the diagnostic text
        std::shared_ptr<TransactionStatus> status;
        std::shared_ptr<UPIResponse> upi;
        bool isCallback() const { return kind != "log" && kind != "debug"; }
    };

    void getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) override;
    void upiCallback1(const QString &kovenaTransactionId, const QString &transactionRefNum) override;
    void upiCallback2(std::shared_ptr<UPIResponse> upiResponse) override;
    void add(Call call);

    // Waits for one callback, then lets the session thread run past it so that a second call
    // of the same request would be seen.
    bool waitForCallback();
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

// Sends one request with `reply` scripted for `endpoint` and returns the only callback.
Recorder::Call exchange(const char *endpoint, const sandbox::ScriptedReply &reply,
    const std::function<void(std::shared_ptr<Recorder>)> &send);

} // namespace kovena::test
