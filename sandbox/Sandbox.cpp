#include "sandbox/Sandbox.h"

#include "sandbox/BackendApi.h"
#include "sandbox/BankCatalog.h"
#include "sandbox/BankPages.h"
#include "sandbox/Fault.h"
#include "sandbox/RecordingServer.h"
#include "sandbox/RequestLog.h"
#include "sandbox/Router.h"
#include "sandbox/ScriptBook.h"
#include "sandbox/TlsIdentity.h"
#include "sandbox/TransactionStore.h"
#include "sandbox/WireText.h"

#include <openssl/pem.h>

#include <sys/socket.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace kovena::sandbox {

namespace {

const std::string kBasePath = "/KoVena/";
// A polling client keeps its connection, as with a production server; cpp-httplib's default
// would close it after every fifth request.
constexpr std::size_t kKeepAliveRequests = 10000;

bool sameName(const std::string &a, const std::string &b)
{
    return a.size() == b.size() && wire::toLower(a) == wire::toLower(b);
}

// The path as the client wrote it, without the query.
std::string rawPath(const httplib::Request &request)
{
    const std::string &target = request.target.empty() ? request.path : request.target;
    return target.substr(0, target.find('?'));
}

// The page router's endpoint: the path without its leading slash.
std::string pagePath(const std::string &path)
{
    return path.empty() || path.front() != '/' ? path : path.substr(1);
}

} // namespace

std::string RecordedRequest::header(const std::string &name) const
{
    for (const auto &[key, value] : headers) {
        if (sameName(key, name))
            return value;
    }
    return {};
}

int RecordedRequest::headerCount(const std::string &name) const
{
    int count = 0;
    for (const auto &entry : headers)
        count += sameName(entry.first, name) ? 1 : 0;
    return count;
}

struct Sandbox::Impl
{
    Impl()
        : api(store, banks, [this] { return origin(); })
        , bankPages(store, [this] { return origin(); })
    {
        api.install(apiRouter);
        bankPages.install(pageRouter, apiRouter);
    }

    void handle(const httplib::Request &request, httplib::Response &response);
    // Sleeps unless the sandbox stops first; false when it is stopping.
    bool pause(std::chrono::milliseconds delay);
    std::string origin() const
    {
        return (https ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(port.load());
    }
    int start(std::unique_ptr<httplib::Server> server, int port);

    RequestLog log;
    ScriptBook scripts;
    TransactionStore store;
    BankCatalog banks;
    BackendApi api;
    BankPages bankPages;
    Router apiRouter; // paths under kBasePath
    Router pageRouter; // every other path: the bank's pages

    std::unique_ptr<httplib::Server> server;
    std::thread thread;
    std::atomic<int> port = 0;
    std::atomic<bool> https = false;

    std::mutex stopMutex;
    std::condition_variable stopSignal;
    bool stopping = false;
};

bool Sandbox::Impl::pause(std::chrono::milliseconds delay)
{
    std::unique_lock lock(stopMutex);
    return !stopSignal.wait_for(lock, delay, [this] { return stopping; });
}

void Sandbox::Impl::handle(const httplib::Request &request, httplib::Response &response)
{
    RecordedRequest recorded { request.method, rawPath(request), RecordingServer::currentHeaders(),
        request.body };
    log.add(recorded);

    const bool underBase = recorded.path.compare(0, kBasePath.size(), kBasePath) == 0;
    const std::string endpoint = underBase ? recorded.path.substr(kBasePath.size()) : std::string();

    if (underBase) {
        if (auto scripted = scripts.take(endpoint)) {
            if (scripted->delay.count() > 0 && !pause(scripted->delay)) {
                RecordingServer::dropCurrentConnection();
                return;
            }
            if (scripted->dropConnection) {
                RecordingServer::dropCurrentConnection();
                return;
            }
            if (scripted->truncateAfterHeaders) {
                // The headers must promise a body for the cut to show.
                RecordingServer::truncateCurrentReplyAfterHeaders();
                response.status = scripted->status;
                response.set_content(
                    scripted->body.empty() ? std::string(R"({"success":"true"})") : scripted->body,
                    "application/json;charset=UTF-8");
                return;
            }
            if (!scripted->handleNormally) {
                response.status = scripted->status;
                response.set_content(scripted->body, "application/json;charset=UTF-8");
                return;
            }
        }
    }

    // Every fault is chosen here, by the request's token, whatever the endpoint.
    const std::optional<Fault> fault = underBase ? Fault::forRequest(recorded) : std::nullopt;
    if (fault && fault->delay().count() > 0 && !pause(fault->delay())) {
        RecordingServer::dropCurrentConnection();
        return;
    }
    if (fault && fault->resetsBeforeReply()) {
        Reply none;
        fault->apply(none);
        return;
    }

    Reply reply = underBase ? apiRouter.dispatch(request.method, endpoint, recorded)
                            : pageRouter.dispatch(request.method, pagePath(recorded.path), recorded);
    if (fault)
        fault->apply(reply);
    response.status = reply.status;
    for (const auto &[name, value] : reply.headers)
        response.set_header(name, value);
    response.set_content(reply.body, reply.contentType);
}

Sandbox::Sandbox()
    : d(std::make_unique<Impl>())
{
    storeTransaction(42, "ORD-1", 1, "100.00");
    storeTransaction(43, "ORD-2", 2, "250.00");
    storeTransaction(44, "ORD-3", 14, "75.50");
    storeTransaction(45, "ORD-4", 11, "1000");
    storeTransaction(46, "ORD-5", 5, "10.00");
}

Sandbox::~Sandbox()
{
    stop();
}

int Sandbox::start(int port)
{
    if (d->server)
        return d->port;
    d->https = false;
    return d->start(std::make_unique<RecordingServer>(), port);
}

int Sandbox::startHttps(const TlsIdentity &identity, int port)
{
    if (d->server)
        return d->port;
    auto read = [](const std::string &pem) {
        return std::unique_ptr<BIO, decltype(&BIO_free)>(
            BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free);
    };
    auto certBio = read(identity.certificatePem);
    auto keyBio = read(identity.privateKeyPem);
    std::unique_ptr<X509, decltype(&X509_free)> cert(
        certBio ? PEM_read_bio_X509(certBio.get(), nullptr, nullptr, nullptr) : nullptr, &X509_free);
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        keyBio ? PEM_read_bio_PrivateKey(keyBio.get(), nullptr, nullptr, nullptr) : nullptr, &EVP_PKEY_free);
    if (!cert || !key)
        return 0;
    // The server's TLS context keeps its own references to both.
    auto server = std::make_unique<TlsRecordingServer>(cert.get(), key.get());
    if (!server->is_valid())
        return 0;
    d->https = true;
    return d->start(std::move(server), port);
}

