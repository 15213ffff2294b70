// The generic mapping's list fields, on records defined here: a list of strictly read elements,
// lenient towards a non-array value, one read but never written back and one written.
#include "model/RecordMapping.h"

#include "RecordFixtures.h"

#include <gtest/gtest.h>

#include <array>

using namespace kovena;
using fixtures::json;

namespace {

class Entry : public MappedRecord<Entry, Dictionary::Required>
{
public:
    Entry() = default;
    explicit Entry(const JsonValue &dictionary) { mapping::readRequired(*this, dictionary); }

    std::optional<qint64> id;
    std::optional<QString> name;
};

class Catalogue : public MappedRecord<Catalogue, Dictionary::Required>
{
public:
    explicit Catalogue(const JsonValue &dictionary) { mapping::readRequired(*this, dictionary); }

    std::optional<QString> success;
    std::optional<QList<std::shared_ptr<Entry>>> entries, archive;
};

} // namespace

namespace kovena::mapping {

template<> const RecordTable<Entry> &table<Entry>()
{
    static constexpr std::array fields { field<Entry, &Entry::id>("id"), field<Entry, &Entry::name>("name") };
    static constexpr RecordTable<Entry> t { "Entry", fields };
    return t;
}

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

TEST(ListField, absentOnlyWhenMissingAndEmptyWhenNotAnArray)
{
    const std::pair<const char *, std::optional<qsizetype>> rows[] = { { "{}", std::nullopt },
        { R"({"entries": null})", 0 }, { R"({"entries": {}})", 0 }, { R"({"entries": "x"})", 0 },
        { R"({"entries": []})", 0 }, { R"({"entries": [{"id": 3}, {"Name": "B"}]})", 2 } };
    for (const auto &[input, size] : rows) {
        const Catalogue catalogue(json(input));
        EXPECT_EQ(catalogue.entries ? std::optional(catalogue.entries->size()) : std::nullopt, size) << input;
    }
}

TEST(ListField, keepsOrderReadsElementsLenientlyAndWritesOnlyWritableLists)
{
    const Catalogue catalogue(
        json(R"({"success": "true", "entries": [{"id": 3, "name": "A"}, {"Name": "B", "id": "4"}],
                                       "archive": [{"name": "old"}, {"id": 2}]})"));
    ASSERT_EQ(catalogue.entries->size(), 2);
    EXPECT_EQ(catalogue.entries->at(0)->id, 3);
    EXPECT_EQ(catalogue.entries->at(0)->name, QString("A"));
    EXPECT_EQ(*catalogue.entries->at(1), Entry());
    EXPECT_EQ(catalogue.dictionaryRepresentation().dump(),
        R"({"success":"true","archive":[{"name":"old"},{"id":2}]})");
    EXPECT_EQ(Catalogue(json(R"({"archive": 1})")).dictionaryRepresentation().dump(), R"({"archive":[]})");
}

TEST(ListField, nonObjectElementIsFatal)
{
    EXPECT_DEATH(Catalogue(json(R"({"entries": [{"id": 1}, 1]})")),
        "Entry: array element 1 is a number, expected an object");
}

} // namespace
