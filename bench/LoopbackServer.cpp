#include "LoopbackServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace kovena::bench {

namespace {

std::mutex g_socketsMutex;

bool sendAll(int socket, const std::string &data)
{
    std::size_t sent = 0;
    while (sent < data.size()) {
        const ssize_t n = ::send(socket, data.data() + sent, data.size() - sent, MSG_NOSIGNAL);
        if (n <= 0)
            return false;
        sent += std::size_t(n);
    }
    return true;
}

std::size_t contentLength(const std::string &headers)
{
    std::string lower = headers;
    for (char &c : lower)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    const std::size_t at = lower.find("\r\ncontent-length:");
    return at == std::string::npos ? 0 : std::strtoul(lower.c_str() + at + 17, nullptr, 10);
}

} // namespace

LoopbackServer::LoopbackServer(std::string body, std::chrono::milliseconds delay)
    : m_delay(delay)
{
    m_reply = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: keep-alive\r\n"
              "Content-Length: "
        + std::to_string(body.size()) + "\r\n\r\n" + body;
    m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
    const int yes = 1;
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(m_listener, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0
        || ::listen(m_listener, 16) != 0) {
        std::perror("kovena_bench: loopback server");
        std::abort();
    }
    socklen_t length = sizeof address;
    ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &length);
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptLoop(); });
}

LoopbackServer::~LoopbackServer()
{
    m_stopping = true;
    ::shutdown(m_listener, SHUT_RDWR);
    ::close(m_listener);
    {
        std::lock_guard lock(g_socketsMutex);
        for (int socket : m_sockets)
            ::shutdown(socket, SHUT_RDWR);
    }
    m_acceptor.join();
    for (std::thread &connection : m_connections)
        connection.join();
}

std::chrono::steady_clock::time_point LoopbackServer::lastReplyByte() const
{
    return std::chrono::steady_clock::time_point(std::chrono::steady_clock::duration(m_lastByte.load()));
}

std::string LoopbackServer::lastRequest() const
{
    std::lock_guard lock(m_requestMutex);
    return m_lastRequest;
}

void LoopbackServer::acceptLoop()
{
    while (!m_stopping) {
        const int connection = ::accept(m_listener, nullptr, nullptr);
        if (connection < 0)
            return;
        const int yes = 1;
        ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        std::lock_guard lock(g_socketsMutex);
        m_sockets.push_back(connection);
        m_connections.emplace_back([this, connection] { serve(connection); });
    }
}

void LoopbackServer::serve(int connection)
{
    std::string pending;
    char buffer[16384];
    for (;;) {
        std::size_t headerEnd;
        while ((headerEnd = pending.find("\r\n\r\n")) == std::string::npos) {
            const ssize_t n = ::recv(connection, buffer, sizeof buffer, 0);
            if (n <= 0)
                return void(::close(connection));
            pending.append(buffer, std::size_t(n));
        }
        const std::size_t total = headerEnd + 4 + contentLength(pending.substr(0, headerEnd + 2));
        while (pending.size() < total) {
            const ssize_t n = ::recv(connection, buffer, sizeof buffer, 0);
            if (n <= 0)
                return void(::close(connection));
            pending.append(buffer, std::size_t(n));
        }
        {
            std::lock_guard lock(m_requestMutex);
            m_lastRequest = pending.substr(0, total);
        }
        pending.erase(0, total);
        std::this_thread::sleep_for(m_delay);
        if (!sendAll(connection, m_reply))
            return void(::close(connection));
        m_lastByte = std::chrono::steady_clock::now().time_since_epoch().count();
        ++m_replies;
    }
}

} // namespace kovena::bench
