#include "SandboxClient.h"

#include "sandbox/CollectScenario.h"

namespace kovena::sandbox::test {
namespace {

using nlohmann::json;

TEST(CollectScenario, IsChosenByTheTestVpa)
{
    // The plain test VPAs are followed through the backend below.
    const std::pair<std::string, CollectScenario> rows[] = {
        { "success7@kovena", { 7, 1 } },
        { "failure1000@kovena", { 1000, 2 } },
        { "SUCCESS3@KOVENA", { 3, 1 } },
        { "failure1001@kovena", { 2, 1 } },
        { "failure-1@kovena", { 2, 1 } },
        { "failurex@kovena", { 2, 1 } },
        { "failure@okaxis", { 2, 1 } },
        { "pending@kovena.in", { 2, 1 } },
        { "no-at-sign", { 2, 1 } },
    };
    for (const auto &[vpa, expected] : rows) {
        CollectScenario got = CollectScenario::forVpa(vpa);
        EXPECT_EQ(got.pendingAnswers, expected.pendingAnswers) << vpa;
        EXPECT_EQ(got.finalStatus, expected.finalStatus) << vpa;
    }
}

class ScenarioTest : public SandboxTest
{
protected:
    // Polls the way the UPI screen does: first by the merchant reference with an empty id,
    // then by the previous answer's kovenaRefNumber written in decimal.
    std::vector<int> poll(const std::string &reference, std::int64_t id, int answers)
    {
        std::vector<int> statuses;
        std::string nextId;
        for (int i = 0; i < answers; ++i) {
            json reply = status(nextId, reference);
            EXPECT_EQ(reply["responseCode"], "200TRANSRESPSUCC");
            EXPECT_EQ(reply["data"]["kovenaRefNumber"], id);
            statuses.push_back(reply["data"]["paymentStatus"].get<int>());
            nextId = std::to_string(reply["data"]["kovenaRefNumber"].get<std::int64_t>());
        }
        return statuses;
    }
};

TEST_F(ScenarioTest, StatusStaysPendingForTheScenarioThenTurnsFinal)
{
    const std::pair<std::string, std::vector<int>> rows[] = {
        { "success@kovena", { 0, 0, 1, 1 } },
        { "failure@kovena", { 0, 0, 2, 2 } },
        { "success0@kovena", { 1, 1 } },
        { "failure0@kovena", { 2 } },
        { "success1@kovena", { 0, 1 } },
        { "failure3@kovena", { 0, 0, 0, 2, 2 } },
        { "pending@kovena", { 0, 0, 0, 0, 0, 0, 0 } },
        { "someone@okaxis", { 0, 0, 1 } },
    };
    int n = 0;
    for (const auto &[vpa, expected] : rows) {
        SCOPED_TRACE(vpa);
        std::string reference = "SCN-" + std::to_string(++n);
        std::int64_t id = registerUpi(reference)["data"]["kovenaTransactionId"].get<std::int64_t>();
        EXPECT_EQ(sendCollect(std::to_string(id), vpa)["responseCode"], "200MERSUCC");
        EXPECT_EQ(poll(reference, id, static_cast<int>(expected.size())), expected);
    }
}

TEST_F(ScenarioTest, RegisteredTransactionWaitsForItsCollect)
{
    std::int64_t id = registerUpi("WAIT")["data"]["kovenaTransactionId"].get<std::int64_t>();
    EXPECT_EQ(poll("WAIT", id, 3), std::vector<int>({ 0, 0, 0 }));
    ASSERT_EQ(sendCollect(std::to_string(id), "success0@kovena")["responseCode"], "200MERSUCC");
    EXPECT_EQ(poll("WAIT", id, 1), std::vector<int>({ 1 }));
    EXPECT_EQ(sendCollect(std::to_string(id), "success0@kovena")["responseCode"], "400TXNCLOSED");
}

} // namespace
} // namespace kovena::sandbox::test
