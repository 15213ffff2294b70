// Lenient reading: what each kind of field takes, and what leaves it absent.
#include "RecordFixtures.h"

#include <gtest/gtest.h>

#include <limits>

using namespace kovena;
using fixtures::json;

namespace {

struct WrittenBack
{
    const char *name;
    const char *input;
    const char *expected; // dictionaryRepresentation() of the record read from `input`
    friend void PrintTo(const WrittenBack &row, std::ostream *os) { *os << row.name; }
};

class TransactionStatusReading : public testing::TestWithParam<WrittenBack>
{
};

TEST_P(TransactionStatusReading, keepsOnlyValuesOfTheFieldsKind)
{
    const JsonValue input = json(GetParam().input);
    EXPECT_EQ(TransactionStatus::fromDictionary(&input)->dictionaryRepresentation().dump(),
        json(GetParam().expected).dump());
}

INSTANTIATE_TEST_SUITE_P(Rows, TransactionStatusReading,
    testing::Values(WrittenBack { "emptyObject", "{}", "{}" },
        WrittenBack { "nullData", R"({"data": null})", R"({"data": {}})" },
        WrittenBack { "stringData", R"({"data": "x"})", R"({"data": {}})" },
        WrittenBack { "arrayData", R"({"data": [{"status": 2}]})", R"({"data": {}})" },
        WrittenBack { "booleanSuccess", R"({"success": true})", "{}" },
        WrittenBack { "numericResponseCode", R"({"responseCode": 200})", "{}" },
        WrittenBack { "nullArrayObjectStrings",
            R"({"secureHash": null, "responseMessage": ["a"], "csrfToken": {}})", "{}" },
        WrittenBack { "statusAsText", R"({"data": {"status": "2"}})", R"({"data": {}})" },
        WrittenBack { "statusAsNumber", R"({"data": {"status": 2}})", R"({"data": {"status": 2}})" },
        WrittenBack { "amountAsNumber", R"({"data": {"requestedAmount": 10.5}})", R"({"data": {}})" },
        WrittenBack { "amountAsText", R"({"data": {"requestedAmount": "10.50"}})",
            R"({"data": {"requestedAmount": "10.50"}})" },
        WrittenBack {
            "gatewayRefAsText", R"({"data": {"paymentGatewayReferenceNumber": "9"}})", R"({"data": {}})" },
        WrittenBack { "keysAreCaseSensitive", R"({"ResponseCode": "x", "data": {"PaymentStatus": 1}})",
            R"({"data": {}})" },
        WrittenBack { "emptyStringIsPresent", R"({"success": ""})", R"({"success": ""})" },
        WrittenBack { "unknownKeysDroppedDeclaredOrderKept",
            R"({"csrfToken": "c", "extra": 1, "data": {"collectorId": "C", "status": 3}, "success": "s"})",
            R"({"success": "s", "data": {"status": 3, "collectorId": "C"}, "csrfToken": "c"})" }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(LenientRecords, missingOrNonObjectGivesAllAbsentRecord)
{
    for (const char *text : { "null", "[]", "[{\"success\": \"x\"}]", "5", "\"success\"", "true" }) {
        const JsonValue input = json(text);
        EXPECT_EQ(TransactionStatus(&input).dictionaryRepresentation(), JsonValue::object()) << text;
        EXPECT_EQ(TransactionStatus::Data(&input), TransactionStatus::Data()) << text;
        EXPECT_EQ(UPIResponse(&input), UPIResponse()) << text;
        EXPECT_EQ(UPIStatus(&input), UPIStatus()) << text;
    }
    EXPECT_EQ(TransactionStatus(nullptr).dictionaryRepresentation(), JsonValue::object());
    EXPECT_FALSE(TransactionStatus::fromDictionary(nullptr)->data);
    EXPECT_EQ(TransactionStatus::Data(nullptr), TransactionStatus::Data());
    EXPECT_EQ(UPIResponse(nullptr), UPIResponse());
    EXPECT_EQ(UPIStatus(nullptr), UPIStatus());
}

// Integer fields take JSON integers and whole-valued doubles that fit in 64 bits; nothing else.
TEST(IntegerField, convertsOnlyExactlyRepresentableNumbers)
{
    constexpr qint64 max = std::numeric_limits<qint64>::max();
    constexpr qint64 min = std::numeric_limits<qint64>::min();
    const std::pair<const char *, std::optional<qint64>> rows[] = { { "2", 2 }, { "-1", -1 }, { "-0", 0 },
        { "1234567890123", 1234567890123 }, { "9223372036854775807", max }, { "-9223372036854775808", min },
        { "9223372036854775808", std::nullopt }, { "18446744073709551615", std::nullopt }, { "2.0", 2 },
        { "-0.0", 0 }, { "1e3", 1000 }, { "1234567890123.0", 1234567890123 },
        { "-9223372036854775808.0", min },
        { "9223372036854775807.0", std::nullopt }, /* rounds to 2^63 as a double */
        { "1e19", std::nullopt }, { "-1e19", std::nullopt }, { "2.5", std::nullopt },
        { "1e-7", std::nullopt }, { "true", std::nullopt }, { "false", std::nullopt },
        { "\"2\"", std::nullopt }, { "null", std::nullopt }, { "[2]", std::nullopt },
        { "{\"value\": 2}", std::nullopt } };
    for (const auto &[value, expected] : rows) {
        JsonValue object
            = json(R"({"transactionRefNumber": "T1", "kovenaRefNumber": 1, "upiTxnRefNumber": {}})");
        object["kovenaTransactionId"] = json(value);
        object["upiTxnRefNumber"]["idValue"] = json(value);
        EXPECT_EQ(TransactionStatus::Data(&object).kovenaTransactionId, expected) << value;
        EXPECT_EQ(UPIResponse::Data(object).upiTxnRefNumber->idValue, expected) << value;
    }
}

TEST(RealField, takesAnyNumberAndNothingElse)
{
    const std::pair<const char *, std::optional<double>> rows[] = { { "100", 100.0 }, { "100.5", 100.5 },
        { "-0.25", -0.25 }, { "1e-300", 1e-300 }, { "9223372036854775807", 9223372036854775807.0 },
        { "18446744073709551615", 18446744073709551615.0 }, { "\"100\"", std::nullopt },
        { "true", std::nullopt }, { "null", std::nullopt }, { "[1]", std::nullopt } };
    for (const auto &[value, expected] : rows) {
        JsonValue object = json(R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7})");
        object["requestedAmount"] = json(value);
        EXPECT_EQ(UPIResponse::Data(object).requestedAmount, expected) << value;
        EXPECT_EQ(UPIStatus::Data(object).requestedAmount, expected) << value;
    }
}

TEST(StringField, takesOnlyJsonStringsWithoutConversion)
{
    const std::pair<const char *, std::optional<QString>> rows[] = { { R"("abc")", QString("abc") },
        { R"("")", QString("") }, { R"("\u20b9 10 \u2014 ok")", QString::fromUtf8("\u20b9 10 \u2014 ok") },
        { R"("a\u0000b")", QString::fromUtf16(u"a\0b", 3) },
        { R"("\ud83d\ude00")", QString::fromUtf8("\U0001F600") }, { "5", std::nullopt },
        { "5.5", std::nullopt }, { "true", std::nullopt }, { "null", std::nullopt },
        { "[\"a\"]", std::nullopt }, { "{}", std::nullopt } };
    for (const auto &[value, expected] : rows) {
        JsonValue object = JsonValue::object();
        object["responseMessage"] = json(value);
        const TransactionStatus status(&object);
        EXPECT_EQ(status.responseMessage, expected) << value;
        EXPECT_EQ(status.responseMessage && status.responseMessage->isNull(), false)
            << "present means non-null";
        EXPECT_EQ(UPIResponse(&object).responseMessage, expected) << value;
    }
}

TEST(UpiRecords, readTheirOwnFieldsOnly)
{
    const JsonValue nested = json(R"({"data": {"transactionRefNumber": "T1"}})");
    EXPECT_EQ(UPIResponse(&nested), UPIResponse()) << "the collect reply's envelope has no data";

    const JsonValue required = json(R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7})");
    const UPIResponse::Data data(required);
    EXPECT_EQ(data.transactionRefNumber, QString("T1"));
    EXPECT_EQ(data.kovenaRefNumber, 7);
    EXPECT_EQ(data.dictionaryRepresentation(), required);
    EXPECT_EQ(UPIStatus::Data(required).dictionaryRepresentation(), required);

    const JsonValue lenientInside = json(R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7,
                                             "upiTxnRefNumber": {"version": "1", "idType": 3, "txnRefNum": "R"}})");
    EXPECT_EQ(UPIResponse::Data(lenientInside).upiTxnRefNumber->dictionaryRepresentation(),
        json(R"({"txnRefNum": "R"})"));
}