int Sandbox::Impl::start(std::unique_ptr<httplib::Server> server, int port)
{
    auto handler
        = [this](const httplib::Request &request, httplib::Response &response) { handle(request, response); };
    const std::string any = ".*";
    server->Get(any, handler).Post(any, handler).Put(any, handler).Patch(any, handler).Delete(any, handler);
    server->Options(any, handler);
    server->set_keep_alive_max_count(kKeepAliveRequests);
    // Address reuse only: port sharing would let a second sandbox bind a port already in use.
    server->set_socket_options([](socket_t sock) {
        int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    });

    int bound = 0;
    if (port == 0)
        bound = server->bind_to_any_port("127.0.0.1");
    else if (server->bind_to_port("127.0.0.1", port))
        bound = port;
    if (bound <= 0)
        return 0;

    {
        std::lock_guard lock(stopMutex);
        stopping = false;
    }
    auto finished = std::make_shared<std::atomic<bool>>(false);
    thread = std::thread([s = server.get(), finished] {
        s->listen_after_bind();
        *finished = true;
    });
    // The socket already listens; waiting for the accept loop makes an early stop() reliable.
    while (!server->is_running() && !*finished)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (*finished) {
        thread.join();
        return 0;
    }
    this->server = std::move(server);
    this->port = bound;
    return bound;
}

void Sandbox::stop()
{
    if (!d->server)
        return;
    {
        std::lock_guard lock(d->stopMutex);
        d->stopping = true;
    }
    d->stopSignal.notify_all();
    d->server->stop();
    if (d->thread.joinable())
        d->thread.join();
    d->server.reset();
    d->port = 0;
}

int Sandbox::port() const
{
    return d->port;
}

std::string Sandbox::baseUrl() const
{
    return d->origin() + kBasePath;
}

void Sandbox::setRecordFile(const std::string &path)
{
    d->log.setFile(path);
}

std::vector<RecordedRequest> Sandbox::requests() const
{
    return d->log.all();
}

void Sandbox::clearRequests()
{
    d->log.clear();
}

bool Sandbox::waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const
{
    return d->log.waitFor(count, timeout);
}

void Sandbox::enqueueReply(const std::string &endpoint, ScriptedReply reply)
{
    d->scripts.enqueue(endpoint, std::move(reply));
}

void Sandbox::clearScriptedReplies()
{
    d->scripts.clear();
}

void Sandbox::setBankList(std::vector<Bank> banks)
{
    d->banks.setList(std::move(banks));
}

std::vector<Bank> Sandbox::bankList() const
{
    return d->banks.list();
}

void Sandbox::storeTransaction(std::int64_t kovenaTransactionId, const std::string &merchantReference,
    int paymentStatus, const std::string &amount)
{
    Transaction t;
    t.id = kovenaTransactionId;
    t.merchantReference = merchantReference;
    t.paymentStatus = paymentStatus;
    t.amount = amount;
    t.collectorId = "1001";
    t.customerMobNum = "9876543210";
    t.customerEmail = "customer@example.com";
    t.customerVpa = "customer@kovena";
    t.requestId = "REQ-" + std::to_string(kovenaTransactionId);
    t.transactionTime = wire::transactionTime();
    t.collectSent = true;
    d->store.put(std::move(t));
}

} // namespace kovena::sandbox
