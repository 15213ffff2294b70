#include "sandbox/RecordingServer.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstring>
#include <functional>
#include <optional>

namespace kovena::sandbox {

namespace {

int toMilliseconds(time_t sec, time_t usec)
{
    return static_cast<int>(sec * 1000 + usec / 1000);
}

bool waitFor(int sock, short events, int timeoutMs)
{
    pollfd p { sock, events, 0 };
    int r;
    do {
        r = ::poll(&p, 1, timeoutMs);
    } while (r < 0 && errno == EINTR);
    return r > 0 && (p.revents & (events | POLLHUP | POLLERR)) != 0;
}

void addressOf(int sock, bool peer, std::string &ip, int &port)
{
    sockaddr_storage addr {};
    socklen_t len = sizeof(addr);
    int r = peer ? ::getpeername(sock, reinterpret_cast<sockaddr *>(&addr), &len)
                 : ::getsockname(sock, reinterpret_cast<sockaddr *>(&addr), &len);
    if (r != 0)
        return;
    std::array<char, INET6_ADDRSTRLEN> text {};
    if (addr.ss_family == AF_INET) {
        auto *in = reinterpret_cast<sockaddr_in *>(&addr);
        ::inet_ntop(AF_INET, &in->sin_addr, text.data(), text.size());
        port = ntohs(in->sin_port);
    } else if (addr.ss_family == AF_INET6) {
        auto *in6 = reinterpret_cast<sockaddr_in6 *>(&addr);
        ::inet_ntop(AF_INET6, &in6->sin6_addr, text.data(), text.size());
        port = ntohs(in6->sin6_port);
    }
    ip = text.data();
}

// One accepted connection, plain or TLS. Reads are buffered; every byte handed to the HTTP
// parser is also kept, so the head of the current request can be read back verbatim. Writes are
// gathered and sent together once the answer is complete (or before the next wait for input),
// so that an answer's head and body leave in one segment, as a production front end sends a
// small answer. Writes never raise SIGPIPE on a plain socket, and once the connection is marked
// dropped nothing more is sent.
class ConnectionStream : public httplib::Stream
{
public:
    ConnectionStream(int sock, SSL *ssl, int readTimeoutMs, int writeTimeoutMs)
        : m_sock(sock)
        , m_ssl(ssl)
        , m_readTimeoutMs(readTimeoutMs)
        , m_writeTimeoutMs(writeTimeoutMs)
    { }

    using httplib::Stream::write;

    bool is_readable() const override
    {
        return hasBufferedInput() || waitFor(m_sock, POLLIN, m_readTimeoutMs);
    }

    bool is_writable() const override { return !m_dropped && waitFor(m_sock, POLLOUT, m_writeTimeoutMs); }

    ssize_t read(char *ptr, size_t size) override
    {
        if (m_begin == m_end) {
            // The peer may wait for what was written so far (an interim answer) before it sends more.
            if (!flush())
                return -1;
            if (!hasBufferedInput() && !waitFor(m_sock, POLLIN, m_readTimeoutMs))
                return -1;
            ssize_t n = receive(m_buffer.data(), m_buffer.size());
            if (n <= 0)
                return n;
            m_begin = 0;
            m_end = static_cast<size_t>(n);
        }
        size_t n = std::min(size, m_end - m_begin);
        std::memcpy(ptr, m_buffer.data() + m_begin, n);
        m_captured.append(ptr, n);
        m_begin += n;
        return static_cast<ssize_t>(n);
    }

    ssize_t write(const char *ptr, size_t size) override
    {
        if (m_cutAfterBody && !m_dropped) {
            const size_t pass = bytesBeforeCut(ptr, size);
            if (pass != std::string::npos) {
                m_pending.append(ptr, pass);
                flush();
                m_dropped = true;
                return -1;
            }
        }
        if (m_dropped) {
            // A reset must not be preceded by a FIN: the socket is left as it is until closed.
            if (!m_shutDown && m_ending == RecordingServer::Ending::Close) {
                ::shutdown(m_sock, SHUT_RDWR);
                m_shutDown = true;
            }
            return -1;
        }
        m_pending.append(ptr, size);
        return static_cast<ssize_t>(size);
    }

    // Sends what was written; false when the connection could not take it.
    bool flush()
    {
        if (m_pending.empty() || m_dropped) {
            m_pending.clear();
            return !m_dropped;
        }
        const bool sent = sendAll(m_pending.data(), m_pending.size());
        m_pending.clear();
        return sent;
    }

    void get_remote_ip_and_port(std::string &ip, int &port) const override
    {
        addressOf(m_sock, true, ip, port);
    }
    void get_local_ip_and_port(std::string &ip, int &port) const override
    {
        addressOf(m_sock, false, ip, port);
    }
    socket_t socket() const override { return m_sock; }

