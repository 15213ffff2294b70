// Reading replies: what each kind of field takes and what leaves it absent, and the strict spots where
// a required key that is missing, null or of another kind stops the process with a diagnostic that names
// the record and the key, never the value.
#include "model/RecordMapping.h"

#include "RecordFixtures.h"
#include "support/FatalDiagnostic.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

using namespace kovena;
using namespace kovena::fixtures;
using Ref = UPIResponse::UpiTxnRefNumber;

namespace {

// A record with list fields, which no reply record has yet: one read but never written back, one written.
class Catalogue : public MappedRecord<Catalogue, Dictionary::Required>
{
public:
    explicit Catalogue(const JsonValue &dictionary) { mapping::readRequired(*this, dictionary); }

    std::optional<QString> success;
    std::optional<QList<std::shared_ptr<Ref>>> entries, archive;
};

} // namespace

namespace kovena::mapping {

template<> const RecordTable<Catalogue> &table<Catalogue>()
{
    using R = Catalogue;
    static constexpr std::array fields { field<R, &R::success>("success"),
        readOnlyField<R, &R::entries>("entries"), field<R, &R::archive>("archive") };
    static constexpr RecordTable<R> t { "Catalogue", fields };
    return t;
}

} // namespace kovena::mapping

namespace {

TEST(LenientReading, keepsOnlyValuesOfTheFieldsKind)
{
    // A reply, and what the TransactionStatus read from it writes back.
    const std::pair<const char *, const char *> rows[] = { { "{}", "{}" },
        { R"({"data": null})", R"({"data": {}})" }, { R"({"data": "x"})", R"({"data": {}})" },
        { R"({"data": [{"status": 2}]})", R"({"data": {}})" },
        // What each kind takes is tested below; here, that the envelope's fields are of their kinds.
        { R"({"success": true, "responseCode": 200, "secureHash": null, "responseMessage": ["a"],
              "csrfToken": {}})",
            "{}" },
        { R"({"data": {"requestedAmount": 10.5}})", R"({"data": {}})" },
        { R"({"data": {"requestedAmount": "10.50"}})", R"({"data": {"requestedAmount": "10.50"}})" },
        { R"({"ResponseCode": "x", "data": {"PaymentStatus": 1}})", R"({"data": {}})" },
        { R"({"success": ""})", R"({"success": ""})" },
        // Unknown keys are dropped; the declared order is kept.
        { R"({"csrfToken": "c", "extra": 1, "data": {"collectorId": "C", "status": 3}, "success": "s"})",
            R"({"success": "s", "data": {"status": 3, "collectorId": "C"}, "csrfToken": "c"})" } };
    for (const auto &[input, expected] : rows)
        EXPECT_EQ(read<TransactionStatus>(json(input))->dictionaryRepresentation(), json(expected)) << input;
}

TEST(LenientReading, missingOrNonObjectGivesAllAbsentRecord)
{
    for (const char *text : { "", "null", "[]", "[{\"success\": \"x\"}]", "5", "\"success\"", "true" }) {
        const JsonValue value = *text ? json(text) : JsonValue();
        const JsonValue *input = *text ? &value : nullptr;
        EXPECT_EQ(TransactionStatus(input).dictionaryRepresentation(), JsonValue::object()) << text;
        EXPECT_EQ(TransactionStatus::Data(input), TransactionStatus::Data()) << text;
        EXPECT_EQ(UPIResponse(input), UPIResponse()) << text;
        EXPECT_EQ(UPIStatus(input), UPIStatus()) << text;
    }
}

