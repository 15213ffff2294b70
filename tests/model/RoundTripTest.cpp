// Writing a record with every field set gives the reply it was modelled on, key for key and in
// declared order; reading that output (as JSON text) gives back an equal record.
#include "RecordFixtures.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <vector>

using namespace kovena;
using namespace kovena::fixtures;

namespace {

std::vector<std::string> keysOf(const JsonValue &object)
{
    std::vector<std::string> keys;
    for (const auto &[key, value] : object.items())
        keys.push_back(key);
    return keys;
}

template<class Record> struct Tag
{
};

// Each record's complete reply and the same record built member by member.
struct Full
{
    static auto of(Tag<TransactionStatus>) { return std::pair(fullStatusReply(), builtStatus()); }
    static auto of(Tag<TransactionStatus::Data>)
    {
        return std::pair(fullStatusReply()["data"], builtStatusData());
    }
    static auto of(Tag<UPIResponse>) { return std::pair(fullUpiResponseReply(), builtUpiResponse()); }
    static auto of(Tag<UPIResponse::UpiTxnRefNumber>)
    {
        return std::pair(fullTxnRefNumber(), builtTxnRefNumber());
    }
    static auto of(Tag<UPIResponse::Data>)
    {
        return std::pair(fullUpiResponseData(), builtUpiResponseData());
    }
    static auto of(Tag<UPIStatus>) { return std::pair(fullUpiStatusReply(), builtUpiStatus()); }
    static auto of(Tag<UPIStatus::Data>)
    {
        return std::pair(fullUpiStatusReply()["data"], builtUpiStatusData());
    }
};

template<class Record> std::shared_ptr<Record> read(const JsonValue &value)
{
    if constexpr (std::is_pointer_v<typename Record::Argument>)
        return Record::fromDictionary(&value);
    else
        return Record::fromDictionary(value);
}

template<class Record> class RoundTrip : public testing::Test
{
};

using Records = testing::Types<TransactionStatus, TransactionStatus::Data, UPIResponse,
    UPIResponse::UpiTxnRefNumber, UPIResponse::Data, UPIStatus, UPIStatus::Data>;
TYPED_TEST_SUITE(RoundTrip, Records);

TYPED_TEST(RoundTrip, writesEveryFieldUnderItsKeyInDeclaredOrder)
{
    const auto [reply, built] = Full::of(Tag<TypeParam>());
    const JsonValue written = built->dictionaryRepresentation();
    EXPECT_EQ(keysOf(written), keysOf(reply));
    EXPECT_EQ(written, reply) << written.dump(2);
}

TYPED_TEST(RoundTrip, readsEveryFieldIntoItsMember)
{
    const auto [reply, built] = Full::of(Tag<TypeParam>());
    const auto parsed = read<TypeParam>(reply);
    EXPECT_TRUE(*parsed == *built) << parsed->dictionaryRepresentation().dump(2);
}

TYPED_TEST(RoundTrip, writtenTextReadsBackEqual)
{
    const auto built = Full::of(Tag<TypeParam>()).second;
    const std::string text = built->dictionaryRepresentation().dump();
    const auto reread = read<TypeParam>(JsonValue::parse(text));
    EXPECT_TRUE(*reread == *built) << text;
    EXPECT_EQ(reread->dictionaryRepresentation().dump(), text);
}

TYPED_TEST(RoundTrip, blankRecordWritesAnEmptyObject)
{
    const TypeParam blank;
    EXPECT_EQ(blank.dictionaryRepresentation(), JsonValue::object());
}

TEST(RoundTripDetails, int64ExtremesAndThirteenDigitIdsStayExact)
{
    const std::string text = builtStatus()->dictionaryRepresentation().dump();
    for (const char *exact : { "\"kovenaRefNumber\":9223372036854775807",
             "\"requestValidity\":-9223372036854775808", "\"kovenaTransactionId\":1714550400123" })
        EXPECT_NE(text.find(exact), std::string::npos) << exact;
    const JsonValue parsed = JsonValue::parse(text);
    const auto reread = TransactionStatus::fromDictionary(&parsed);
    EXPECT_EQ(reread->data->kovenaTransactionId, 1714550400123);
    EXPECT_EQ(reread->data->paymentGatewayReferenceNumber, 1234567890123);
}

TEST(RoundTripDetails, editedBlankRecordWritesOnlyWhatWasSet)
{
    TransactionStatus status;
    status.data = std::make_shared<TransactionStatus::Data>();
    status.data->paymentStatus = -1;
    status.data->description = "Cancelled";
    EXPECT_EQ(status.dictionaryRepresentation().dump(),
        R"({"data":{"paymentStatus":-1,"description":"Cancelled"}})");
    status.data->paymentStatus.reset();
    EXPECT_EQ(status.dictionaryRepresentation().dump(), R"({"data":{"description":"Cancelled"}})");
}

TEST(RoundTripDetails, nonFiniteRealIsLeftOutRatherThanWrittenAsNull)
{
    UPIStatus::Data data;
    data.transactionRefNumber = "T1";
    for (const double amount :
        { std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity() }) {
        data.requestedAmount = amount;
        EXPECT_EQ(data.dictionaryRepresentation().dump(), R"({"transactionRefNumber":"T1"})");
    }
    data.requestedAmount = 0.1;
    EXPECT_EQ(
        data.dictionaryRepresentation().dump(), R"({"requestedAmount":0.1,"transactionRefNumber":"T1"})");
}

TEST(RoundTripDetails, equalityComparesNestedRecordsByValue)
{
    auto a = builtUpiResponseData();
    auto b = builtUpiResponseData();
    ASSERT_NE(a->upiTxnRefNumber, b->upiTxnRefNumber);
    EXPECT_EQ(*a, *b);
    b->upiTxnRefNumber->checkDigit = 8;
    EXPECT_FALSE(*a == *b);
    b->upiTxnRefNumber.reset();
    EXPECT_FALSE(*a == *b);
}

} // namespace
