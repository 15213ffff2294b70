// The Qt property face of TransactionStatus: the five strings, read and written through QObject.
#include "RecordFixtures.h"

#include <gtest/gtest.h>

#include <QMetaProperty>
#include <QVariant>

#include <set>

using namespace kovena;
using fixtures::json;

namespace {

struct PropertyRow
{
    const char *name;
    std::optional<QString> TransactionStatus::*member;
};

const PropertyRow properties[] = {
    { "success", &TransactionStatus::success },
    { "responseCode", &TransactionStatus::responseCode },
    { "secureHash", &TransactionStatus::secureHash },
    { "responseMessage", &TransactionStatus::responseMessage },
    { "csrfToken", &TransactionStatus::csrfToken },
};

TEST(TransactionStatusProperties, publishesTheFiveStringsAndNotData)
{
    std::set<std::string> published;
    const QMetaObject *meta = TransactionStatus().metaObject();
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        EXPECT_EQ(meta->property(i).metaType(), QMetaType::fromType<QString>()) << meta->property(i).name();
        EXPECT_TRUE(meta->property(i).isWritable()) << meta->property(i).name();
        published.insert(meta->property(i).name());
    }
    EXPECT_EQ(published,
        (std::set<std::string> { "success", "responseCode", "secureHash", "responseMessage", "csrfToken" }));
}

TEST(TransactionStatusProperties, absentReadsAsNullAndPresentAsItsText)
{
    const JsonValue reply = json(R"({"success": "", "responseCode": "200TRANSRESPSUCC", "secureHash": "h",
                                     "responseMessage": "m", "csrfToken": "c"})");
    for (const auto &row : properties) {
        TransactionStatus blank;
        const QVariant absent = blank.property(row.name);
        ASSERT_TRUE(absent.isValid()) << row.name;
        EXPECT_TRUE(absent.toString().isNull()) << row.name;

        const TransactionStatus parsed(&reply);
        const QVariant present = parsed.property(row.name);
        EXPECT_FALSE(present.toString().isNull()) << row.name;
        EXPECT_EQ(present.toString(), *(parsed.*row.member)) << row.name;
    }
}

TEST(TransactionStatusProperties, writingSetsTheFieldAndNullClearsIt)
{
    for (const auto &row : properties) {
        TransactionStatus status;
        ASSERT_TRUE(status.setProperty(row.name, QString("value"))) << row.name;
        EXPECT_EQ(status.*row.member, QString("value")) << row.name;
        EXPECT_EQ(status.dictionaryRepresentation().value(row.name, ""), "value") << row.name;

        ASSERT_TRUE(status.setProperty(row.name, QString(""))) << row.name;
        EXPECT_TRUE(status.*row.member) << "an empty text is present: " << row.name;

        ASSERT_TRUE(status.setProperty(row.name, QString())) << row.name;
        EXPECT_FALSE(status.*row.member) << row.name;
        EXPECT_FALSE(status.dictionaryRepresentation().contains(row.name)) << row.name;
    }
}

} // namespace