// Integers take JSON integers and whole-valued doubles that fit in 64 bits; reals take any number;
// strings take JSON strings without conversion. Anything else leaves the field absent.
TEST(LenientReading, eachKindTakesOnlyItsOwnValues)
{
    constexpr qint64 max = std::numeric_limits<qint64>::max();
    constexpr qint64 min = std::numeric_limits<qint64>::min();
    constexpr std::nullopt_t none = std::nullopt;
    struct Row
    {
        const char *value;
        std::optional<qint64> integer;
        std::optional<double> real;
        std::optional<QString> text;
    };
    const Row rows[] = { { "2", 2, 2.0, none }, { "-1", -1, -1.0, none }, { "-0", 0, 0.0, none },
        { "1234567890123", 1234567890123, 1234567890123.0, none },
        { "9223372036854775807", max, 9223372036854775807.0, none },
        { "-9223372036854775808", min, -9223372036854775808.0, none },
        { "9223372036854775808", none, 9223372036854775808.0, none },
        { "18446744073709551615", none, 18446744073709551615.0, none }, { "2.0", 2, 2.0, none },
        { "-0.0", 0, -0.0, none }, { "1e3", 1000, 1000.0, none },
        { "1234567890123.0", 1234567890123, 1234567890123.0, none },
        { "-9223372036854775808.0", min, -9223372036854775808.0, none },
        { "9223372036854775807.0", none, 9223372036854775807.0, none }, // rounds to 2^63 as a double
        { "1e19", none, 1e19, none }, { "-1e19", none, -1e19, none }, { "2.5", none, 2.5, none },
        { "1e-7", none, 1e-7, none }, { "1e-300", none, 1e-300, none }, { "true", none, none, none },
        { "null", none, none, none }, { "[2]", none, none, none }, { "{\"value\": 2}", none, none, none },
        { "\"2\"", none, none, QString("2") }, { R"("")", none, none, QString("") },
        { R"("\u20b9 10 \u2014 ok")", none, none, QString::fromUtf8("\u20b9 10 \u2014 ok") },
        { R"("a\u0000b")", none, none, QString::fromUtf16(u"a\0b", 3) },
        { R"("\ud83d\ude00")", none, none, QString::fromUtf8("\U0001F600") } };
    for (const auto &[value, integer, real, text] : rows) {
        JsonValue object
            = json(R"({"transactionRefNumber": "T1", "kovenaRefNumber": 1, "upiTxnRefNumber": {}})");
        for (const char *key : { "kovenaTransactionId", "requestedAmount", "responseMessage" })
            object[key] = json(value);
        object["upiTxnRefNumber"]["idValue"] = json(value);
        const UPIResponse::Data upiData(object);
        EXPECT_EQ(TransactionStatus::Data(&object).kovenaTransactionId, integer) << value;
        EXPECT_EQ(upiData.upiTxnRefNumber->idValue, integer) << value;
        EXPECT_EQ(upiData.requestedAmount, real) << value;
        EXPECT_EQ(UPIStatus::Data(object).requestedAmount, real) << value;
        const auto message = TransactionStatus(&object).responseMessage;
        EXPECT_EQ(message, text) << value;
        EXPECT_FALSE(message && message->isNull()) << "present means non-null: " << value;
        EXPECT_EQ(UPIResponse(&object).responseMessage, text) << value;
    }
}

TEST(UpiRecords, readTheirOwnFieldsOnly)
{
    EXPECT_EQ(*read<UPIResponse>(json(R"({"data": {"transactionRefNumber": "T1"}})")), UPIResponse())
        << "the collect reply's envelope has no data";
    const auto noData = read<UPIStatus>(json(R"({"success": "true"})"));
    EXPECT_FALSE(noData->data);
    EXPECT_EQ(noData->success, QString("true"));

    const JsonValue required = json(R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7})");
    EXPECT_EQ(UPIResponse::Data(required).dictionaryRepresentation(), required);
    EXPECT_EQ(UPIStatus::Data(required).dictionaryRepresentation(), required);

    // The status record carries the reference as lenient text, so an object is not fatal there.
    const auto status = read<UPIStatus>(
        json(R"({"data": {"transactionRefNumber": "T1", "kovenaRefNumber": 9, "upiTxnRefNumber": "U1"}})"));
    ASSERT_NE(status->data, nullptr);
    EXPECT_EQ(status->data->upiTxnRefNumber, QString("U1"));
    JsonValue object = required;
    object["upiTxnRefNumber"] = JsonValue::object();
    EXPECT_FALSE(UPIStatus::Data(object).upiTxnRefNumber);
}

// Lenient records read a non-object element as a blank record; any builder gives an empty list for a
// non-array.
TEST(ListBuilding, oneRecordPerElementInArrayOrder)
{
    const JsonValue array = json(R"([{}, 5, {"success": "true"}, null])");
    const auto statuses = TransactionStatus::modelsFromDictionaryArray(array);
    const auto responses = UPIResponse::modelsFromDictionaryArray(array);
    ASSERT_EQ(statuses.size(), 4);
    ASSERT_EQ(responses.size(), 4);
    for (int i : { 0, 1, 3 })
        EXPECT_EQ(statuses[i]->dictionaryRepresentation(), JsonValue::object()) << i;
    EXPECT_EQ(statuses[2]->success, QString("true"));
    EXPECT_EQ(responses[2]->success, QString("true"));
    EXPECT_EQ(
        *UPIStatus::modelsFromDictionaryArray(json(R"([[], {"csrfToken": "t"}])")).at(1)->csrfToken, "t");
    EXPECT_EQ(
        TransactionStatus::Data::modelsFromDictionaryArray(json(R"(["x", {"status": 3}])")).at(1)->status, 3);
    for (const char *text : { "[]", "{}", "null", "\"[{}]\"" }) {
        EXPECT_TRUE(TransactionStatus::modelsFromDictionaryArray(json(text)).isEmpty()) << text;
        EXPECT_TRUE(UPIResponse::Data::modelsFromDictionaryArray(json(text)).isEmpty()) << text;
        EXPECT_TRUE(UPIStatus::Data::modelsFromDictionaryArray(json(text)).isEmpty()) << text;
    }
}

