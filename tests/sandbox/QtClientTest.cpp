// The library talks HTTP through Qt; these cases pin how Qt's stack sees the sandbox's
// connection failures, including its one automatic re-send.
#include "sandbox/Sandbox.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <gtest/gtest.h>

namespace kovena::sandbox::test {
namespace {

using namespace std::chrono_literals;

QNetworkReply::NetworkError postStatus(
    QNetworkAccessManager &manager, const Sandbox &sandbox, QByteArray &body)
{
    QNetworkRequest request(QUrl(QString::fromStdString(sandbox.baseUrl() + "v1/sdk/txn/1/false/2")));
    request.setRawHeader("Content-Type", "application/json;charset=UTF-8");
    request.setRawHeader("Authorization", "Bearer t");
    QNetworkReply *reply = manager.post(request, QByteArrayLiteral("{\"kovenaRefNumber\":\"42\"}"));
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_TRUE(reply->isFinished());
    body = reply->readAll();
    auto error = reply->error();
    delete reply;
    return error;
}

TEST(QtClient, SeesConnectionFailuresAsTransportErrors)
{
    struct Row
    {
        const char *what;
        std::vector<ScriptedReply> scripts;
        bool fails;
        std::size_t requests;
    };
    ScriptedReply drop;
    drop.dropConnection = true;
    ScriptedReply cut;
    cut.truncateAfterHeaders = true;
    const Row rows[] = {
        { "one drop is hidden by the re-send", { drop }, false, 2 },
        { "two drops", { drop, drop }, true, 2 },
        { "truncated reply", { cut }, true, 1 },
        { "nothing scripted", {}, false, 1 },
    };
    for (bool warmConnection : { false, true }) {
        for (const Row &row : rows) {
            SCOPED_TRACE(std::string(row.what) + (warmConnection ? ", kept-alive connection" : ""));
            Sandbox sandbox;
            ASSERT_GT(sandbox.start(), 0);
            QNetworkAccessManager manager;
            QByteArray body;
            if (warmConnection) {
                ASSERT_EQ(postStatus(manager, sandbox, body), QNetworkReply::NoError);
                sandbox.clearRequests();
            }
            for (const ScriptedReply &script : row.scripts)
                sandbox.enqueueReply("v1/sdk/txn/1/false/2", script);

            QNetworkReply::NetworkError error = postStatus(manager, sandbox, body);
            if (row.fails) {
                EXPECT_EQ(error, QNetworkReply::RemoteHostClosedError);
                EXPECT_TRUE(body.isEmpty());
            } else {
                EXPECT_EQ(error, QNetworkReply::NoError);
                EXPECT_TRUE(body.contains("200TRANSRESPSUCC"));
            }
            EXPECT_EQ(sandbox.requests().size(), row.requests);
        }
    }
}

} // namespace
} // namespace kovena::sandbox::test
