#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdio>

namespace kovena::demo {

// One scripted flow of the tour: the headless runner's arguments and the payment status it ends
// with against the sandbox.
struct TourStep
{
    QString title; // "UPI payment (success@kovena)"
    QStringList arguments; // for kovena-demo --headless
    long long expectedStatus = 0;
};

// A UPI, a card and a net-banking payment, a cancellation and a status enquiry.
QList<TourStep> tourSteps();

// What one headless run ended with, from its exit code and its JSON lines.
struct TourOutcome
{
    QString line; // "UPI payment (success@kovena): Success (1) in 21.4 s"
    bool asExpected = false;
};
TourOutcome describeRun(const TourStep &step, int exitCode, const QByteArray &jsonLines, double seconds);

// Runs every step as its own `program --headless ...` process (each with its own sandbox, or
// against `serverUrl`), one after another, and prints one line per outcome to `out`. Returns 0
// when every step ended as expected, 1 otherwise.
int runTour(const QString &program, const QString &serverUrl, std::FILE *out);

} // namespace kovena::demo
