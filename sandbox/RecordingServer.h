#pragma once

#include <httplib.h>

#include <string>
#include <utility>
#include <vector>

namespace kovena::sandbox {

// An HTTP server that gives its handlers the request headers exactly as they arrived (order,
// spelling, duplicates) and lets a handler close the connection without sending any answer.
// Every accepted connection has Nagle's algorithm off, so a kept-alive connection never waits
// for a delayed acknowledgement between the parts of an answer.
class RecordingServer : public httplib::Server
{
public:
    using HeaderList = std::vector<std::pair<std::string, std::string>>;

    // Headers of the request being handled on the calling thread; empty outside a handler.
    static HeaderList currentHeaders();
    // The connection of the request being handled on the calling thread is closed instead of
    // answered: the client sees the connection end before any byte of a response.
    static void dropCurrentConnection();
    // The answer to the request being handled on the calling thread stops after its headers
    // and the connection closes.
    static void truncateCurrentReplyAfterHeaders();
    // The socket of the connection whose request is being handled on the calling thread; -1
    // outside a handler.
    static int currentSocket();

    // Parses the header lines that follow the request line of a raw request head.
    static HeaderList parseHeaderBlock(const std::string &head);

private:
    bool process_and_close_socket(socket_t sock) override;
};

} // namespace kovena::sandbox
