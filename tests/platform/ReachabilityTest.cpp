#include "platform/Reachability.h"
#include "support/Scoped.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace kovena::reachability {
namespace {

TEST(Reachability, InstalledProbeAnswersForEveryThreadUntilRemoved)
{
    const std::optional<std::uint32_t> answers[]
        = { Reachable, Reachable | ConnectionRequired, 0u, std::nullopt };
    for (const auto &answer : answers) {
        SCOPED_TRACE(answer.value_or(0xDEAD));
        std::atomic<int> calls { 0 };
        std::atomic<int> matching { 0 };
        // Put back after each answer, however the row ends: the probe refers to this row's counters.
        const testing::ScopedReachability probe([&] {
            ++calls;
            return answer;
        });
        EXPECT_EQ(zeroAddressFlags(), answer);
        std::vector<std::thread> threads;
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

    ASSERT_FALSE(installedProbe()) << "the last row's probe was left in place";
    const auto flags = zeroAddressFlags();
    ASSERT_TRUE(flags.has_value());
    // The system probe only ever reports the reachable bit or nothing set.
    EXPECT_EQ(*flags & ~Reachable, 0u);
    EXPECT_EQ(flags, systemProbe());
}

} // namespace
} // namespace kovena::reachability
