// Strict spots: a required key that is missing, null or of another kind stops the process with a
// diagnostic that names the record and the key, never the value.
#include "RecordFixtures.h"

#include <gtest/gtest.h>

using namespace kovena;
using fixtures::json;

namespace {

using Reader = void (*)(const JsonValue &);

void upiResponseData(const JsonValue &v)
{
    UPIResponse::Data { v };
}
void upiResponseDataList(const JsonValue &v)
{
    UPIResponse::Data::modelsFromDictionaryArray(v);
}
void txnRefNumber(const JsonValue &v)
{
    UPIResponse::UpiTxnRefNumber { v };
}
void txnRefNumberList(const JsonValue &v)
{
    UPIResponse::UpiTxnRefNumber::modelsFromDictionaryArray(v);
}
void upiStatus(const JsonValue &v)
{
    UPIStatus { &v };
}
void upiStatusData(const JsonValue &v)
{
    UPIStatus::Data { v };
}
void upiStatusDataList(const JsonValue &v)
{
    UPIStatus::Data::modelsFromDictionaryArray(v);
}

struct FatalRow
{
    Reader read;
    const char *input;
    const char *diagnostic; // regular expression the diagnostic on stderr must match
};

const FatalRow fatalRows[] = {
    { upiResponseData, R"({"kovenaRefNumber": 7})",
        "UPIResponse::Data: required key \"transactionRefNumber\" is missing" },
    { upiResponseData, R"({"transactionRefNumber": null, "kovenaRefNumber": 7})",
        "UPIResponse::Data: \"transactionRefNumber\" is null, expected a string" },
    { upiResponseData, R"({"transactionRefNumber": 5, "kovenaRefNumber": 7})",
        "\"transactionRefNumber\" is a number, expected a string" },
    { upiResponseData, R"({"transactionRefNumber": "T1"})",
        "UPIResponse::Data: required key \"kovenaRefNumber\" is missing" },
    { upiResponseData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": "7"})",
        "\"kovenaRefNumber\" is a string, expected an integer" },
    { upiResponseData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": null})",
        "\"kovenaRefNumber\" is null, expected an integer" },
    { upiResponseData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7.5})",
        "\"kovenaRefNumber\" is a number, expected an integer within 64 bits" },
    { upiResponseData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 9223372036854775808})",
        "\"kovenaRefNumber\" is a number, expected an integer within 64 bits" },
    { upiResponseData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": true})",
        "\"kovenaRefNumber\" is a boolean, expected an integer" },
    { upiResponseData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7, "upiTxnRefNumber": null})",
        "UPIResponse::Data: \"upiTxnRefNumber\" is null, expected an object" },
    { upiResponseData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7, "upiTxnRefNumber": "U1"})",
        "\"upiTxnRefNumber\" is a string, expected an object" },
    { upiResponseData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7, "upiTxnRefNumber": [{}]})",
        "\"upiTxnRefNumber\" is an array, expected an object" },
    { upiResponseData, "[]", "UPIResponse::Data: dictionary is an array, expected an object" },
    { upiResponseData, "null", "UPIResponse::Data: dictionary is null, expected an object" },
    { upiResponseDataList, R"([{"transactionRefNumber": "T1", "kovenaRefNumber": 7}, 5])",
        "UPIResponse::Data: array element 1 is a number, expected an object" },
    { txnRefNumber, "\"R\"", "UPIResponse::UpiTxnRefNumber: dictionary is a string, expected an object" },
    { txnRefNumberList, "[{}, null]",
        "UPIResponse::UpiTxnRefNumber: array element 1 is null, expected an object" },
    { upiStatus, R"({"data": {}})", "UPIStatus::Data: required key \"transactionRefNumber\" is missing" },
    { upiStatus, R"({"data": null})", "UPIStatus: \"data\" is null, expected an object" },
    { upiStatus, R"({"data": "x"})", "UPIStatus: \"data\" is a string, expected an object" },
    { upiStatus, R"({"data": []})", "UPIStatus: \"data\" is an array, expected an object" },
    { upiStatus, R"({"data": {"transactionRefNumber": "T1"}})",
        "UPIStatus::Data: required key \"kovenaRefNumber\"" },
    { upiStatusData, R"({"transactionRefNumber": "T1", "kovenaRefNumber": "9"})",
        "UPIStatus::Data: \"kovenaRefNumber\" is a string, expected an integer" },
    { upiStatusData, "1", "UPIStatus::Data: dictionary is a number, expected an object" },
    { upiStatusDataList, R"(["x"])", "UPIStatus::Data: array element 0 is a string, expected an object" },
    // A card-number-like value must not reach the diagnostic: it ends right after the expected kind.
    { upiResponseData, R"({"transactionRefNumber": 4111111111111111, "kovenaRefNumber": 7})",
        "\"transactionRefNumber\" is a number, expected a string\n?$" },
};

TEST(StrictSpots, stopWithADiagnosticNamingRecordAndKey)
{
    for (const auto &row : fatalRows) {
        const JsonValue input = json(row.input);
        EXPECT_DEATH(row.read(input), row.diagnostic) << row.input;
    }
}

TEST(StrictSpots, absentOptionalNestedRecordIsNotAnError)
{
    EXPECT_FALSE(
        UPIResponse::Data(json(R"({"transactionRefNumber": "T1", "kovenaRefNumber": 7})")).upiTxnRefNumber);
    const JsonValue status = json(R"({"success": "true"})");
    EXPECT_FALSE(UPIStatus(&status).data);
    EXPECT_EQ(UPIStatus(&status).success, QString("true"));
}

} // namespace
