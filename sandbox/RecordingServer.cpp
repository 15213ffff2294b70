#include "sandbox/RecordingServer.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>

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

// One accepted connection. Reads are buffered; every byte handed to the HTTP parser is also
// kept, so the head of the current request can be read back verbatim. Writes never raise
// SIGPIPE, and once the connection is marked dropped nothing more is sent.
class ConnectionStream : public httplib::Stream
{
public:
    ConnectionStream(int sock, int readTimeoutMs, int writeTimeoutMs)
        : m_sock(sock)
        , m_readTimeoutMs(readTimeoutMs)
        , m_writeTimeoutMs(writeTimeoutMs)
    { }

    using httplib::Stream::write;

    bool is_readable() const override { return m_begin < m_end || waitFor(m_sock, POLLIN, m_readTimeoutMs); }

    bool is_writable() const override { return !m_dropped && waitFor(m_sock, POLLOUT, m_writeTimeoutMs); }

    ssize_t read(char *ptr, size_t size) override
    {
        if (m_begin == m_end) {
            if (!waitFor(m_sock, POLLIN, m_readTimeoutMs))
                return -1;
            ssize_t n;
            do {
                n = ::recv(m_sock, m_buffer.data(), m_buffer.size(), 0);
            } while (n < 0 && errno == EINTR);
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
        if (m_truncate && !m_dropped) {
            // Let bytes through up to the blank line that ends the headers, then drop.
            static const std::string end = "\r\n\r\n";
            std::string seen = m_headTail + std::string(ptr, size);
            size_t at = seen.find(end);
            if (at != std::string::npos) {
                size_t pass = at + end.size() - m_headTail.size();
                m_dropped = true;
                sendAll(ptr, pass);
                return -1;
            }
            m_headTail = seen.substr(seen.size() > 3 ? seen.size() - 3 : 0);
        }
        if (m_dropped) {
            if (!m_shutDown) {
                ::shutdown(m_sock, SHUT_RDWR);
                m_shutDown = true;
            }
            return -1;
        }
        if (!waitFor(m_sock, POLLOUT, m_writeTimeoutMs))
            return -1;
        ssize_t n;
        do {
            n = ::send(m_sock, ptr, size, MSG_NOSIGNAL);
        } while (n < 0 && errno == EINTR);
        return n;
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

    bool hasBufferedInput() const { return m_begin < m_end; }
    void startRequest() { m_captured.clear(); }
    const std::string &captured() const { return m_captured; }
    void drop() { m_dropped = true; }
    void truncateAfterHeaders() { m_truncate = true; }
    bool dropped() const { return m_dropped; }

private:
    int m_sock;
    int m_readTimeoutMs;
    int m_writeTimeoutMs;
    std::array<char, 4096> m_buffer {};
    size_t m_begin = 0;
    size_t m_end = 0;
    std::string m_captured;
    bool sendAll(const char *ptr, size_t size)
    {
        while (size > 0) {
            if (!waitFor(m_sock, POLLOUT, m_writeTimeoutMs))
                return false;
            ssize_t n = ::send(m_sock, ptr, size, MSG_NOSIGNAL);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return false;
            ptr += n;
            size -= static_cast<size_t>(n);
        }
        return true;
    }

    bool m_dropped = false;
    bool m_shutDown = false;
    bool m_truncate = false;
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

} // namespace

RecordingServer::HeaderList RecordingServer::currentHeaders()
{
    return t_connection ? t_connection->headers : HeaderList {};
}

void RecordingServer::dropCurrentConnection()
{
    if (t_connection && t_connection->stream)
        t_connection->stream->drop();
}

void RecordingServer::truncateCurrentReplyAfterHeaders()
{
    if (t_connection && t_connection->stream)
        t_connection->stream->truncateAfterHeaders();
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

// Mirrors the library's own keep-alive loop, with our stream in place of its socket stream.
bool RecordingServer::process_and_close_socket(socket_t sock)
{
    // Set here, per accepted socket: not every system passes the option on from the listener.
    int noDelay = 1;
    ::setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof(noDelay));
    ConnectionStream stream(sock, toMilliseconds(read_timeout_sec_, read_timeout_usec_),
        toMilliseconds(write_timeout_sec_, write_timeout_usec_));
    Connection connection { &stream, {} };
    t_connection = &connection;

    auto waitForNextRequest = [&] {
        using clock = std::chrono::steady_clock;
        auto deadline = clock::now() + std::chrono::seconds(keep_alive_timeout_sec_);
        while (svr_sock_ != INVALID_SOCKET) {
            if (stream.hasBufferedInput() || waitFor(sock, POLLIN, 10))
                return true;
            if (clock::now() > deadline)
                return false;
        }
        return false;
    };

    bool ok = false;
    for (size_t left = keep_alive_max_count_; left > 0 && waitForNextRequest(); --left) {
        stream.startRequest();
        connection.headers.clear();
        bool closed = false;
        ok = process_request(stream, left == 1, closed,
            [&](httplib::Request &) { connection.headers = parseHeaderBlock(stream.captured()); });
        if (!ok || closed || stream.dropped())
            break;
    }

    t_connection = nullptr;
    ::shutdown(sock, SHUT_RDWR);
    ::close(sock);
    return ok;
}

} // namespace kovena::sandbox
