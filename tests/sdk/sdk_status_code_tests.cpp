// The status texts every merchant report carries, checked as one table.
#include "flow/Utils.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

using namespace kovena;

TEST(StatusDescription, EveryRowOfTheTable)
{
    constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    const struct
    {
        std::int32_t status;
        const char *text;
    } rows[] = {
        // clang-format off
        {9, "Pending"}, {14, "Pending"}, {-1, "Cancelled"}, {2, "Fail"},
        {1, "Success"}, {3, "Success"}, {11, "Success"},
        {-101, "Missing SDK params,amount nil "},
        {-102, "Missing SDK params,amount is empty or missing "},
        {-103, "Missing SDK params,amount is not valid"},
        {-104, "Missing SDK params,amount range is invalid"},
        {-105, "Missing SDK params,orderId nil"},
        {-106, "Missing SDK params,orderId is empty or missing"},
        // Everything else: neighbours of the success bits, and statuses whose low bits would
        // match the success mask if the bit test shifted or wrapped.
        {0, "Error"}, {4, "Error"}, {5, "Error"}, {8, "Error"}, {10, "Error"}, {12, "Error"},
        {13, "Error"}, {15, "Error"}, {33, "Error"}, {35, "Error"}, {43, "Error"}, {0x80B, "Error"},
        {-2, "Error"}, {-31, "Error"}, {-100, "Error"}, {-107, "Error"}, {-108, "Error"},
        {kMin, "Error"}, {kMin + 1, "Error"}, {kMax, "Error"},
        // clang-format on
    };
    for (const auto &row : rows)
        EXPECT_EQ(Utils::getStatusDescription(row.status), QString::fromLatin1(row.text)) << row.status;
}