    bool hasBufferedInput() const { return m_begin < m_end || (m_ssl && SSL_pending(m_ssl) > 0); }
    void startRequest() { m_captured.clear(); }
    const std::string &captured() const { return m_captured; }
    void drop(RecordingServer::Ending ending)
    {
        m_dropped = true;
        m_ending = ending;
    }
    void cutAfterBody(size_t bodyBytes, RecordingServer::Ending ending)
    {
        m_cutAfterBody = bodyBytes;
        m_ending = ending;
    }
    bool dropped() const { return m_dropped; }

    // Ends the connection: a reset goes out as RST with nothing before it; otherwise a TLS
    // connection that ended normally says goodbye first.
    void close()
    {
        flush();
        if (m_dropped && m_ending == RecordingServer::Ending::Reset) {
            linger abort { 1, 0 };
            ::setsockopt(m_sock, SOL_SOCKET, SO_LINGER, &abort, sizeof(abort));
        } else {
            if (m_ssl && !m_dropped)
                SSL_shutdown(m_ssl);
            ::shutdown(m_sock, SHUT_RDWR);
        }
        ::close(m_sock);
    }

private:
    ssize_t receive(char *ptr, size_t size)
    {
        if (m_ssl) {
            // SSL_get_error reads the thread's error queue, which must start empty.
            ERR_clear_error();
            const int n = SSL_read(m_ssl, ptr, static_cast<int>(std::min<size_t>(size, INT_MAX)));
            if (n > 0)
                return n;
            return SSL_get_error(m_ssl, n) == SSL_ERROR_ZERO_RETURN ? 0 : -1;
        }
        ssize_t n;
        do {
            n = ::recv(m_sock, ptr, size, 0);
        } while (n < 0 && errno == EINTR);
        return n;
    }

    ssize_t transmit(const char *ptr, size_t size)
    {
        if (m_ssl) {
            const int n = SSL_write(m_ssl, ptr, static_cast<int>(std::min<size_t>(size, INT_MAX)));
            return n > 0 ? n : -1;
        }
        ssize_t n;
        do {
            n = ::send(m_sock, ptr, size, MSG_NOSIGNAL);
        } while (n < 0 && errno == EINTR);
        return n;
    }

    bool sendAll(const char *ptr, size_t size)
    {
        while (size > 0) {
            if (!waitFor(m_sock, POLLOUT, m_writeTimeoutMs))
                return false;
            ssize_t n = transmit(ptr, size);
            if (n <= 0)
                return false;
            ptr += n;
            size -= static_cast<size_t>(n);
        }
        return true;
    }

    // How many bytes of this write go out before the cut, or npos when the cut lies beyond it.
    // The headers pass whole; of the body, only the bytes the cut allows.
    size_t bytesBeforeCut(const char *ptr, size_t size)
    {
        size_t bodyStart = 0;
        if (!m_headersSent) {
            static const std::string end = "\r\n\r\n";
            const std::string seen = m_headTail + std::string(ptr, size);
            const size_t at = seen.find(end);
            if (at == std::string::npos) {
                m_headTail = seen.substr(seen.size() > 3 ? seen.size() - 3 : 0);
                return std::string::npos;
            }
            m_headersSent = true;
            bodyStart = at + end.size() - m_headTail.size();
        }
        const size_t body = size - bodyStart;
        const size_t room = *m_cutAfterBody - m_bodySent;
        if (body < room) {
            m_bodySent += body;
            return std::string::npos;
        }
        return bodyStart + room;
    }

    int m_sock;
    SSL *m_ssl;
    int m_readTimeoutMs;
    int m_writeTimeoutMs;
    std::array<char, 4096> m_buffer {};
    size_t m_begin = 0;
    size_t m_end = 0;
    std::string m_captured;
    std::string m_pending; // written, not sent yet

    bool m_dropped = false;
    bool m_shutDown = false;
    RecordingServer::Ending m_ending = RecordingServer::Ending::Close;
    std::optional<size_t> m_cutAfterBody;
    bool m_headersSent = false;
    size_t m_bodySent = 0;
    std::string m_headTail;
};

struct Connection
{
    ConnectionStream *stream = nullptr;
    RecordingServer::HeaderList headers;
};

thread_local Connection *t_connection = nullptr;

std::string trim(const std::string &s)
{
    size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos)
        return {};
    size_t e = s.find_last_not_of(" \t");
    return s.substr(b, e - b + 1);
}

using RequestSetup = std::function<void(httplib::Request &)>;
using ProcessRequest
    = std::function<bool(httplib::Stream &, bool last, bool &closed, const RequestSetup &setup)>;

struct ConnectionSettings
{
    size_t maxRequests;
    time_t keepAliveSeconds;
    int readTimeoutMs;
    int writeTimeoutMs;
    std::function<bool()> listening;
};

// Mirrors cpp-httplib's own keep-alive loop, with our stream in place of its socket stream.
// Closes the socket; the TLS session, if any, stays the caller's to free.
bool serveConnection(int sock, SSL *ssl, const ConnectionSettings &settings, const ProcessRequest &process)
{
    // Set here, per accepted socket: not every system passes the option on from the listener.
    int noDelay = 1;
    ::setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof(noDelay));
    ConnectionStream stream(sock, ssl, settings.readTimeoutMs, settings.writeTimeoutMs);
    Connection connection { &stream, {} };
    t_connection = &connection;

