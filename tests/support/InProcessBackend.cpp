#include "support/InProcessBackend.h"

#include "api/ApiManager.h"
#include "api/Callbacks.h"
#include "platform/UserDefaults.h"
#include "support/Scoped.h"

#include <QTest>

#include <gtest/gtest.h>

#include <atomic>

using namespace Qt::StringLiterals;

namespace kovena::testing {

sandbox::Sandbox &inProcessBackend()
{
    static sandbox::Sandbox backend;
    static const bool started = backend.start() != 0;
    // Held for the whole process: the client keeps the URL of its first request anyway.
    static const ScopedServerUrl pointed(QString::fromStdString(backend.baseUrl()));
    EXPECT_TRUE(started && pointed.accepted()) << "the sandbox did not start or the client refused it";
    return backend;
}

void resetBackendForCheckout(const QString &accessToken)
{
    sandbox::Sandbox &backend = inProcessBackend();
    backend.clearRequests();
    backend.clearScriptedReplies();
    UserDefaults &defaults = UserDefaults::standard();
    defaults.clear();
    defaults.setString(u"accessToken"_s, accessToken);
    defaults.setString(u"customerMobNum"_s, u"9876543210"_s);
    defaults.setString(u"customerEmail"_s, u"buyer@example.in"_s);
    defaults.setString(u"requestId"_s, u"REQ-1"_s);
    defaults.setBool(u"retry"_s, false);
}

std::vector<nlohmann::json> bodiesSentTo(const std::string &endpoint)
{
    std::vector<nlohmann::json> out;
    for (const auto &request : inProcessBackend().requests()) {
        if (request.path != "/KoVena/" + endpoint)
            continue;
        nlohmann::json body = nlohmann::json::parse(request.body, nullptr, false);
        if (body.is_object() && body.value("kovenaRefNumber", "") == kRoundTripId)
            continue;
        out.push_back(std::move(body));
    }
    return out;
}

bool roundTrip()
{
    class Arrival final : public TransactionStatusCallback
    {
    public:
        explicit Arrival(std::shared_ptr<std::atomic<bool>> arrived)
            : m_arrived(std::move(arrived))
        { }
        void getTransactionStatus(std::shared_ptr<TransactionStatus>) override { *m_arrived = true; }

    private:
        std::shared_ptr<std::atomic<bool>> m_arrived;
    };
    inProcessBackend();
    auto arrived = std::make_shared<std::atomic<bool>>(false);
    ApiManager::getTransactionStatus(
        std::make_shared<Arrival>(arrived), QString::fromLatin1(kRoundTripId), QString());
    return QTest::qWaitFor([&] { return arrived->load(); }, kWaitMs);
}

} // namespace kovena::testing
