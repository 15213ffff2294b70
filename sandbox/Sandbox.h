#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kovena::sandbox {

struct TlsIdentity;

// One request as it reached the sandbox.
struct RecordedRequest
{
    std::string method;
    std::string path; // e.g. "/KoVena/v1/sdk/txn/1/false/2"
    std::vector<std::pair<std::string, std::string>> headers; // in arrival order, names as sent
    std::string body;
    std::string header(const std::string &name) const; // case-insensitive; "" when absent
    int headerCount(const std::string &name) const; // case-insensitive
};

// A reply forced for the next request to one endpoint, in place of the normal handling.
// A Qt client re-sends a request once when its connection closes before any byte of the
// reply: to make it fail, queue two drops, or use truncateAfterHeaders.
struct ScriptedReply
{
    int status = 200;
    std::string body; // sent as is (may be invalid JSON, a fragment, empty)
    bool dropConnection = false; // close the connection without answering
    std::chrono::milliseconds delay { 0 };
    bool handleNormally = false; // after the delay, answer as if nothing were scripted
    // Send the status line and headers, then close before the body: every client sees a
    // transport error on its first attempt.
    bool truncateAfterHeaders = false;
};

// One bank of the net-banking list, as the bank list request answers it.
struct Bank
{
    std::int64_t id = 0; // "netBankingId"; a payment names its bank by this id
    std::string name; // "netBankingName"
    std::string code; // "netbankingCodes"
    bool operator==(const Bank &) const = default;
};

// A local backend that speaks the payment backend's protocol under "/KoVena/": the status
// enquiry, UPI, card and net-banking payments and the bank list, with stored transactions and
// scenarios chosen by test values; plus the bank's page that card and net-banking payments
// open. Records every request. Runs its own server thread.
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox &) = delete;
    Sandbox &operator=(const Sandbox &) = delete;

    // Listens on 127.0.0.1; port 0 picks a free one. Returns the port, or 0 on failure.
    int start(int port = 0);
    // The same over HTTPS, presenting `identity` (see TlsIdentity::selfSigned()). Returns 0
    // also when the certificate and key do not fit together.
    int startHttps(const TlsIdentity &identity, int port = 0);
    void stop();
    int port() const;
    // "http://127.0.0.1:<port>/KoVena/", or "https://..." once started with startHttps().
    std::string baseUrl() const;

    // Appends every request, as one JSON object per line, to this file ("" stops).
    void setRecordFile(const std::string &path);
    std::vector<RecordedRequest> requests() const;
    void clearRequests();
    // Waits until at least `count` requests were recorded; false on timeout.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const;

    // `endpoint` is the path after "/KoVena/", e.g. "v1/sdk/payForService". Replies queue
    // per endpoint and are used up in order.
    void enqueueReply(const std::string &endpoint, ScriptedReply reply);
    void clearScriptedReplies();

    // A stored transaction that the status enquiry can find by id or merchant reference.
    void storeTransaction(std::int64_t kovenaTransactionId, const std::string &merchantReference,
        int paymentStatus, const std::string &amount);

    // The list the bank list request answers (the test tokens keep their own lists); banks
    // of this list can be paid with. Starts as the built-in list of Indian banks.
    void setBankList(std::vector<Bank> banks);
    std::vector<Bank> bankList() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace kovena::sandbox
