#pragma once

#include "sandbox/Sandbox.h"

#include <httplib.h>
#include <nlohmann/json.hpp>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <gtest/gtest.h>

#include <ctime>

namespace kovena::sandbox::test {

// A certificate store holding only `certificatePem`, for an HTTPS client to trust; the client
// it is given to takes ownership.
inline X509_STORE *storeTrusting(const std::string &certificatePem)
{
    BIO *bio = BIO_new_mem_buf(certificatePem.data(), static_cast<int>(certificatePem.size()));
    X509 *certificate = PEM_read_bio_X509(bio, nullptr, nullptr, nullptr);
    BIO_free(bio);
    X509_STORE *store = X509_STORE_new();
    EXPECT_TRUE(certificate && X509_STORE_add_cert(store, certificate) == 1);
    X509_free(certificate);
    return store;
}

// The local year and month, as the sandbox judges a card's expiry.
inline std::pair<int, int> currentMonth()
{
    std::time_t t = std::time(nullptr);
    std::tm now {};
    localtime_r(&t, &now);
    return { now.tm_year + 1900, now.tm_mon + 1 };
}

// A started sandbox and a plain HTTP client that speaks to it as the library would.
class SandboxTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_GT(sandbox.start(), 0); }

    httplib::Result post(const std::string &endpoint, const std::string &body,
        const std::string &authorization = "Bearer test-token")
    {
        httplib::Client client("127.0.0.1", sandbox.port());
        client.set_read_timeout(10, 0);
        httplib::Headers headers;
        if (!authorization.empty())
            headers.emplace("Authorization", authorization);
        return client.Post(("/KoVena/" + endpoint).c_str(), headers, body, "application/json;charset=UTF-8");
    }

    // The reply of a request that must succeed at the transport level, as JSON.
    nlohmann::json call(const std::string &endpoint, const nlohmann::json &body,
        const std::string &authorization = "Bearer test-token")
    {
        auto result = post(endpoint, body.dump(), authorization);
        EXPECT_TRUE(result) << httplib::to_string(result.error());
        if (!result)
            return nullptr;
        EXPECT_EQ(result->status, 200);
        return nlohmann::json::parse(result->body, nullptr, false);
    }

    nlohmann::json status(const std::string &id, const std::string &reference)
    {
        return call(
            kStatus, { { "kovenaRefNumber", id }, { "transactionRefNumber", reference }, { "txnOtp", "" } });
    }

    // A UPI registration as the UPI screen sends it.
    static nlohmann::json registerUpiBody(const std::string &reference, const std::string &amount = "10.50")
    {
        return { { "requestedAmount", amount }, { "merchantTransactionRefNumber", reference },
            { "serviceType", "0" }, { "collectorId", "COL-7" }, { "retry", false }, { "requestId", "REQ-1" },
            { "customerMobNum", "9999999999" }, { "customerEmail", "a@b.in" } };
    }

    nlohmann::json registerUpi(const std::string &reference, const std::string &amount = "10.50")
    {
        return call(kPay, registerUpiBody(reference, amount));
    }

    nlohmann::json sendCollect(const std::string &id, const std::string &vpa)
    {
        return call(kCollect,
            { { "virtualAddress", vpa }, { "requestedAmount", "10.50" }, { "kovenaRefNumber", id },
                { "collectorId", "COL-7" }, { "customerMobNum", "9999999999" },
                { "customerEmail", "a@b.in" } });
    }

    // A card registration as the card screen sends it; the card expires next year.
    static nlohmann::json cardBody(const std::string &reference = "ORD-C")
    {
        return { { "cvv", "123" }, { "collectorId", "COL-7" }, { "requestedAmount", "10.50" },
            { "merchantTransactionRefNumber", reference }, { "customerMobNum", "9999999999" },
            { "customerEmail", "a@b.in" }, { "serviceType", "28" }, { "requestId", "REQ-1" },
            { "retry", false },
            { "bankAccount",
                { { "cardNumber", "4111111111111111" }, { "cardName", "Asha Rao" },
                    { "cardExpiryMonth", "12" },
                    { "cardExpiryYear", std::to_string(currentMonth().first + 1) } } } };
    }

    static nlohmann::json netBankingBody(
        const std::string &netbankingId, const std::string &reference = "ORD-N")
    {
        return { { "serviceType", "28" }, { "netbankingId", netbankingId }, { "requestedAmount", "10.50" },
            { "merchantTransactionRefNumber", reference }, { "collectorId", "COL-7" },
            { "requestId", "REQ-1" }, { "customerMobNum", "9999999999" }, { "retry", false },
            { "customerEmail", "a@b.in" } };
    }

    // A form post to one of the bank's pages, e.g. "/bank/pay".
    httplib::Result postForm(const std::string &path, const std::string &body,
        const std::string &contentType = "application/x-www-form-urlencoded")
    {
        httplib::Client client("127.0.0.1", sandbox.port());
        client.set_read_timeout(10, 0);
        return client.Post(path.c_str(), body, contentType.c_str());
    }

    static constexpr const char *kStatus = "v1/sdk/txn/1/false/2";
    static constexpr const char *kPay = "v1/sdk/payForService";
    static constexpr const char *kCollect = "v1/sdk/sendCollectOrSMS";
    static constexpr const char *kBankList = "v1/netbanking/listofbanks";

    Sandbox sandbox;
};

} // namespace kovena::sandbox::test
