#include "platform/UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

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
    QString path() const { return m_dir.filePath(QStringLiteral("defaults.json")); }

    QTemporaryDir m_dir;
};

TEST_F(UserDefaultsTest, KindsAreKeptApartAndSurviveAReopenWithOverwritesAndRemovals)
{
    {
        UserDefaults d(path());
        d.setString(QStringLiteral("accessToken"), QStringLiteral("true"));
        d.setString(QStringLiteral("retry"), QStringLiteral("yes"));
        d.setBool(QStringLiteral("retry"), false); // overwriting changes the kind
        d.setNumber(QStringLiteral("count"), 1.0);
        d.setString(QStringLiteral("empty"), QString());
        d.setString(QStringLiteral("gone"), QStringLiteral("x"));
        d.remove(QStringLiteral("gone"));
    }
    expectEntries(UserDefaults(path()),
        { { "accessToken", QStringLiteral("true") }, { "retry", false }, { "count", 1.0 },
            { "empty", QString() }, { "gone", std::nullopt }, { "absent", std::nullopt } });
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
            { { "a", std::nullopt }, { "b", std::nullopt }, { "c", std::nullopt },
                { "d", QStringLiteral("kept") }, { "e", 2.5 }, { "f", true } } },
    };
    for (const auto &[bytes, entries] : rows) {
        SCOPED_TRACE(bytes.toStdString());
        QFile f(path());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
        f.close();
        UserDefaults d(path());
        expectEntries(d, entries);
        d.setString(QStringLiteral("k"), QStringLiteral("v"));
        expectEntries(UserDefaults(path()), { { "k", QStringLiteral("v") } });
    }
}

TEST_F(UserDefaultsTest, UnwritableLocationReportsFailureButKeepsValuesInMemory)
{
    UserDefaults d(m_dir.filePath(QStringLiteral("missing/folder/defaults.json")));
    d.setString(QStringLiteral("k"), QStringLiteral("v"));
    EXPECT_EQ(d.string(QStringLiteral("k")), QStringLiteral("v"));
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
                d.setNumber(QStringLiteral("t%1-%2").arg(t).arg(i), t * 100 + i);
        });
    for (auto &t : threads)
        t.join();
    UserDefaults reread(path());
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 25; ++i)
            ASSERT_EQ(reread.number(QStringLiteral("t%1-%2").arg(t).arg(i)), t * 100 + i);
}

TEST_F(UserDefaultsTest, StandardStoreMovesWithItsLocationAndResetClearsTheFile)
{
    UserDefaults &standard = UserDefaults::standard();
    const QString previousFile = standard.filePath();
    const QString previousFolder = previousFile.section(QLatin1Char('/'), 0, -2);

    UserDefaults::setStandardLocation(m_dir.path());
    EXPECT_EQ(&UserDefaults::standard(), &standard);
    EXPECT_EQ(standard.filePath(), m_dir.filePath(QStringLiteral("kovena-defaults.json")));
    standard.setString(QStringLiteral("customerEmail"), QStringLiteral("a@b.in"));
    EXPECT_EQ(
        UserDefaults(standard.filePath()).string(QStringLiteral("customerEmail")), QStringLiteral("a@b.in"));

    UserDefaults::resetStandardUserDefaults();
    EXPECT_FALSE(standard.contains(QStringLiteral("customerEmail")));
    EXPECT_FALSE(UserDefaults(standard.filePath()).contains(QStringLiteral("customerEmail")));

    UserDefaults::setStandardLocation(previousFolder);
    EXPECT_EQ(standard.filePath(), previousFile);
}

} // namespace
} // namespace kovena