TEST(UpiRecords, statusCarriesTheTxnReferenceAsText)
{
    const JsonValue text = json(R"({"data": {"transactionRefNumber": "T1", "kovenaRefNumber": 9,
                                             "upiTxnRefNumber": "U1"}})");
    const UPIStatus status(&text);
    ASSERT_NE(status.data, nullptr);
    EXPECT_EQ(status.data->upiTxnRefNumber, QString("U1"));
    EXPECT_EQ(status.data->kovenaRefNumber, 9);

    const JsonValue object = json(R"({"data": {"transactionRefNumber": "T1", "kovenaRefNumber": 9,
                                               "upiTxnRefNumber": {"a": 1}}})");
    EXPECT_FALSE(UPIStatus(&object).data->upiTxnRefNumber) << "a lenient string, so an object is not fatal";
}

TEST(ListBuilding, lenientRecordsTurnNonObjectElementsIntoBlankRecords)
{
    const JsonValue array = json(R"([{}, 5, {"success": "true"}, null])");
    const auto statuses = TransactionStatus::modelsFromDictionaryArray(array);
    ASSERT_EQ(statuses.size(), 4);
    for (int i : { 0, 1, 3 })
        EXPECT_EQ(statuses[i]->dictionaryRepresentation(), JsonValue::object()) << i;
    EXPECT_EQ(statuses[2]->success, QString("true"));
    const auto responses = UPIResponse::modelsFromDictionaryArray(array);
    ASSERT_EQ(responses.size(), 4);
    EXPECT_EQ(responses[2]->success, QString("true"));
    EXPECT_EQ(
        *UPIStatus::modelsFromDictionaryArray(json(R"([[], {"csrfToken": "t"}])")).at(1)->csrfToken, "t");
    EXPECT_EQ(
        TransactionStatus::Data::modelsFromDictionaryArray(json(R"(["x", {"status": 3}])")).at(1)->status, 3);
}

TEST(ListBuilding, strictRecordsKeepArrayOrderAndNonArraysGiveEmptyLists)
{
    const auto refs = UPIResponse::UpiTxnRefNumber::modelsFromDictionaryArray(
        json(R"([{"version": 1}, {}, {"version": 3}])"));
    ASSERT_EQ(refs.size(), 3);
    EXPECT_EQ(refs[0]->version, 1);
    EXPECT_FALSE(refs[1]->version);
    EXPECT_EQ(refs[2]->version, 3);
    for (const char *text : { "[]", "{}", "null", "\"[{}]\"" }) {
        EXPECT_TRUE(TransactionStatus::modelsFromDictionaryArray(json(text)).isEmpty()) << text;
        EXPECT_TRUE(UPIResponse::Data::modelsFromDictionaryArray(json(text)).isEmpty()) << text;
        EXPECT_TRUE(UPIStatus::Data::modelsFromDictionaryArray(json(text)).isEmpty()) << text;
    }
}

} // namespace
