#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kovena::bench {

// A minimal HTTP/1.1 server on 127.0.0.1 that answers every request on a kept-alive connection
// with one fixed JSON body, written in a single send, and notes when its last byte went out.
class LoopbackServer
{
public:
    // Each reply goes out `delay` after its request arrived, as from a backend across a network.
    explicit LoopbackServer(std::string body, std::chrono::milliseconds delay = {});
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    int port() const { return m_port; }
    // When the last byte of the latest reply was handed to the kernel.
    std::chrono::steady_clock::time_point lastReplyByte() const;
    int replies() const { return m_replies.load(); }
    // The latest request as it arrived: request line, headers and body.
    std::string lastRequest() const;

private:
    void acceptLoop();
    void serve(int connection);

    std::string m_reply;
    std::chrono::milliseconds m_delay;
    int m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_stopping { false };
    std::atomic<std::chrono::steady_clock::rep> m_lastByte { 0 };
    std::atomic<int> m_replies { 0 };
    std::thread m_acceptor;
    std::vector<std::thread> m_connections;
    std::vector<int> m_sockets;
    mutable std::mutex m_requestMutex;
    std::string m_lastRequest;
};

} // namespace kovena::bench
