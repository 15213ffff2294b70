#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace kovena::sandbox::test {

// A bare TCP connection, for requests whose exact bytes matter and for seeing a connection
// end with nothing sent back.
class RawConnection
{
public:
    explicit RawConnection(int port)
        : m_fd(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in addr {};
        addr.sin_family = AF_INET;
        addr.sin_port = htons(static_cast<uint16_t>(port));
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        timeval timeout { 10, 0 };
        ::setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
        m_connected = ::connect(m_fd, reinterpret_cast<sockaddr *>(&addr), sizeof(addr)) == 0;
    }
    ~RawConnection() { ::close(m_fd); }
    RawConnection(const RawConnection &) = delete;
    RawConnection &operator=(const RawConnection &) = delete;

    // False when not connected or not everything went out.
    bool send(const std::string &bytes)
    {
        return m_connected
            && ::send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }

    // Reads until the peer closes; `closed` is false when the read timed out instead, or when
    // the peer reset the connection (then wasReset() is true).
    std::string readToEnd(bool &closed)
    {
        std::string received;
        char buffer[65536];
        ssize_t n;
        while ((n = ::recv(m_fd, buffer, sizeof(buffer), 0)) > 0)
            received.append(buffer, static_cast<size_t>(n));
        closed = n == 0;
        m_reset = n < 0 && errno == ECONNRESET;
        return received;
    }
    bool wasReset() const { return m_reset; }

private:
    int m_fd;
    bool m_connected = false;
    bool m_reset = false;
};

} // namespace kovena::sandbox::test