TEST(ListField, readsArraysOnlyAndWritesOnlyWritableLists)
{
    // Absent only when missing; empty when not an array.
    const std::pair<const char *, std::optional<qsizetype>> rows[]
        = { { "{}", std::nullopt }, { R"({"entries": null})", 0 }, { R"({"entries": {}})", 0 },
              { R"({"entries": "x"})", 0 }, { R"({"entries": []})", 0 } };
    for (const auto &[input, size] : rows) {
        const Catalogue catalogue(json(input));
        EXPECT_EQ(catalogue.entries ? std::optional(catalogue.entries->size()) : std::nullopt, size) << input;
    }

    const Catalogue catalogue(json(R"({"success": "true",
        "entries": [{"version": 3, "prefix": "A"}, {"Prefix": "B", "version": "4"}],
        "archive": [{"prefix": "old"}, {"version": 2}]})"));
    ASSERT_EQ(catalogue.entries->size(), 2);
    EXPECT_EQ(catalogue.entries->at(0)->version, 3);
    EXPECT_EQ(catalogue.entries->at(0)->prefix, QString("A"));
    EXPECT_EQ(*catalogue.entries->at(1), Ref());
    EXPECT_EQ(catalogue.dictionaryRepresentation().dump(),
        R"({"success":"true","archive":[{"prefix":"old"},{"version":2}]})");
    EXPECT_EQ(Catalogue(json(R"({"archive": 1})")).dictionaryRepresentation().dump(), R"({"archive":[]})");
    EXPECT_DEATH(Catalogue(json(R"({"entries": [{"version": 1}, 1]})")),
        kovena::testing::fatalLine(
            "UPIResponse::UpiTxnRefNumber: array element 1 is a number, expected an object"));
}

// The bank list: absent without "data", empty for anything but an array, and one bank per element in
// array order, each read leniently. What the record writes back never holds the banks.
TEST(BankList, readsBanksInOrderAndNeverWritesThem)
{
    struct Row
    {
        const char *input;
        const char *banks; // the banks as written back, or "absent"
        const char *written;
    };
    const Row rows[] = {
        { "{}", "absent", "{}" },
        { R"({"data": null})", "[]", "{}" },
        { R"({"data": {}})", "[]", "{}" },
        { R"({"data": []})", "[]", "{}" },
        { R"({"Data": [{"netBankingId": 3}]})", "absent", "{}" },
        { R"({"data": [{"netBankingId": 3, "netBankingName": "Bank A", "netbankingCodes": "AB"}]})",
            R"([{"netBankingId":3,"netBankingName":"Bank A","netbankingCodes":"AB"}])", "{}" },
        // The codes' key has a lower-case b; the other two spellings do not count.
        { R"({"data": [{"netBankingCode": "AB"}, {"netBankingCodes": "AB", "NetBankingId": 1}]})", "[{},{}]",
            "{}" },
        { R"({"data": [{"netBankingId": "3", "netBankingName": 5, "netbankingCodes": null}]})", "[{}]",
            "{}" },
        { R"({"data": [{"netBankingId": 3.0}, {"netBankingId": 2.5}, {"netBankingId": true}]})",
            R"([{"netBankingId":3},{},{}])", "{}" },
        { R"({"data": [{"netbankingCodes": "Z"}, {"netbankingCodes": "A"}, {"netbankingCodes": "M"}]})",
            R"([{"netbankingCodes":"Z"},{"netbankingCodes":"A"},{"netbankingCodes":"M"}])", "{}" },
        { R"({"csrfToken": "c", "data": [{}], "success": "true", "responseCode": 200, "secureHash": null})",
            "[{}]", R"({"success":"true","csrfToken":"c"})" },
    };
    for (const Row &row : rows) {
        const auto list = read<BankNB>(json(row.input));
        std::string banks = "absent";
        if (list->data) {
            JsonValue written = JsonValue::array();
            for (const auto &bank : *list->data)
                written.push_back(bank->dictionaryRepresentation());
            banks = written.dump();
        }
        EXPECT_EQ(banks, row.banks) << row.input;
        EXPECT_EQ(list->dictionaryRepresentation().dump(), row.written) << row.input;
    }
}

// A strict builder, run for its diagnostic only.
template<class Record> void one(const JsonValue &v)
{
    read<Record>(v);
}
template<class Record> void list(const JsonValue &v)
{
    Record::modelsFromDictionaryArray(v);
}

using Reader = void (*)(const JsonValue &);
const Reader upiData = one<UPIResponse::Data>, upiStatus = one<UPIStatus>,
             upiStatusData = one<UPIStatus::Data>;

