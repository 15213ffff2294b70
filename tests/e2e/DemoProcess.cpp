#include "DemoProcess.h"

#include <QProcessEnvironment>

#include <climits>

namespace kovena::e2e {
namespace {

QString field(const nlohmann::ordered_json &object, const char *key)
{
    const auto it = object.find(key);
    return it != object.end() && it->is_string() ? QString::fromStdString(it->get<std::string>()) : QString();
}

QStringList eventTexts(const std::vector<nlohmann::ordered_json> &events, const char *kind, const char *key)
{
    QStringList texts;
    for (const auto &event : events) {
        if (event.value("event", "") == kind)
            texts << field(event, key);
    }
    return texts;
}

// The record's "data" object, or null.
nlohmann::ordered_json dataOf(const nlohmann::ordered_json &record)
{
    const auto data
        = record.is_object() ? record.value("data", nlohmann::ordered_json()) : nlohmann::ordered_json();
    return data.is_object() ? data : nlohmann::ordered_json();
}

} // namespace

std::vector<nlohmann::ordered_json> DemoRun::callbacks() const
{
    std::vector<nlohmann::ordered_json> records;
    for (const auto &event : events) {
        if (event.value("event", "") == "onTransactionComplete")
            records.push_back(event.value("transactionStatus", nlohmann::ordered_json()));
    }
    return records;
}

std::vector<long long> DemoRun::paymentStatuses() const
{
    std::vector<long long> statuses;
    for (const auto &record : callbacks()) {
        const auto data = dataOf(record);
        const auto it = data.find("paymentStatus");
        statuses.push_back(it != data.end() && it->is_number_integer() ? it->get<long long>() : LLONG_MIN);
    }
    return statuses;
}

QStringList DemoRun::descriptions() const
{
    QStringList texts;
    for (const auto &record : callbacks())
        texts << field(dataOf(record), "description");
    return texts;
}

QStringList DemoRun::toasts() const
{
    return eventTexts(events, "toast", "message");
}

QStringList DemoRun::screens() const
{
    return eventTexts(events, "screen", "name");
}

void expectTokenOnlyInTheFacadeLine(const DemoRun &run)
{
    if (run.accessToken.isEmpty())
        return; // nothing to look for
    QStringList lines;
    for (const QString &output : { run.standardOutput, run.standardError })
        for (const QString &line : output.split(u'\n'))
            if (line.contains(run.accessToken))
                lines << line;
    ASSERT_EQ(lines.size(), 1) << lines.join(u'\n').toStdString();
    EXPECT_TRUE(lines[0].endsWith(QStringLiteral("---Merchant Access Token") + run.accessToken))
        << lines[0].toStdString();
}

bool endedWithOneReport(const DemoRun &run, long long paymentStatus, const QString &description)
{
    EXPECT_TRUE(run.exitedWith(0));
    EXPECT_TRUE(run.malformedLines.isEmpty());
    EXPECT_EQ(run.paymentStatuses(), std::vector<long long> { paymentStatus });
    EXPECT_EQ(run.descriptions(), QStringList { description });
    return run.paymentStatuses().size() == 1;
}

std::string DemoRun::transcript() const
{
    std::string text = "exit: ";
    text += !finished ? "still running at the limit"
                      : (exitStatus == QProcess::CrashExit ? "crashed" : "code " + std::to_string(exitCode));
    text += "\n--- stdout\n";
    for (const auto &event : events)
        text += event.dump() + '\n';
    for (const QString &line : malformedLines)
        text += "(not an event) " + line.toStdString() + '\n';
    text += "--- stderr (last 4000 characters)\n" + standardError.right(4000).toStdString();
    return text;
}

DemoRun runHeadlessDemo(const QStringList &arguments, int limitMs, const QProcessEnvironment &extra)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("QTWEBENGINE_DISABLE_SANDBOX"), QStringLiteral("1"));
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("kovena*.debug=true"));
    environment.insert(extra);
    process.setProcessEnvironment(environment);
    process.setProgram(QStringLiteral(KOVENA_DEMO_EXE));
    process.setArguments(QStringList { QStringLiteral("--headless") } + arguments);
    process.start();

    DemoRun run;
    // The last "--token" wins, as on the demo's command line.
    run.accessToken = QStringLiteral("demo-token");
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == u"--token" && i + 1 < arguments.size())
            run.accessToken = arguments[i + 1];
        else if (arguments[i].startsWith(u"--token="))
            run.accessToken = arguments[i].mid(8);
    }
    if (!process.waitForStarted(10000)) {
        run.standardError = QStringLiteral("could not start ") + process.program() + QStringLiteral(": ")
            + process.errorString();
        return run;
    }
    run.finished = process.waitForFinished(limitMs);
    if (!run.finished) {
        process.kill();
        process.waitForFinished(5000);
    } else {
        run.exitStatus = process.exitStatus();
        run.exitCode = process.exitCode();
    }

    const QByteArray output = process.readAllStandardOutput();
    run.standardOutput = QString::fromUtf8(output);
    for (const QByteArray &line : output.split('\n')) {
        if (line.isEmpty())
            continue;
        auto event = nlohmann::ordered_json::parse(line.constBegin(), line.constEnd(), nullptr, false);
        if (event.is_discarded() || !event.is_object() || !event.contains("event"))
            run.malformedLines << QString::fromUtf8(line);
        else
            run.events.push_back(std::move(event));
    }
    run.standardError = QString::fromUtf8(process.readAllStandardError());
    return run;
}

} // namespace kovena::e2e
