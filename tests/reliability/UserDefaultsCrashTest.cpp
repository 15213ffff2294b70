// A writer of the user defaults killed with SIGKILL at random moments, 200 times over. After
// every kill the file reads whole, with the value of the last write that finished or of the one
// that had begun: never damaged, empty or missing; and once the store is opened again no
// temporary file is left beside it.
#include "DefaultsPayload.h"

#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <random>

using namespace kovena;
using namespace kovena::test;

namespace {

constexpr int kKills = 200;
constexpr int kWaitMs = 10000;

// The last write the writer said it began and the last it said it finished; -1 for none.
struct Progress
{
    int begun = -1;
    int done = -1;
};

void readLines(QProcess &writer, Progress &progress)
{
    while (writer.canReadLine()) {
        const QByteArray line = writer.readLine().trimmed();
        const int generation = line.mid(line.indexOf(' ') + 1).toInt();
        if (line.startsWith("begin "))
            progress.begun = generation;
        else if (line.startsWith("done "))
            progress.done = generation;
        else
            ADD_FAILURE() << "unexpected line from the writer: " << line.constData();
    }
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

TEST(UserDefaultsCrash, EveryKillLeavesTheOldOrTheNewContent)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString fileName = QStringLiteral("kovena-defaults.json");
    const QString path = dir.filePath(fileName);
    {
        UserDefaults seed(path);
        seed.setString(QStringLiteral("accessToken"), QStringLiteral("tok-1")); // the writer never touches it
        seed.setString(QStringLiteral("payload"), defaultsPayload(0));
    }

    const unsigned seed = std::random_device {}();
    SCOPED_TRACE("random seed " + std::to_string(seed));
    std::mt19937 random(seed);
    // -1: kill as soon as the writer runs, perhaps before it has written anything; n: kill once
    // it has begun its (n + 1)th write.
    std::uniform_int_distribution<int> killAfter(-1, 5);

    int onDisk = 0; // the write number the file holds
    int killedMidWrite = 0;
    for (int round = 0; round < kKills; ++round) {
        SCOPED_TRACE("kill " + std::to_string(round + 1));
        QProcess writer;
        writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        writer.start(QStringLiteral(KOVENA_DEFAULTS_WRITER), { path });
        ASSERT_TRUE(writer.waitForStarted(kWaitMs));

        Progress progress;
        const int target = killAfter(random);
        const int killOnceBegun = onDisk + 1 + target;
        while (target >= 0 && progress.begun < killOnceBegun) {
            ASSERT_TRUE(writer.canReadLine() || writer.waitForReadyRead(kWaitMs)) << "the writer went quiet";
            readLines(writer, progress);
        }
        ::kill(static_cast<pid_t>(writer.processId()), SIGKILL);
        ASSERT_TRUE(writer.waitForFinished(kWaitMs));
        ASSERT_EQ(writer.exitStatus(), QProcess::CrashExit) << "killed, not finished";
        readLines(writer, progress);

        const int oldContent = progress.done >= 0 ? progress.done : onDisk;
        const int newContent = progress.begun >= 0 ? progress.begun : onDisk;
        killedMidWrite += newContent != oldContent ? 1 : 0;

        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "the file is missing";
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
        ASSERT_EQ(error.error, QJsonParseError::NoError) << "damaged: " << qPrintable(error.errorString());
        const QJsonObject root = document.object();
        EXPECT_EQ(root.size(), 2);
        EXPECT_EQ(root.value(QStringLiteral("accessToken")).toString(), QStringLiteral("tok-1"));
        const QString payload = root.value(QStringLiteral("payload")).toString();
        const int generation = defaultsGeneration(payload);
        ASSERT_TRUE(generation == oldContent || generation == newContent)
            << "write " << generation << " on disk; expected " << oldContent << " or " << newContent;
        ASSERT_EQ(payload, defaultsPayload(generation)) << "a value cut short";
        // A kill between a save's temporary file and its rename leaves that file behind; the store
        // removes it when it is next opened.
        EXPECT_EQ(UserDefaults(path).string(QStringLiteral("payload")), payload);
        EXPECT_EQ(filesIn(dir.path()), QStringList { fileName }) << "a temporary file stayed behind";
        onDisk = generation;
    }
    // Most kills land inside a write, since writing is nearly all the writer does.
    EXPECT_GT(killedMidWrite, 0);
}

// The temporary file of a save that never got renamed holds a copy of the store; opening the
// store removes it, and only it.
TEST(UserDefaultsCrash, OpeningTheStoreRemovesAnInterruptedSave)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("kovena-defaults.json"));
    UserDefaults(path).setString(QStringLiteral("accessToken"), QStringLiteral("tok-1"));
    QFile store(path);
    ASSERT_TRUE(store.open(QIODevice::ReadOnly));
    const QByteArray content = store.readAll();

    const QStringList others { QStringLiteral("kovena-defaults.json.bak"),
        QStringLiteral("kovena-defaults.json.lHSDN1"), QStringLiteral("other.json.lHSDNW") };
    for (const QString &name : others + QStringList { QStringLiteral("kovena-defaults.json.lHSDNW") }) {
        QFile file(dir.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    UserDefaults reopened(path);
    EXPECT_EQ(reopened.string(QStringLiteral("accessToken")), QStringLiteral("tok-1"));
    QStringList expected = others + QStringList { QStringLiteral("kovena-defaults.json") };
    expected.sort();
    EXPECT_EQ(filesIn(dir.path()), expected);
}

} // namespace
