#include "sandbox/Sandbox.h"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <regex>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace kovena::sandbox::test {
namespace {

// The sandbox program, run as a separate process with its output on a pipe.
class SandboxProcess
{
public:
    explicit SandboxProcess(std::vector<std::string> args)
    {
        args.insert(args.begin(), KOVENA_SANDBOX_EXE);
        std::vector<char *> argv;
        for (auto &arg : args)
            argv.push_back(arg.data());
        argv.push_back(nullptr);
        int fds[2];
        if (::pipe(fds) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        if (posix_spawn(&m_pid, argv[0], &actions, nullptr, argv.data(), environ) != 0)
            m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
        ::close(fds[1]);
        m_out = ::fdopen(fds[0], "r");
    }
    ~SandboxProcess()
    {
        if (m_pid > 0 && !m_reaped) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        if (m_out)
            ::fclose(m_out);
    }

    std::string readLine()
    {
        char line[512] = {};
        return m_out && std::fgets(line, sizeof(line), m_out) ? std::string(line) : std::string();
    }

    // Sends the signal and returns the exit status, or -1 when the process did not exit normally.
    int stopWith(int signal)
    {
        ::kill(m_pid, signal);
        return waitForExit();
    }

    int waitForExit()
    {
        int status = 0;
        ::waitpid(m_pid, &status, 0);
        m_reaped = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    bool started() const { return m_pid > 0; }

private:
    pid_t m_pid = -1;
    bool m_reaped = false;
    FILE *m_out = nullptr;
};

TEST(SandboxProgram, ServesOnAFreePortRecordsAndStopsOnSignal)
{
    for (int signal : { SIGTERM, SIGINT }) {
        std::string record
            = ::testing::TempDir() + "sandbox-program-" + std::to_string(::getpid()) + ".jsonl";
        std::remove(record.c_str());
        SandboxProcess process({ "--port", "0", "--record", record });
        ASSERT_TRUE(process.started());

        std::string line = process.readLine();
        std::smatch match;
        ASSERT_TRUE(std::regex_match(
            line, match, std::regex(R"(kovena-sandbox listening on http://127\.0\.0\.1:(\d+)/KoVena/\n)")))
            << line;
        int port = std::stoi(match[1]);
        ASSERT_GT(port, 0);

        httplib::Client client("127.0.0.1", port);
        auto reply = client.Post("/KoVena/v1/sdk/txn/1/false/2", { { "Authorization", "Bearer t" } },
            R"({"kovenaRefNumber":"42","transactionRefNumber":"","txnOtp":""})",
            "application/json;charset=UTF-8");
        ASSERT_TRUE(reply);
        EXPECT_EQ(nlohmann::json::parse(reply->body)["data"]["paymentStatus"], 1);

        EXPECT_EQ(process.stopWith(signal), 0);
        std::ifstream file(record);
        std::string recorded;
        ASSERT_TRUE(std::getline(file, recorded));
        EXPECT_EQ(nlohmann::json::parse(recorded)["path"], "/KoVena/v1/sdk/txn/1/false/2");
        std::remove(record.c_str());
    }
}

TEST(SandboxProgram, RejectsBadArguments)
{
    const std::vector<std::vector<std::string>> rows
        = { { "--port", "abc" }, { "--port", "70000" }, { "--port" }, { "--colour" } };
    for (const auto &args : rows) {
        SandboxProcess process(args);
        ASSERT_TRUE(process.started());
        EXPECT_EQ(process.waitForExit(), 2) << args.front();
    }
}

} // namespace
} // namespace kovena::sandbox::test
