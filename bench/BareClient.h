#pragma once

#include <QByteArray>
#include <QNetworkRequest>
#include <QThread>

#include <functional>

class QNetworkAccessManager;

namespace kovena::bench {

// The baseline HTTP client: a plain QNetworkAccessManager living in a QThread with its own event
// loop, as the library's session does, without anything of the library around it.
class BareClient
{
public:
    BareClient();
    ~BareClient();

    // Runs `block` on the client's thread.
    void run(std::function<void()> block);
    // Client thread only: POSTs `body` and calls `finished` there with the reply's body.
    void post(
        const QNetworkRequest &request, const QByteArray &body, std::function<void(QByteArray)> finished);

private:
    QThread m_thread;
    QObject *m_context = nullptr;
    QNetworkAccessManager *m_manager = nullptr;
};

} // namespace kovena::bench
