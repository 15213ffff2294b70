#include "RawConnection.h"
#include "SandboxClient.h"

#include "sandbox/RecordingServer.h"
#include "sandbox/WireText.h"

#include <netinet/tcp.h>

#include <cstdio>
#include <fstream>
#include <thread>

namespace kovena::sandbox::test {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

using RecordingTest = SandboxTest;

TEST_F(RecordingTest, HeadersKeepArrivalOrderSpellingAndDuplicates)
{
    const std::string body = R"({"kovenaRefNumber":"42"})";
    const std::vector<std::pair<std::string, std::string>> headers = {
        { "Host", "127.0.0.1" },
        { "x-Zeta", "last-alphabetically" },
        { "AUTHORIZATION", "Bearer abc" },
        { "X-Dup", "one" },
        { "Content-Type", "application/json;charset=UTF-8" },
        { "x-dup", "two" },
        { "Content-Length", std::to_string(body.size()) },
        { "Connection", "close" },
    };
    std::string request = "POST /KoVena/v1/sdk/txn/1/false/2 HTTP/1.1\r\n";
    for (const auto &[name, value] : headers) // padding around a value is not part of it
        request += name + (name == "AUTHORIZATION" ? ":   " + value + "  " : ": " + value) + "\r\n";
    RawConnection connection(sandbox.port());
    ASSERT_TRUE(connection.send(request + "\r\n" + body));
    bool closed = false;
    EXPECT_NE(connection.readToEnd(closed).find("200TRANSRESPSUCC"), std::string::npos);

    ASSERT_EQ(sandbox.requests().size(), 1u);
    const RecordedRequest recorded = sandbox.requests().front();
    EXPECT_EQ(recorded.method, "POST");
    EXPECT_EQ(recorded.path, "/KoVena/v1/sdk/txn/1/false/2");
    EXPECT_EQ(recorded.body, body);
    EXPECT_EQ(recorded.headers, headers);
    EXPECT_EQ(recorded.header("Authorization"), "Bearer abc");
    EXPECT_EQ(recorded.header("content-type"), "application/json;charset=UTF-8");
    EXPECT_EQ(recorded.header("X-DUP"), "one");
    EXPECT_EQ(recorded.headerCount("x-dup"), 2);
    EXPECT_EQ(recorded.headerCount("authorization"), 1);
    EXPECT_EQ(recorded.header("Accept"), "");
    EXPECT_EQ(recorded.headerCount("Accept"), 0);
}

TEST_F(RecordingTest, EveryRequestIsRecordedOnAKeptAliveConnectionAndCanBeWaitedFor)
{
    EXPECT_FALSE(sandbox.waitForRequests(1, 20ms));
    httplib::Client client("127.0.0.1", sandbox.port());
    client.set_keep_alive(true);
    std::thread first([&] {
        EXPECT_TRUE(client.Post(
            "/KoVena/v1/sdk/txn/1/false/2", { { "Authorization", "Bearer t" } }, "{}", "application/json"));
    });
    EXPECT_TRUE(sandbox.waitForRequests(1, 10s));
    first.join();
    ASSERT_TRUE(client.Get("/KoVena/bank/page?x=1"));
    ASSERT_TRUE(client.Post("/favicon", "not json", "text/plain"));
    ASSERT_TRUE(client.Post("/KoVena/v1/sdk/payForService", "{\"serviceType\":\"0\"}", "application/json"));

    auto requests = sandbox.requests();
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[0].header("Authorization"), "Bearer t");
    EXPECT_EQ(requests[1].method, "GET");
    EXPECT_EQ(requests[1].path, "/KoVena/bank/page");
    EXPECT_EQ(requests[2].path, "/favicon");
    EXPECT_EQ(requests[2].body, "not json");
    EXPECT_EQ(requests[3].body, "{\"serviceType\":\"0\"}");
}

TEST_F(RecordingTest, RecordFileHoldsOneJsonObjectPerRequestWithCardDataMasked)
{
    std::string path = ::testing::TempDir() + "sandbox-record-" + std::to_string(::getpid()) + ".jsonl";
    std::remove(path.c_str());
    sandbox.setRecordFile(path);

    const json card = { { "serviceType", "28" }, { "cvv", "123" },
        { "bankAccount", { { "cardNumber", "4111111111111111" }, { "cardName", "A B" } } } };
    post(kPay, card.dump());
    post(kStatus, "not json at all");
    post(kStatus, "{\"kovenaRefNumber\":\"42\"}", "Bearer x");
    sandbox.setRecordFile("");
    post(kStatus, "after the file was closed");

    std::ifstream file(path);
    std::vector<json> lines;
    for (std::string line; std::getline(file, line);) {
        json parsed = json::parse(line, nullptr, false);
        ASSERT_FALSE(parsed.is_discarded()) << line;
        lines.push_back(parsed);
    }
    std::remove(path.c_str());
    ASSERT_EQ(lines.size(), 3u);
    for (const json &line : lines) {
        EXPECT_EQ(line["method"], "POST");
        EXPECT_TRUE(line["headers"].is_array());
        EXPECT_TRUE(line["time"].is_string());
    }
    EXPECT_EQ(lines[0]["path"], "/KoVena/v1/sdk/payForService");
    // What the masking does to a body is tested below; here, that the file holds the masked body.
    const std::string maskedBody = lines[0]["body"];
    EXPECT_EQ(json::parse(maskedBody), json::parse(wire::maskCardData(card.dump())));
    EXPECT_EQ(lines[1]["body"], "not json at all");
    const auto recordedHeaders = sandbox.requests()[2].headers;
    ASSERT_EQ(lines[2]["headers"].size(), recordedHeaders.size());
    for (size_t i = 0; i < recordedHeaders.size(); ++i)
        EXPECT_EQ(
            lines[2]["headers"][i], json::array({ recordedHeaders[i].first, recordedHeaders[i].second }));
    EXPECT_EQ(sandbox.requests()[2].header("Authorization"), "Bearer x");

    // Tests still see exactly what was sent.
    EXPECT_EQ(sandbox.requests().front().body, card.dump());
}

