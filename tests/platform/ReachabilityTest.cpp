#include "platform/Reachability.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace kovena::reachability {
namespace {

struct ProbeCase
{
    const char *label;
    std::optional<std::uint32_t> answer;
};

class ReachabilityProbeTest : public ::testing::TestWithParam<ProbeCase>
{
protected:
    void TearDown() override { setProbe({}); }
};

TEST_P(ReachabilityProbeTest, InstalledProbeAnswersForTheWholeProcess)
{
    const auto answer = GetParam().answer;
    std::atomic<int> calls { 0 };
    setProbe([&] {
        ++calls;
        return answer;
    });
    EXPECT_EQ(zeroAddressFlags(), answer);

    // Other threads see the same probe.
    std::vector<std::thread> threads;
    std::atomic<int> matching { 0 };
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            if (zeroAddressFlags() == answer)
                ++matching;
        });
    for (auto &t : threads)
        t.join();
    EXPECT_EQ(matching.load(), 4);
    EXPECT_EQ(calls.load(), 5);
}

INSTANTIATE_TEST_SUITE_P(Answers, ReachabilityProbeTest,
    ::testing::Values(ProbeCase { "reachable", Reachable },
        ProbeCase { "needsConnection", Reachable | ConnectionRequired }, ProbeCase { "offline", 0u },
        ProbeCase { "unreadable", std::nullopt }),
    [](const auto &info) { return std::string(info.param.label); });

TEST(Reachability, EmptyProbeRestoresTheSystemAnswer)
{
    setProbe([] { return std::optional<std::uint32_t>(ConnectionRequired); });
    setProbe({});
    const auto flags = zeroAddressFlags();
    ASSERT_TRUE(flags.has_value());
    // The system probe only ever reports the reachable bit or nothing set.
    EXPECT_EQ(*flags & ~Reachable, 0u);
    EXPECT_EQ(flags, systemProbe());
}

} // namespace
} // namespace kovena::reachability
