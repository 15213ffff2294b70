// The reply reader against the JSON library's parser on the texts where a hand-made reader
// goes wrong first, and the depth limit on both sides of it.
#include "api/JsonReader.h"

#include <gtest/gtest.h>

using namespace kovena;

namespace {

struct ReadCase
{
    const char *name;
    std::string text;
};

const ReadCase kTexts[] = {
    { "repeatedKeyKeepsFirstPlaceLastValue", R"({"a":1,"b":2,"a":{"c":3}})" },
    { "numberKinds",
        "[0,-0,1.0,-1,18446744073709551615,18446744073709551616,-9223372036854775808,"
        "-9223372036854775809,1e-400,2.5E+3]" },
    { "escapesAndSurrogatePair", R"(["\"\\\/\b\f\n\r\t","\u00e9\u20ac","\ud83d\ude00","\u0000"])" },
    { "utf8UpToFourBytes", "\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\"" },
    { "byteOrderMarkAndSpace", "\xef\xbb\xbf \t\r\n{ \"a\" : [ ] , \"b\" : { } } \n" },
    { "nulEndsTheText", std::string("{\"a\":1}\0junk", 12) },
    { "scalarDocument", "12" },
    { "loneLowSurrogate", R"(["\udc00"])" },
    { "highSurrogateAlone", R"(["\ud800x"])" },
    { "encodedSurrogate", "\"\xed\xa0\x80\"" },
    { "overlongEncoding", "\"\xc0\x80\"" },
    { "beyondUnicode", "\"\xf4\x90\x80\x80\"" },
    { "rawControlCharacter", "\"a\tb\"" },
    { "leadingZero", "01" },
    { "bareFraction", "1." },
    { "numberBeyondDouble", R"({"a":1e400})" },
    { "trailingComma", "[1,]" },
    { "unquotedKey", "{a:1}" },
    { "secondValue", "{} {}" },
    { "empty", "" },
    { "comment", "/* */ {}" },
};

class JsonReaderTest : public testing::TestWithParam<ReadCase>
{
};

TEST_P(JsonReaderTest, AcceptsAndBuildsWhatTheLibraryParserDoes)
{
    const std::string &text = GetParam().text;
    const QByteArray body(text.data(), qsizetype(text.size()));
    std::string fault;
    const std::optional<JsonValue> read = JsonReader::read(body, fault);
    const JsonValue expected = JsonValue::parse(text.begin(), text.end(), nullptr, false);
    ASSERT_EQ(read.has_value(), !expected.is_discarded()) << fault;
    if (read) {
        EXPECT_EQ(read->dump(), expected.dump()) << "kinds of numbers and order of keys included";
        EXPECT_TRUE(fault.empty());
    } else {
        EXPECT_FALSE(fault.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, JsonReaderTest, testing::ValuesIn(kTexts),
    [](const testing::TestParamInfo<ReadCase> &info) { return std::string(info.param.name); });

TEST(JsonReader, RefusesNestingBeyondTheLimitWithoutQuotingTheText)
{
    const auto nested
        = [](int depth) { return QByteArray(depth, '[') + "\"secret\"" + QByteArray(depth, ']'); };
    std::string fault;
    EXPECT_TRUE(JsonReader::read(nested(JsonReader::kMaxDepth), fault).has_value()) << fault;
    EXPECT_FALSE(JsonReader::read(nested(JsonReader::kMaxDepth + 1), fault).has_value());
    EXPECT_EQ(fault, "nested deeper than 512 levels");
    EXPECT_FALSE(JsonReader::read(nested(100000), fault).has_value());

    EXPECT_FALSE(JsonReader::read(R"({"card":"4111 secret)", fault).has_value());
    EXPECT_EQ(fault.find("secret"), std::string::npos) << fault;
}

} // namespace
