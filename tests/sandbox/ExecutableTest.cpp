// The sandbox program, run as a separate process.
#include "SandboxClient.h"

#include <QProcess>
#include <QStringList>

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <unistd.h>

namespace kovena::sandbox::test {
namespace {

const QString kProgram = QStringLiteral(KOVENA_SANDBOX_EXE);

TEST(SandboxProgram, ServesOnAFreePortRecordsAndStopsOnSignal)
{
    for (int signal : { SIGTERM, SIGINT }) {
        const std::string record
            = ::testing::TempDir() + "sandbox-program-" + std::to_string(::getpid()) + ".jsonl";
        std::remove(record.c_str());
        QProcess process;
        process.start(kProgram,
            { QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--record"),
                QString::fromStdString(record) });
        ASSERT_TRUE(process.waitForStarted());
        while (!process.canReadLine() && process.waitForReadyRead(10000)) { }

        const std::string line = process.readLine().toStdString();
        std::smatch match;
        ASSERT_TRUE(std::regex_match(
            line, match, std::regex(R"(kovena-sandbox listening on http://127\.0\.0\.1:(\d+)/KoVena/\n)")))
            << line;
        const int port = std::stoi(match[1]);
        ASSERT_GT(port, 0);

        httplib::Client client("127.0.0.1", port);
        auto reply = client.Post("/KoVena/v1/sdk/txn/1/false/2", { { "Authorization", "Bearer t" } },
            R"({"kovenaRefNumber":"42","transactionRefNumber":"","txnOtp":""})",
            "application/json;charset=UTF-8");
        ASSERT_TRUE(reply);
        EXPECT_EQ(nlohmann::json::parse(reply->body)["data"]["paymentStatus"], 1);

        ::kill(static_cast<pid_t>(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(10000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0);
        std::ifstream file(record);
        std::string recorded;
        ASSERT_TRUE(std::getline(file, recorded));
        EXPECT_EQ(nlohmann::json::parse(recorded)["path"], "/KoVena/v1/sdk/txn/1/false/2");
        std::remove(record.c_str());
    }
}

TEST(SandboxProgram, ServesHttpsWithTheCertificateItWritesOut)
{
    const std::string certificateFile
        = ::testing::TempDir() + "sandbox-certificate-" + std::to_string(::getpid()) + ".pem";
    QProcess process;
    process.start(kProgram,
        { QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--https"),
            QString::fromStdString(certificateFile) });
    ASSERT_TRUE(process.waitForStarted());
    while (!process.canReadLine() && process.waitForReadyRead(10000)) { }
    const std::string line = process.readLine().toStdString();
    std::smatch match;
    ASSERT_TRUE(std::regex_match(
        line, match, std::regex(R"(kovena-sandbox listening on https://127\.0\.0\.1:(\d+)/KoVena/\n)")))
        << line;

    std::ifstream file(certificateFile);
    const std::string pem((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::remove(certificateFile.c_str());
    EXPECT_EQ(pem.rfind("-----BEGIN CERTIFICATE-----", 0), 0u);
    EXPECT_EQ(pem.find("PRIVATE KEY"), std::string::npos) << "the key stays in the process";

    httplib::SSLClient client("127.0.0.1", std::stoi(match[1]));
    client.set_ca_cert_store(storeTrusting(pem));
    client.enable_server_certificate_verification(true);
    auto reply = client.Post("/KoVena/v1/sdk/txn/1/false/2", { { "Authorization", "Bearer t" } },
        R"({"kovenaRefNumber":"43","transactionRefNumber":"","txnOtp":""})",
        "application/json;charset=UTF-8");
    ASSERT_TRUE(reply) << httplib::to_string(reply.error());
    EXPECT_EQ(nlohmann::json::parse(reply->body)["data"]["paymentStatus"], 2);

    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished(10000));
    EXPECT_EQ(process.exitCode(), 0);
}

TEST(SandboxProgram, RejectsBadArguments)
{
    for (const char *args : { "--port abc", "--port 70000", "--port", "--colour", "--https" }) {
        QProcess process;
        process.start(kProgram, QString::fromLatin1(args).split(QLatin1Char(' ')));
        ASSERT_TRUE(process.waitForFinished(10000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << args;
        EXPECT_EQ(process.exitCode(), 2) << args;
    }
}

} // namespace
} // namespace kovena::sandbox::test