struct FatalRow
{
    Reader read;
    const char *input;
    const char *diagnostic; // the whole line fatalError prints for the spot
};

const FatalRow fatalRows[] = {
    { upiData, R"({"kovenaRefNumber": 7})",
        "UPIResponse::Data: required key \"transactionRefNumber\" is missing" },
    { upiData, R"({"transactionRefNumber": null, "kovenaRefNumber": 7})",
        "UPIResponse::Data: \"transactionRefNumber\" is null, expected a string" },
    { upiData, R"({"transactionRefNumber": 5, "kovenaRefNumber": 7})",
        "UPIResponse::Data: \"transactionRefNumber\" is a number, expected a string" },
    { upiData, R"({"transactionRefNumber": "T1"})",
        "UPIResponse::Data: required key \"kovenaRefNumber\" is missing" },
    { upiData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": "7"})",
        "UPIResponse::Data: \"kovenaRefNumber\" is a string, expected an integer within 64 bits" },
    { upiData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": null})",
        "UPIResponse::Data: \"kovenaRefNumber\" is null, expected an integer within 64 bits" },
    { upiData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7.5})",
        "UPIResponse::Data: \"kovenaRefNumber\" is a number, expected an integer within 64 bits" },
    { upiData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 9223372036854775808})",
        "UPIResponse::Data: \"kovenaRefNumber\" is a number, expected an integer within 64 bits" },
    { upiData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": true})",
        "UPIResponse::Data: \"kovenaRefNumber\" is a boolean, expected an integer within 64 bits" },
    { upiData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7, "upiTxnRefNumber": null})",
        "UPIResponse::Data: \"upiTxnRefNumber\" is null, expected an object" },
    { upiData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7, "upiTxnRefNumber": "U1"})",
        "UPIResponse::Data: \"upiTxnRefNumber\" is a string, expected an object" },
    { upiData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7, "upiTxnRefNumber": [{}]})",
        "UPIResponse::Data: \"upiTxnRefNumber\" is an array, expected an object" },
    { upiData, "[]", "UPIResponse::Data: dictionary is an array, expected an object" },
    { upiData, "null", "UPIResponse::Data: dictionary is null, expected an object" },
    { list<UPIResponse::Data>, R"([{"transactionRefNumber": "T1", "kovenaRefNumber": 7}, 5])",
        "UPIResponse::Data: array element 1 is a number, expected an object" },
    { one<Ref>, "\"R\"", "UPIResponse::UpiTxnRefNumber: dictionary is a string, expected an object" },
    { list<Ref>, "[{}, null]", "UPIResponse::UpiTxnRefNumber: array element 1 is null, expected an object" },
    { upiStatus, R"({"data": {}})", "UPIStatus::Data: required key \"transactionRefNumber\" is missing" },
    { upiStatus, R"({"data": null})", "UPIStatus: \"data\" is null, expected an object" },
    { upiStatus, R"({"data": "x"})", "UPIStatus: \"data\" is a string, expected an object" },
    { upiStatus, R"({"data": []})", "UPIStatus: \"data\" is an array, expected an object" },
    { upiStatus, R"({"data": {"transactionRefNumber": "T1"}})",
        "UPIStatus::Data: required key \"kovenaRefNumber\" is missing" },
    { upiStatusData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": "9"})",
        "UPIStatus::Data: \"kovenaRefNumber\" is a string, expected an integer within 64 bits" },
    { upiStatusData, "1", "UPIStatus::Data: dictionary is a number, expected an object" },
    { list<UPIStatus::Data>, R"(["x"])", "UPIStatus::Data: array element 0 is a string, expected an object" },
    { one<BankNB>, R"({"data": [1]})", "BankNB::Data: array element 0 is a number, expected an object" },
    { one<BankNB>, "[]", "BankNB: dictionary is an array, expected an object" },
    { list<BankNB>, R"([{"data": []}, true])", "BankNB: array element 1 is a boolean, expected an object" },
    { list<BankNB::Data>, R"([{}, {}, [{}]])",
        "BankNB::Data: array element 2 is an array, expected an object" },
    // A card-number-like value must not reach the diagnostic: it ends right after the expected kind.
    { upiData, R"({"transactionRefNumber": 4111111111111111, "kovenaRefNumber": 7})",
        "UPIResponse::Data: \"transactionRefNumber\" is a number, expected a string" },
};

TEST(StrictSpots, stopWithADiagnosticNamingRecordAndKey)
{
    for (const auto &row : fatalRows) {
        const JsonValue input = json(row.input);
        EXPECT_DEATH(row.read(input), kovena::testing::fatalLine(row.diagnostic)) << row.input;
    }
}

} // namespace
