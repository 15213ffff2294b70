#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <vector>

namespace kovena::e2e {

// One run of the built kovena-demo, and what it printed.
struct DemoRun
{
    bool finished = false; // false: still running at the limit, and killed
    QProcess::ExitStatus exitStatus = QProcess::NormalExit;
    int exitCode = -1;
    std::vector<nlohmann::ordered_json> events; // stdout, one object per line
    QStringList malformedLines; // stdout lines that are not a JSON object with "event"
    QString standardOutput; // as printed
    QString standardError;
    QString accessToken; // the token the flow was started with (the demo's own unless given)

    bool exitedWith(int code) const
    {
        return finished && exitStatus == QProcess::NormalExit && exitCode == code;
    }
    // Ended by a signal (abort) or a non-zero exit code.
    bool failed() const { return finished && (exitStatus == QProcess::CrashExit || exitCode != 0); }

    std::vector<nlohmann::ordered_json> callbacks() const; // the transactionStatus objects
    std::vector<long long> paymentStatuses() const; // data.paymentStatus of each callback
    QStringList descriptions() const; // data.description of each callback
    QStringList toasts() const;
    QStringList screens() const;
    // Everything the run printed, for failure messages.
    std::string transcript() const;
};

// With every kovena* category on debug, the access token shows in one line only: the facade's
// "---Merchant Access Token" line as the flow starts.
void expectTokenOnlyInTheFacadeLine(const DemoRun &run);

// The run ended normally, printed JSON events only and called the merchant once, with this status
// and description. False unless there was exactly one call, so that a test can stop there.
bool endedWithOneReport(const DemoRun &run, long long paymentStatus, const QString &description);

// Runs `kovena-demo --headless <arguments>` and waits for it to end (at most `limitMs`), with
// `environment` added to the test's own. Unless `environment` sets QT_LOGGING_RULES, every
// kovena* category logs at debug level, so each run shows what the library prints.
DemoRun runHeadlessDemo(
    const QStringList &arguments, int limitMs = 90000, const QProcessEnvironment &environment = {});

} // namespace kovena::e2e