TEST(CardDataMasking, HidesEveryCardNumberAndCvvOfAnyBody)
{
    struct Row
    {
        const char *what;
        std::string body;
        std::string masked;
    };
    const Row rows[] = {
        { "numbers as JSON numbers",
            R"({"bankAccount":{"cardNumber":4111111111111111,"cardName":"A B"},"cvv":123})",
            R"({"bankAccount":{"cardNumber":"************1111","cardName":"A B"},"cvv":"***"})" },
        { "inside an array", R"({"cards":[{"cardNumber":"5555555555554444","cvv":"1234"}]})",
            R"({"cards":[{"cardNumber":"************4444","cvv":"***"}]})" },
        { "body cut after the number", R"({"cvv":"123","bankAccount":{"cardNumber":"4111111111111111","card)",
            R"({"cvv":"***","bankAccount":{"cardNumber":"************1111","card)" },
        { "body cut inside the CVV", R"({"bankAccount":{}, "cvv" : "12)",
            R"({"bankAccount":{}, "cvv" : "***")" },
        { "form fields", "cardNumber=4111111111111111&cvv=123&x=1",
            "cardNumber=************1111&cvv=***&x=1" },
        { "no card data", R"({"kovenaRefNumber":"42"})", R"({"kovenaRefNumber":"42"})" },
        { "bank page form", "kovenaTransactionId=1700000000001&amount=10.50&device_type=0",
            "kovenaTransactionId=1700000000001&amount=10.50&device_type=0" },
        { "not JSON", "not json", "not json" },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        const std::string masked = wire::maskCardData(row.body);
        json parsed = json::parse(masked, nullptr, false);
        if (parsed.is_discarded())
            EXPECT_EQ(masked, row.masked);
        else
            EXPECT_EQ(parsed, json::parse(row.masked));
        for (const char *secret : { "4111111111111111", "5555555555554444", "\"123\"", "cvv=123" })
            EXPECT_EQ(masked.find(secret), std::string::npos) << secret;
    }
}

TEST(RecordingServer, EveryAcceptedConnectionHasNagleOff)
{
    RecordingServer server;
    server.Get("/nodelay", [](const httplib::Request &, httplib::Response &response) {
        int value = -1;
        socklen_t length = sizeof(value);
        const int socket = RecordingServer::currentSocket();
        if (socket < 0 || ::getsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &value, &length) != 0)
            value = -1;
        response.set_content(std::to_string(value), "text/plain");
    });
    const int port = server.bind_to_any_port("127.0.0.1");
    ASSERT_GT(port, 0);
    std::thread loop([&] { server.listen_after_bind(); });
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!server.is_running() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();

    // Two requests on one kept-alive connection, then one on a second connection.
    httplib::Client keptAlive("127.0.0.1", port);
    keptAlive.set_keep_alive(true);
    httplib::Client other("127.0.0.1", port);
    for (httplib::Client *client : { &keptAlive, &keptAlive, &other }) {
        auto result = client->Get("/nodelay");
        EXPECT_TRUE(result);
        EXPECT_GT(result ? std::stoi(result->body) : -1, 0);
    }
    EXPECT_EQ(RecordingServer::currentSocket(), -1);
    server.stop();
    loop.join();
}

TEST(SandboxLifecycle, StartsStopsAndRestarts)
{
    Sandbox sandbox;
    int port = sandbox.start();
    ASSERT_GT(port, 0);
    EXPECT_EQ(sandbox.start(), port);

    Sandbox rival;
    EXPECT_EQ(rival.start(port), 0);

    sandbox.stop();
    EXPECT_EQ(sandbox.port(), 0);
    EXPECT_FALSE(
        httplib::Client("127.0.0.1", port).Post("/KoVena/v1/sdk/txn/1/false/2", "{}", "application/json"));

    ASSERT_GT(sandbox.start(), 0);
    httplib::Client client("127.0.0.1", sandbox.port());
    EXPECT_TRUE(client.Post("/KoVena/v1/sdk/txn/1/false/2", "{}", "application/json"));
    sandbox.stop();
    sandbox.stop();
}

} // namespace
} // namespace kovena::sandbox::test
