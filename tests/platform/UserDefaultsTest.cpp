#include "platform/UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace kovena {
namespace {

using Entries = std::vector<std::pair<const char *, std::optional<UserDefaults::Value>>>;

// Each key holds exactly its value, of its kind, through every accessor (nullopt: the key is absent).
void expectEntries(const UserDefaults &d, const Entries &entries)
{
    for (const auto &[name, value] : entries) {
        SCOPED_TRACE(name);
        const QString key = QString::fromLatin1(name);
        const auto as = [&value]<class T>(T) {
            return value && std::holds_alternative<T>(*value) ? std::optional<T>(std::get<T>(*value))
                                                              : std::nullopt;
        };
        EXPECT_EQ(d.object(key), value);
        EXPECT_EQ(d.string(key), as(QString()));
        EXPECT_EQ(d.boolean(key), as(false));
        EXPECT_EQ(d.number(key), as(0.0));
        EXPECT_EQ(d.contains(key), value.has_value());
    }
}

class UserDefaultsTest : public ::testing::Test
{
protected:
    QString path() const { return m_dir.filePath(u"defaults.json"_s); }

    QTemporaryDir m_dir;
};

TEST_F(UserDefaultsTest, KindsAreKeptApartAndSurviveAReopenWithOverwritesAndRemovals)
{
    {
        UserDefaults d(path());
        d.setString(u"accessToken"_s, u"true"_s);
        d.setString(u"retry"_s, u"yes"_s);
        d.setBool(u"retry"_s, false); // overwriting changes the kind
        d.setNumber(u"count"_s, 1.0);
        d.setString(u"empty"_s, QString());
        d.setString(u"gone"_s, u"x"_s);
        d.remove(u"gone"_s);
    }
    expectEntries(UserDefaults(path()),
        { { "accessToken", u"true"_s }, { "retry", false }, { "count", 1.0 }, { "empty", QString() },
            { "gone", std::nullopt }, { "absent", std::nullopt } });
}

// A file that is not a JSON object loads as empty; in one that is, only the kinds the store
// keeps load. Either way the next write replaces the file.
TEST_F(UserDefaultsTest, AFileLoadsOnlyWhatTheStoreKeepsAndTheNextWriteReplacesIt)
{
    const std::pair<QByteArray, Entries> rows[] = {
        { "{ not json", { { "anything", std::nullopt } } },
        { "[1, 2, 3]", { { "anything", std::nullopt } } },
        { "\"just a string\"", { { "anything", std::nullopt } } },
        { "", { { "anything", std::nullopt } } },
        { R"({"a": null, "b": [1], "c": {"x": 1}, "d": "kept", "e": 2.5, "f": true})",
            { { "a", std::nullopt }, { "b", std::nullopt }, { "c", std::nullopt }, { "d", u"kept"_s },
                { "e", 2.5 }, { "f", true } } },
    };
    for (const auto &[bytes, entries] : rows) {
        SCOPED_TRACE(bytes.toStdString());
        QFile f(path());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
        f.close();
        UserDefaults d(path());
        expectEntries(d, entries);
        d.setString(u"k"_s, u"v"_s);
        expectEntries(UserDefaults(path()), { { "k", u"v"_s } });
    }
}

TEST_F(UserDefaultsTest, UnwritableLocationReportsFailureButKeepsValuesInMemory)
{
    UserDefaults d(m_dir.filePath(u"missing/folder/defaults.json"_s));
    d.setString(u"k"_s, u"v"_s);
    EXPECT_EQ(d.string(u"k"_s), u"v"_s);
    EXPECT_FALSE(d.synchronize());
    UserDefaults memoryOnly { QString() };
    EXPECT_TRUE(memoryOnly.synchronize());
}

TEST_F(UserDefaultsTest, ConcurrentWritersLoseNothing)
{
    UserDefaults d(path());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&d, t] {
            for (int i = 0; i < 25; ++i)
                d.setNumber(u"t%1-%2"_s.arg(t).arg(i), t * 100 + i);
        });
    for (auto &t : threads)
        t.join();
    UserDefaults reread(path());
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 25; ++i)
            ASSERT_EQ(reread.number(u"t%1-%2"_s.arg(t).arg(i)), t * 100 + i);
}

TEST_F(UserDefaultsTest, StandardStoreMovesWithItsLocationAndResetClearsTheFile)
{
    UserDefaults &standard = UserDefaults::standard();
    const QString previousFile = standard.filePath();
    const QString previousFolder = previousFile.section(QLatin1Char('/'), 0, -2);

    UserDefaults::setStandardLocation(m_dir.path());
    EXPECT_EQ(&UserDefaults::standard(), &standard);
    EXPECT_EQ(standard.filePath(), m_dir.filePath(u"kovena-defaults.json"_s));
    standard.setString(u"customerEmail"_s, u"a@b.in"_s);
    EXPECT_EQ(UserDefaults(standard.filePath()).string(u"customerEmail"_s), u"a@b.in"_s);

    UserDefaults::resetStandardUserDefaults();
    EXPECT_FALSE(standard.contains(u"customerEmail"_s));
    EXPECT_FALSE(UserDefaults(standard.filePath()).contains(u"customerEmail"_s));

    UserDefaults::setStandardLocation(previousFolder);
    EXPECT_EQ(standard.filePath(), previousFile);
}

} // namespace
} // namespace kovena
