#include "platform/UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace kovena {
namespace {

class UserDefaultsTest : public ::testing::Test
{
protected:
    QString path() const { return m_dir.filePath(QStringLiteral("defaults.json")); }
    void writeRaw(const QByteArray &bytes)
    {
        QFile f(path());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }

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
    UserDefaults d(path());
    struct Row
    {
        const char *key;
        bool isString, isBool, isNumber;
    };
    for (const Row &r : { Row { "accessToken", true, false, false }, Row { "retry", false, true, false },
             Row { "count", false, false, true }, Row { "empty", true, false, false },
             Row { "gone", false, false, false }, Row { "absent", false, false, false } }) {
        const QString key = QString::fromLatin1(r.key);
        SCOPED_TRACE(r.key);
        EXPECT_EQ(d.string(key).has_value(), r.isString);
        EXPECT_EQ(d.boolean(key).has_value(), r.isBool);
        EXPECT_EQ(d.number(key).has_value(), r.isNumber);
        EXPECT_EQ(d.contains(key), r.isString || r.isBool || r.isNumber);
    }
    EXPECT_EQ(d.string(QStringLiteral("accessToken")), QStringLiteral("true"));
    EXPECT_EQ(d.boolean(QStringLiteral("retry")), false);
    EXPECT_EQ(d.number(QStringLiteral("count")), 1.0);
    EXPECT_EQ(d.string(QStringLiteral("empty")), QString());
}

TEST_F(UserDefaultsTest, DamagedOrForeignFileLoadsAsEmptyAndIsReplacedOnWrite)
{
    for (const QByteArray &bytes : { QByteArray("{ not json"), QByteArray("[1, 2, 3]"),
             QByteArray("\"just a string\""), QByteArray("") }) {
        SCOPED_TRACE(bytes.toStdString());
        writeRaw(bytes);
        UserDefaults d(path());
        EXPECT_FALSE(d.contains(QStringLiteral("anything")));
        d.setString(QStringLiteral("k"), QStringLiteral("v"));
        EXPECT_EQ(UserDefaults(path()).string(QStringLiteral("k")), QStringLiteral("v"));
    }
}

TEST_F(UserDefaultsTest, UnsupportedValuesInTheFileAreSkipped)
{
    writeRaw(R"({"a": null, "b": [1], "c": {"x": 1}, "d": "kept", "e": 2.5})");
    UserDefaults d(path());
    EXPECT_FALSE(d.contains(QStringLiteral("a")));
    EXPECT_FALSE(d.contains(QStringLiteral("b")));
    EXPECT_FALSE(d.contains(QStringLiteral("c")));
    EXPECT_EQ(d.string(QStringLiteral("d")), QStringLiteral("kept"));
    EXPECT_EQ(d.number(QStringLiteral("e")), 2.5);
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
