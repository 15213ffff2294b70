#pragma once

#include <httplib.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kovena::sandbox {

// An HTTP server that gives its handlers the request headers exactly as they arrived (order,
// spelling, duplicates) and lets a handler end the connection without an answer or part-way
// through one. Every accepted connection has Nagle's algorithm off, so a kept-alive connection
// never waits for a delayed acknowledgement between the parts of an answer.
class RecordingServer : public httplib::Server
{
public:
    using HeaderList = std::vector<std::pair<std::string, std::string>>;

    // How a connection that a handler cut short ends: an orderly close (FIN) or a reset (RST),
    // as from a crashed server or a middlebox that gave up.
    enum class Ending { Close, Reset };

    // Headers of the request being handled on the calling thread; empty outside a handler.
    static HeaderList currentHeaders();
    // The connection of the request being handled on the calling thread ends instead of being
    // answered: the client sees it end before any byte of a response.
    static void dropCurrentConnection(Ending ending = Ending::Close);
    // The answer to the request being handled on the calling thread stops after its headers
    // (which still announce the whole body) and `bodyBytes` bytes of its body; then the
    // connection ends.
    static void cutCurrentReply(std::size_t bodyBytes, Ending ending = Ending::Close);
    static void truncateCurrentReplyAfterHeaders() { cutCurrentReply(0); }
    // The socket of the connection whose request is being handled on the calling thread; -1
    // outside a handler.
    static int currentSocket();

    // Parses the header lines that follow the request line of a raw request head.
    static HeaderList parseHeaderBlock(const std::string &head);

private:
    bool process_and_close_socket(socket_t sock) override;
};

// The same server over TLS: each connection does its handshake with the given certificate and
// key, then is served exactly as RecordingServer serves it (recording, drops and cuts included).
// A client that rejects the certificate ends the handshake and no request is ever seen.
class TlsRecordingServer : public httplib::SSLServer
{
public:
    // The certificate and key are copied into the server's TLS context; is_valid() is false
    // when they do not fit together.
    TlsRecordingServer(X509 *certificate, EVP_PKEY *privateKey);

private:
    bool process_and_close_socket(socket_t sock) override;
};

} // namespace kovena::sandbox
