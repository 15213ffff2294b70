#include "BareClient.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

namespace kovena::bench {

BareClient::BareClient()
{
    m_context = new QObject;
    m_context->moveToThread(&m_thread);
    m_thread.start();
    QMetaObject::invokeMethod(
        m_context, [this] { m_manager = new QNetworkAccessManager(m_context); },
        Qt::BlockingQueuedConnection);
}

BareClient::~BareClient()
{
    QMetaObject::invokeMethod(
        m_context,
        [this] {
            delete m_context;
            QThread::currentThread()->quit();
        },
        Qt::BlockingQueuedConnection);
    m_thread.wait();
}

void BareClient::run(std::function<void()> block)
{
    QMetaObject::invokeMethod(m_context, std::move(block), Qt::QueuedConnection);
}

void BareClient::post(
    const QNetworkRequest &request, const QByteArray &body, std::function<void(QByteArray)> finished)
{
    QNetworkReply *reply = m_manager->post(request, body);
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, finished = std::move(finished)] {
        reply->deleteLater();
        finished(reply->readAll());
    });
}

} // namespace kovena::bench
