#include "Figures.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QMap>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kovena::bench {

namespace {

QMap<QString, Figure> &figures()
{
    static QMap<QString, Figure> all;
    return all;
}

std::vector<std::function<void()>> &cleanups()
{
    static std::vector<std::function<void()>> all;
    return all;
}

} // namespace

void printRow(const Row &row, const Options &options)
{
    const QString pass = options.quick || !row.judged ? u"-"_s : (row.pass ? u"yes"_s : u"NO"_s);
    const QString line
        = QStringList { u"row"_s, row.figure, row.measured, row.baseline, row.ratio, row.budget, pass }.join(
            u'\t');
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

bool registerFigure(const char *name, Figure figure)
{
    figures().insert(QString::fromLatin1(name), std::move(figure));
    return true;
}

int runFigure(const QString &name, const Options &options)
{
    const auto found = figures().constFind(name);
    if (found == figures().cend()) {
        std::fprintf(stderr, "kovena_bench: no figure named '%s'; known: %s\n", qPrintable(name),
            qPrintable(figures().keys().join(u", "_s)));
        return 2;
    }
    return (*found)(options);
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const std::size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

QString micros(double seconds)
{
    return QString::number(seconds * 1e6, 'f', 1) + u" us"_s;
}

QString millis(double seconds)
{
    return QString::number(seconds * 1e3, 'f', 2) + u" ms"_s;
}

QString megabytes(double bytes)
{
    return QString::number(bytes / (1024.0 * 1024.0), 'f', 2) + u" MB"_s;
}

QString times(double ratio)
{
    return QString::number(ratio, 'f', 3) + u"x"_s;
}

bool waitUntil(const std::function<bool()> &done, int timeoutMs)
{
    // Sleeps in the event loop until something arrives, so a reply is handled the moment it
    // lands; the timer only bounds the wait.
    QDeadlineTimer deadline(timeoutMs);
    QTimer tick;
    tick.start(20);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

double residentBytes()
{
    QFile statm(u"/proc/self/statm"_s);
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toDouble() * double(sysconf(_SC_PAGESIZE)) : 0;
}

double processCpuSeconds()
{
    timespec now {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

void atShutdown(std::function<void()> cleanup)
{
    cleanups().push_back(std::move(cleanup));
}

void runShutdown()
{
    auto all = std::exchange(cleanups(), {});
    for (auto it = all.rbegin(); it != all.rend(); ++it)
        (*it)();
}

} // namespace kovena::bench
