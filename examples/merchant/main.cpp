// A merchant's application using the installed Kovena package: its screen asks for the status
// of an earlier payment and receives the outcome through KovenaCallback. The backend is a
// canned reply on the loopback interface, so the example needs no server of its own.
#include "model/TransactionStatus.h"
#include "sdk/KovenaCallback.h"
#include "sdk/KovenaSDK.h"
#include "sdk/KovenaServer.h"

#include <QApplication>
#include <QByteArray>
#include <QFontDatabase>
#include <QLabel>
#include <QMainWindow>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>
#include <memory>

namespace {

const char *const kReply = R"({"success":"true","responseCode":"200TRANSRESPSUCC","data":)"
                           R"({"kovenaRefNumber":9001,"paymentStatus":1,"transactionRefNumber":"ORD-1"}})";

int failures = 0;

void check(bool ok, const char *what)
{
    std::printf("%s: %s\n", ok ? "ok  " : "FAIL", what);
    if (!ok)
        ++failures;
}

// Answers every request on the loopback interface with kReply and keeps the last request.
class CannedBackend
{
public:
    bool listen() { return m_server.listen(QHostAddress::LocalHost, 0); }
    QString baseUrl() const
    {
        return QStringLiteral("http://127.0.0.1:%1/KoVena/").arg(m_server.serverPort());
    }
    QByteArray lastRequest() const { return m_request; }

    CannedBackend()
    {
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                auto buffer = std::make_shared<QByteArray>();
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, buffer] {
                    buffer->append(socket->readAll());
                    const qsizetype end = buffer->indexOf("\r\n\r\n");
                    if (end < 0)
                        return;
                    const QByteArray head = buffer->left(end).toLower();
                    const qsizetype at = head.indexOf("content-length:");
                    const qsizetype length
                        = at < 0 ? 0 : head.mid(at + 15).split('\r').first().trimmed().toLongLong();
                    if (buffer->size() < end + 4 + length)
                        return;
                    m_request = *buffer;
                    const QByteArray body(kReply);
                    socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\n"
                                  "Content-Length: "
                        + QByteArray::number(body.size()) + "\r\n\r\n" + body);
                    socket->disconnectFromHost();
                });
                QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

private:
    QTcpServer m_server;
    QByteArray m_request;
};

// The merchant's screen: shows the order and receives the library's report.
class StoreScreen : public QWidget, public kovena::KovenaCallback
{
public:
    StoreScreen()
    {
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(new QLabel(QStringLiteral("Order ORD-1"), this));
    }

    void onTransactionComplete(std::shared_ptr<kovena::TransactionStatus> transactionStatus) override
    {
        received = std::move(transactionStatus);
        ++calls;
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    }

    std::shared_ptr<kovena::TransactionStatus> received;
    int calls = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);

    check(&kovena::KovenaSDK::instance() == &kovena::KovenaSDK::instance(), "one shared KovenaSDK instance");

    const kovena::JsonValue reply = kovena::JsonValue::parse(kReply);
    check(reply.contains("data"), "the canned reply parses");
    const auto record = kovena::TransactionStatus::fromDictionary(&reply);
    // Compared as unordered objects: the record writes its fields in its own order.
    check(nlohmann::json::parse(record->dictionaryRepresentation().dump()) == nlohmann::json::parse(kReply),
        "TransactionStatus writes back what it read");

    CannedBackend backend;
    check(backend.listen(), "canned backend listens on the loopback interface");
    check(kovena::setServerUrl(backend.baseUrl()), "library points at the canned backend");

    QMainWindow window;
    auto *screen = new StoreScreen;
    window.setCentralWidget(screen);
    window.resize(400, 700);
    window.show();

    kovena::KovenaSDK::instance().kovenaStatusInit(
        screen, QStringLiteral("42"), QStringLiteral("ORD-1"), QStringLiteral("example-token"));
    QTimer::singleShot(20000, &app, [] {
        std::printf("FAIL: no report within 20 s\n");
        QCoreApplication::exit(1);
    });
    if (app.exec() != 0)
        return 1;

    check(screen->calls == 1, "the merchant is called once");
    const auto data = screen->received ? screen->received->data : nullptr;
    check(data && data->paymentStatus == 1, "the report carries the backend's payment status");
    check(data && data->description == QStringLiteral("Success"), "the report says \"Success\"");
    check(QFontDatabase::families().contains(QStringLiteral("Montserrat")),
        "the library's font came with the package");
    const QByteArray request = backend.lastRequest();
    check(
        request.startsWith("POST /KoVena/v1/sdk/txn/1/false/2 "), "the enquiry went to the status endpoint");
    check(request.contains("Bearer example-token"), "the enquiry carried the merchant's token");

    std::printf("merchant example: %s\n", failures == 0 ? "all checks passed" : "checks failed");
    return failures == 0 ? 0 : 1;
}
