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

// Starts the program with `args` and returns the port its first line announces for `scheme`,
// or 0 when the line is not that announcement.
int startProgram(QProcess &process, const QStringList &args, const std::string &scheme)
{
    process.start(kProgram, QStringList { QStringLiteral("--port"), QStringLiteral("0") } + args);
    EXPECT_TRUE(process.waitForStarted());
    while (!process.canReadLine() && process.waitForReadyRead(10000)) { }
    const std::string line = process.readLine().toStdString();
    std::smatch match;
    const std::regex announcement(
        "kovena-sandbox listening on " + scheme + R"(://127\.0\.0\.1:(\d+)/KoVena/\n)");
    EXPECT_TRUE(std::regex_match(line, match, announcement)) << line;
    return match.empty() ? 0 : std::stoi(match[1]);
}

// Posts the status of stored transaction `id` with `client` and returns its paymentStatus.
template<typename Client> nlohmann::json paymentStatusOf(Client &client, const std::string &id)
{
    auto reply = client.Post("/KoVena/v1/sdk/txn/1/false/2", { { "Authorization", "Bearer t" } },
        R"({"kovenaRefNumber":")" + id + R"(","transactionRefNumber":"","txnOtp":""})",
        "application/json;charset=UTF-8");
    EXPECT_TRUE(reply) << httplib::to_string(reply.error());
    return reply ? nlohmann::json::parse(reply->body)["data"]["paymentStatus"] : nlohmann::json();
}

// Stops the program with `signal` and expects a clean exit.
void stopProgram(QProcess &process, int signal)
{
    ::kill(static_cast<pid_t>(process.processId()), signal);
    ASSERT_TRUE(process.waitForFinished(10000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
}

TEST(SandboxProgram, ServesOnAFreePortRecordsAndStopsOnSignal)
{
    for (int signal : { SIGTERM, SIGINT }) {
        const std::string record
            = ::testing::TempDir() + "sandbox-program-" + std::to_string(::getpid()) + ".jsonl";
        std::remove(record.c_str());
        QProcess process;
        const int port
            = startProgram(process, { QStringLiteral("--record"), QString::fromStdString(record) }, "http");
        ASSERT_GT(port, 0);
        httplib::Client client("127.0.0.1", port);
        EXPECT_EQ(paymentStatusOf(client, "42"), 1);
        stopProgram(process, signal);

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
    const int port = startProgram(
        process, { QStringLiteral("--https"), QString::fromStdString(certificateFile) }, "https");
    ASSERT_GT(port, 0);

    std::ifstream file(certificateFile);
    const std::string pem((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::remove(certificateFile.c_str());
    EXPECT_EQ(pem.find("PRIVATE KEY"), std::string::npos) << "the key stays in the process";

    httplib::SSLClient client("127.0.0.1", port);
    client.set_ca_cert_store(storeTrusting(pem));
    client.enable_server_certificate_verification(true);
    EXPECT_EQ(paymentStatusOf(client, "43"), 2);
    stopProgram(process, SIGTERM);
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
