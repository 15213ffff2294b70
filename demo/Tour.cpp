#include "Tour.h"

#include <QDate>
#include <QElapsedTimer>
#include <QProcess>

#include <nlohmann/json.hpp>

#include <optional>

using namespace Qt::StringLiterals;

namespace kovena::demo {
namespace {

// Longer than any step's own --timeout, so a hung child is still ended.
constexpr int kStepLimitMs = 120000;

const nlohmann::json *member(const nlohmann::json &object, const char *key)
{
    if (!object.is_object())
        return nullptr;
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::optional<long long> paymentStatus(const nlohmann::json *data)
{
    const nlohmann::json *code = data ? member(*data, "paymentStatus") : nullptr;
    return code && code->is_number_integer() ? std::optional(code->get<long long>()) : std::nullopt;
}

// "Success (1)": the record's description and status.
QString statusText(const nlohmann::json *status)
{
    const nlohmann::json *data = status ? member(*status, "data") : nullptr;
    if (!data || !data->is_object())
        return u"a record without data"_s;
    const nlohmann::json *description = member(*data, "description");
    const std::optional<long long> code = paymentStatus(data);
    return u"%1 (%2)"_s.arg(description && description->is_string()
            ? QString::fromStdString(description->get<std::string>())
            : u"no description"_s,
        code ? QString::number(*code) : u"?"_s);
}

} // namespace

QList<TourStep> tourSteps()
{
    return {
        { u"UPI payment (success@kovena)"_s, { u"--mode"_s, u"1"_s, u"--vpa"_s, u"success@kovena"_s }, 1 },
        { u"Card payment (the sandbox's Visa test card, approved on the bank page)"_s,
            { u"--mode"_s, u"2"_s, u"--card"_s, u"4111111111111111"_s, u"--card-name"_s, u"Asha Rao"_s,
                u"--month"_s, u"12"_s, u"--year"_s, QString::number(QDate::currentDate().year() + 1),
                u"--cvv"_s, u"123"_s, u"--bank-page"_s, u"approve"_s },
            1 },
        { u"Net-banking payment (State Bank of India, approved on the bank page)"_s,
            { u"--mode"_s, u"3"_s, u"--bank"_s, u"SBIB"_s, u"--bank-page"_s, u"approve"_s }, 1 },
        { u"Cancelled payment (Cancel on the payment options)"_s, { u"--mode"_s, u"4"_s, u"--cancel"_s },
            -1 },
        { u"Status enquiry (transaction 42, order ORD-1)"_s,
            { u"--flow"_s, u"status"_s, u"--txn"_s, u"42"_s, u"--order"_s, u"ORD-1"_s }, 1 },
    };
}

TourOutcome describeRun(const TourStep &step, int exitCode, const QByteArray &jsonLines, double seconds)
{
    QStringList outcomes;
    bool expectedSeen = false;
    for (const QByteArray &line : jsonLines.split('\n')) {
        if (line.trimmed().isEmpty())
            continue;
        const auto event = nlohmann::json::parse(line.constBegin(), line.constEnd(), nullptr, false);
        const nlohmann::json *name = event.is_discarded() ? nullptr : member(event, "event");
        if (!name || *name != "onTransactionComplete")
            continue;
        const nlohmann::json *status = member(event, "transactionStatus");
        outcomes.append(statusText(status));
        if (paymentStatus(status ? member(*status, "data") : nullptr) == step.expectedStatus)
            expectedSeen = true;
    }

    TourOutcome outcome;
    QString what = outcomes.isEmpty() ? u"no outcome"_s : outcomes.join(u", then "_s);
    if (exitCode == 3)
        what += u" (gave up waiting)"_s;
    else if (exitCode != 0)
        what += u" (the demo exited with %1)"_s.arg(exitCode);
    outcome.asExpected = exitCode == 0 && outcomes.size() == 1 && expectedSeen;
    outcome.line = u"%1: %2 in %3 s"_s.arg(step.title, what, QString::number(seconds, 'f', 1));
    if (!outcome.asExpected)
        outcome.line += u"  -- expected status %1"_s.arg(step.expectedStatus);
    return outcome;
}

int runTour(const QString &program, const QString &serverUrl, std::FILE *out)
{
    const QList<TourStep> steps = tourSteps();
    std::fprintf(out, "A tour of the checkout: %lld scripted payments and enquiries, headless, against %s.\n",
        static_cast<long long>(steps.size()),
        serverUrl.isEmpty() ? "the built-in sandbox" : qUtf8Printable(serverUrl));
    std::fflush(out);
    int failures = 0;
    for (const TourStep &step : steps) {
        QStringList arguments { u"--headless"_s };
        if (!serverUrl.isEmpty())
            arguments << u"--server"_s << serverUrl;
        arguments += step.arguments;
        QProcess child;
        child.setProgram(program);
        child.setArguments(arguments);
        QElapsedTimer clock;
        clock.start();
        child.start();
        const bool ended = child.waitForFinished(kStepLimitMs);
        if (!ended) {
            child.kill();
            child.waitForFinished();
        }
        const double seconds = static_cast<double>(clock.elapsed()) / 1000.0;
        const int exitCode = !ended || child.exitStatus() != QProcess::NormalExit ? -1 : child.exitCode();
        const TourOutcome outcome = describeRun(step, exitCode, child.readAllStandardOutput(), seconds);
        std::fprintf(out, "%s\n", qUtf8Printable(outcome.line));
        std::fflush(out);
        if (!outcome.asExpected) {
            ++failures;
            // The run's diagnostics say why; they are the library's and the sandbox's, never card data.
            std::fprintf(stderr, "%s", child.readAllStandardError().right(4000).constData());
        }
    }
    std::fprintf(out, "%s\n",
        failures == 0 ? "Every step ended as expected."
                      : qUtf8Printable(u"%1 step(s) did not end as expected."_s.arg(failures)));
    return failures == 0 ? 0 : 1;
}

} // namespace kovena::demo
