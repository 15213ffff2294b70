// The sandbox over HTTPS, seen by an OpenSSL client that trusts its certificate. That an untrusting
// client sends nothing, and that every request type goes through once trusted, is in the
// client's TLS suite.
#include "SandboxClient.h"

#include "sandbox/TlsIdentity.h"

namespace kovena::sandbox::test {
namespace {

using nlohmann::json;

const std::string kStatusBody = R"({"kovenaRefNumber":"42","transactionRefNumber":"","txnOtp":""})";

httplib::Result postStatus(httplib::SSLClient &client, const std::string &token)
{
    client.set_read_timeout(10, 0);
    return client.Post("/KoVena/v1/sdk/txn/1/false/2", { { "Authorization", "Bearer " + token } },
        kStatusBody, "application/json;charset=UTF-8");
}

// The fixture's sandbox, started by each test over HTTPS.
class SandboxHttps : public SandboxTest
{
protected:
    void SetUp() override { }
};

TEST_F(SandboxHttps, ServesTheApiTheBankPageAndFaultsToATrustingClient)
{
    const TlsIdentity identity = TlsIdentity::selfSigned();
    EXPECT_NE(TlsIdentity::selfSigned().certificatePem, identity.certificatePem) << "a new key every time";

    const int port = sandbox.startHttps(identity);
    ASSERT_GT(port, 0);
    httplib::SSLClient trusting("127.0.0.1", port);
    trusting.set_ca_cert_store(storeTrusting(identity.certificatePem));
    trusting.enable_server_certificate_verification(true);
    const auto answer = postStatus(trusting, "t");
    ASSERT_TRUE(answer) << httplib::to_string(answer.error());
    EXPECT_EQ(json::parse(answer->body)["data"]["paymentStatus"], 1);

    // The bank's page is served from the same origin, so its address is https too.
    const auto card = trusting.Post("/KoVena/v1/sdk/payForService", { { "Authorization", "Bearer t" } },
        cardBody().dump(), "application/json");
    ASSERT_TRUE(card);
    EXPECT_EQ(json::parse(card->body)["data"]["paymentData"]["url"],
        "https://127.0.0.1:" + std::to_string(port) + "/bank/pay");

    // Faults are played over TLS as over plain HTTP.
    for (const char *fault : { "fault-reset-before-headers", "fault-reset-after-headers", "fault-cut-body" })
        EXPECT_FALSE(postStatus(trusting, fault)) << fault;
    const auto late500 = postStatus(trusting, "fault-http-500");
    ASSERT_TRUE(late500);
    EXPECT_EQ(late500->status, 500);
}

} // namespace
} // namespace kovena::sandbox::test
