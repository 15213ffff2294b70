// From the last byte of a status reply on loopback to the merchant's onTransactionComplete,
// through kovenaStatusInit. The baseline is a bare QNetworkAccessManager on a thread of its own
// whose reply is read and handed to the main thread the same way, so the difference is what
// the library adds beyond the two hops it must make.
#include "BareClient.h"
#include "Figures.h"
#include "LoopbackServer.h"
#include "MerchantScreen.h"
#include "RecordFixtures.h"

#include "api/ApiManager.h"
#include "sdk/KovenaSDK.h"

#include <QCoreApplication>
#include <QUrl>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace kovena::bench {

namespace {

// The body and the two headers the library sent in its latest request.
struct SentRequest
{
    QByteArray body;
    QByteArray contentType;
    QByteArray authorization;
};

SentRequest parseRequest(const std::string &raw)
{
    SentRequest sent;
    const std::size_t end = raw.find("\r\n\r\n");
    sent.body = QByteArray::fromStdString(raw.substr(end + 4));
    for (const QByteArray &line : QByteArray::fromStdString(raw.substr(0, end)).split('\n')) {
        const qsizetype colon = line.indexOf(':');
        const QByteArray name = line.left(colon).trimmed().toLower();
        if (name == "content-type")
            sent.contentType = line.mid(colon + 1).trimmed();
        else if (name == "authorization")
            sent.authorization = line.mid(colon + 1).trimmed();
    }
    return sent;
}

int replyFigure(const Options &options)
{
    // A backend across a network answers after the status screen has been drawn; on loopback
    // without a delay the reply would land while the main thread still paints it, and the
    // figure would time that paint rather than the reply's path.
    LoopbackServer server(fixtures::fullStatusReply().dump(), std::chrono::milliseconds(30));
    const QString base = u"http://127.0.0.1:%1/KoVena/"_s.arg(server.port());
    if (!ApiManager::setServerUrl(base))
        return 1;
    MerchantWindow host;
    BareClient bare;

    const auto settle = [] { waitUntil([] { return false; }, 20); };
    const auto replyLatency = [&server](int expectedReplies, Clock::time_point reachedMain) {
        if (!waitUntil([&] { return server.replies() >= expectedReplies; }))
            qFatal("the loopback server never answered");
        return secondsBetween(server.lastReplyByte(), reachedMain);
    };

    const auto ours = [&] {
        const int before = host.merchant->reports;
        const int expected = server.replies() + 1;
        KovenaSDK::instance().kovenaStatusInit(host.merchant, u"42"_s, u"ORD-1"_s, u"bench-token"_s);
        if (!waitUntil([&] { return host.merchant->reports > before; }) || host.merchant->lastStatus != 1)
            qFatal("the status enquiry did not reach the merchant");
        return replyLatency(expected, host.merchant->lastAt);
    };

    ours(); // also fixes the request the baseline repeats
    const SentRequest sent = parseRequest(server.lastRequest());
    QNetworkRequest request(QUrl(base + u"v1/sdk/txn/1/false/2"_s));
    request.setRawHeader("Content-Type", sent.contentType);
    request.setRawHeader("Authorization", sent.authorization);

    Clock::time_point bareAt;
    int bareReports = 0;
    const auto baseline = [&] {
        const int before = bareReports;
        const int expected = server.replies() + 1;
        bare.run([&] {
            bare.post(request, sent.body, [&](QByteArray reply) {
                if (reply.isEmpty())
                    qFatal("the baseline request failed");
                QMetaObject::invokeMethod(
                    qApp,
                    [&] {
                        bareAt = Clock::now();
                        ++bareReports;
                    },
                    Qt::QueuedConnection);
            });
        });
        if (!waitUntil([&] { return bareReports > before; }))
            qFatal("the baseline request did not come back");
        return replyLatency(expected, bareAt);
    };

    const int samples = options.quick ? 10 : 150;
    for (int i = 0; i < 5; ++i) {
        settle();
        ours();
        settle();
        baseline();
    }
    std::vector<double> ourLatency, bareLatency;
    for (int i = 0; i < samples; ++i) {
        // Alternate which goes first, so that neither always follows the other's leftovers.
        settle();
        if (i % 2) {
            ourLatency.push_back(ours());
            settle();
            bareLatency.push_back(baseline());
        } else {
            bareLatency.push_back(baseline());
            settle();
            ourLatency.push_back(ours());
        }
    }
    const double measured = median(ourLatency);
    const double reference = median(bareLatency);
    const double overhead = measured - reference;
    printRow({ u"reply to merchant: beyond the hops"_s, micros(measured), micros(reference),
                 u"+"_s + micros(overhead), u"< 200 us more"_s, overhead < 200e-6 },
        options);
    return 0;
}

[[maybe_unused]] const bool registered = registerFigure("reply", replyFigure);

} // namespace

} // namespace kovena::bench
