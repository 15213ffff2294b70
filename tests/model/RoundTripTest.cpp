// Writing a record with every field set gives the reply it was modelled on, key for key and in
// declared order; reading that reply, or the written text, gives back an equal record. Also the
// property face through which Qt code reads and writes TransactionStatus.
#include "RecordFixtures.h"

#include <gtest/gtest.h>

#include <QMetaProperty>
#include <QVariant>

#include <limits>
#include <string>

using namespace kovena;
using namespace kovena::fixtures;

namespace {

// Each record's complete reply and the same record built member by member.
struct Full
{
    static auto of(TransactionStatus *) { return std::pair(fullStatusReply(), builtStatus()); }
    static auto of(TransactionStatus::Data *)
    {
        return std::pair(fullStatusReply()["data"], builtStatus()->data);
    }
    static auto of(UPIResponse *) { return std::pair(fullUpiResponseReply(), builtUpiResponse()); }
    static auto of(UPIResponse::Data *) { return std::pair(fullUpiResponseData(), builtUpiResponseData()); }
    static auto of(UPIStatus *) { return std::pair(fullUpiStatusReply(), builtUpiStatus()); }
    static auto of(UPIStatus::Data *)
    {
        return std::pair(fullUpiStatusReply()["data"], builtUpiStatus()->data);
    }
    static auto of(BankNBData *)
    {
        return std::pair(fullBankListReply()["data"][0], builtBankList()->data->at(0));
    }
    static auto of(UPIResponse::UpiTxnRefNumber *)
    {
        return std::pair(fullUpiResponseData()["upiTxnRefNumber"], builtUpiResponseData()->upiTxnRefNumber);
    }
};

template<class Record> class RoundTrip : public testing::Test
{
};

using Records = testing::Types<TransactionStatus, TransactionStatus::Data, UPIResponse,
    UPIResponse::UpiTxnRefNumber, UPIResponse::Data, UPIStatus, UPIStatus::Data, BankNB::Data>;
TYPED_TEST_SUITE(RoundTrip, Records);

TYPED_TEST(RoundTrip, everyFieldUnderItsKeyBothWays)
{
    const auto [reply, built] = Full::of(static_cast<TypeParam *>(nullptr));
    // Compared as text: key order counts, and the int64 extremes and 13-digit ids the replies carry
    // must come out exactly as they went in, not as doubles.
    const JsonValue written = built->dictionaryRepresentation();
    EXPECT_EQ(written.dump(2), reply.dump(2));
    EXPECT_TRUE(*read<TypeParam>(reply) == *built);

    const std::string text = written.dump();
    const auto reread = read<TypeParam>(JsonValue::parse(text));
    EXPECT_TRUE(*reread == *built) << text;
    EXPECT_EQ(reread->dictionaryRepresentation().dump(), text);
    EXPECT_EQ(TypeParam().dictionaryRepresentation(), JsonValue::object());
}

// The bank list reads its banks but writes only its envelope: a written list reads back without them.
TEST(RoundTripDetails, bankListWritesEverythingButItsBanks)
{
    const JsonValue reply = fullBankListReply();
    const auto built = builtBankList();
    EXPECT_TRUE(*read<BankNB>(reply) == *built);

    JsonValue envelope = reply;
    envelope.erase("data");
    const JsonValue written = built->dictionaryRepresentation();
    EXPECT_EQ(written.dump(2), envelope.dump(2));

    const auto reread = read<BankNB>(JsonValue::parse(written.dump()));
    EXPECT_FALSE(reread->data);
    built->data.reset();
    EXPECT_TRUE(*reread == *built);
    EXPECT_EQ(BankNB().dictionaryRepresentation(), JsonValue::object());
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

// The Qt property face of TransactionStatus: the five strings, read and written through QObject.
TEST(TransactionStatusProperties, publishTheFiveStringsAsNullableText)
{
    const std::pair<const char *, std::optional<QString> TransactionStatus::*> properties[]
        = { { "success", &TransactionStatus::success }, { "responseCode", &TransactionStatus::responseCode },
              { "secureHash", &TransactionStatus::secureHash },
              { "responseMessage", &TransactionStatus::responseMessage },
              { "csrfToken", &TransactionStatus::csrfToken } };
    const QMetaObject &meta = TransactionStatus::staticMetaObject;
    EXPECT_EQ(meta.propertyCount() - meta.propertyOffset(), int(std::size(properties))) << "no more, no data";
    const JsonValue reply = json(R"({"success": "", "responseCode": "200TRANSRESPSUCC", "secureHash": "h",
                                     "responseMessage": "m", "csrfToken": "c"})");
    const TransactionStatus parsed(&reply);
    for (const auto &[name, member] : properties) {
        const QMetaProperty property = meta.property(meta.indexOfProperty(name));
        EXPECT_EQ(property.metaType(), QMetaType::fromType<QString>()) << name;
        EXPECT_TRUE(property.isWritable()) << name;
        TransactionStatus status;
        ASSERT_TRUE(status.property(name).isValid()) << name;
        EXPECT_TRUE(status.property(name).toString().isNull()) << "absent reads as null: " << name;
        EXPECT_FALSE(parsed.property(name).toString().isNull()) << name;
        EXPECT_EQ(parsed.property(name).toString(), *(parsed.*member)) << name;

        ASSERT_TRUE(status.setProperty(name, QString("value"))) << name;
        EXPECT_EQ(status.*member, QString("value")) << name;
        EXPECT_EQ(status.dictionaryRepresentation().value(name, ""), "value") << name;
        ASSERT_TRUE(status.setProperty(name, QString(""))) << name;
        EXPECT_TRUE(status.*member) << "an empty text is present: " << name;
        ASSERT_TRUE(status.setProperty(name, QString())) << name;
        EXPECT_FALSE(status.*member) << "writing null clears: " << name;
        EXPECT_FALSE(status.dictionaryRepresentation().contains(name)) << name;
    }
}

} // namespace