    auto waitForNextRequest = [&] {
        using clock = std::chrono::steady_clock;
        auto deadline = clock::now() + std::chrono::seconds(settings.keepAliveSeconds);
        while (settings.listening()) {
            if (stream.hasBufferedInput() || waitFor(sock, POLLIN, 10))
                return true;
            if (clock::now() > deadline)
                return false;
        }
        return false;
    };

    bool ok = false;
    for (size_t left = settings.maxRequests; left > 0 && waitForNextRequest(); --left) {
        stream.startRequest();
        connection.headers.clear();
        bool closed = false;
        ok = process(stream, left == 1, closed, [&](httplib::Request &) {
            connection.headers = RecordingServer::parseHeaderBlock(stream.captured());
        });
        ok = stream.flush() && ok;
        if (!ok || closed || stream.dropped())
            break;
    }

    t_connection = nullptr;
    stream.close();
    return ok;
}

} // namespace

RecordingServer::HeaderList RecordingServer::currentHeaders()
{
    return t_connection ? t_connection->headers : HeaderList {};
}

void RecordingServer::dropCurrentConnection(Ending ending)
{
    if (t_connection && t_connection->stream)
        t_connection->stream->drop(ending);
}

void RecordingServer::cutCurrentReply(std::size_t bodyBytes, Ending ending)
{
    if (t_connection && t_connection->stream)
        t_connection->stream->cutAfterBody(bodyBytes, ending);
}

int RecordingServer::currentSocket()
{
    return t_connection && t_connection->stream ? t_connection->stream->socket() : -1;
}

RecordingServer::HeaderList RecordingServer::parseHeaderBlock(const std::string &head)
{
    HeaderList headers;
    size_t pos = head.find('\n');
    while (pos != std::string::npos) {
        size_t start = pos + 1;
        pos = head.find('\n', start);
        std::string line = head.substr(start, pos == std::string::npos ? std::string::npos : pos - start);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty())
            break;
        size_t colon = line.find(':');
        if (colon == std::string::npos || colon == 0)
            continue;
        headers.emplace_back(line.substr(0, colon), trim(line.substr(colon + 1)));
    }
    return headers;
}

bool RecordingServer::process_and_close_socket(socket_t sock)
{
    const ConnectionSettings settings { keep_alive_max_count_, keep_alive_timeout_sec_,
        toMilliseconds(read_timeout_sec_, read_timeout_usec_),
        toMilliseconds(write_timeout_sec_, write_timeout_usec_),
        [this] { return svr_sock_ != INVALID_SOCKET; } };
    return serveConnection(sock, nullptr, settings,
        [this](httplib::Stream &stream, bool last, bool &closed, const RequestSetup &setup) {
            return process_request(stream, last, closed, setup);
        });
}

TlsRecordingServer::TlsRecordingServer(X509 *certificate, EVP_PKEY *privateKey)
    : httplib::SSLServer(certificate, privateKey)
{ }

bool TlsRecordingServer::process_and_close_socket(socket_t sock)
{
    // OpenSSL writes to the socket without MSG_NOSIGNAL: a client that went away must give
    // this thread an error, not a SIGPIPE that ends the process.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    // The handshake blocks, bounded by the server's timeouts.
    ::fcntl(sock, F_SETFL, ::fcntl(sock, F_GETFL) & ~O_NONBLOCK);
    timeval readTimeout { read_timeout_sec_, static_cast<suseconds_t>(read_timeout_usec_) };
    timeval writeTimeout { write_timeout_sec_, static_cast<suseconds_t>(write_timeout_usec_) };
    ::setsockopt(sock, SOL_SOCKET, SO_RCVTIMEO, &readTimeout, sizeof(readTimeout));
    ::setsockopt(sock, SOL_SOCKET, SO_SNDTIMEO, &writeTimeout, sizeof(writeTimeout));

    ERR_clear_error(); // a failed handshake before, on this thread, left its errors there
    SSL *ssl = SSL_new(ssl_context());
    if (!ssl || SSL_set_fd(ssl, sock) != 1 || SSL_accept(ssl) != 1) {
        // Most often a client that does not trust the certificate and said so with an alert.
        SSL_free(ssl);
        ::shutdown(sock, SHUT_RDWR);
        ::close(sock);
        return false;
    }
    const ConnectionSettings settings { keep_alive_max_count_, keep_alive_timeout_sec_,
        toMilliseconds(read_timeout_sec_, read_timeout_usec_),
        toMilliseconds(write_timeout_sec_, write_timeout_usec_),
        [this] { return svr_sock_ != INVALID_SOCKET; } };
    const bool ok = serveConnection(sock, ssl, settings,
        [this](httplib::Stream &stream, bool last, bool &closed, const RequestSetup &setup) {
            return process_request(stream, last, closed, setup);
        });
    SSL_free(ssl);
    return ok;
}

} // namespace kovena::sandbox
