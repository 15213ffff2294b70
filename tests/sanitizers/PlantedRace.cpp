// A data race planted on purpose: two threads write one plain int with nothing ordering them.
// ThreadSanitizer must report it with the project's suppressions in force, or those
// suppressions could hide a race of our own. Two shapes of it:
//   threads - two std::threads, our code only;
//   qt      - one write from a block the main event loop runs, one from a block a QThread's
//             event loop runs, so that both stacks pass through Qt's event dispatch as every
//             block of the library does.
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>

namespace {

int g_planted = 0;

[[gnu::noinline]] void plantedWrite(int value)
{
    g_planted = value;
}

int raceThreads()
{
    std::thread first([] { plantedWrite(1); });
    std::thread second([] { plantedWrite(2); });
    first.join();
    second.join();
    return 0;
}

int raceQt(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QThread worker;
    QObject context;
    context.moveToThread(&worker);
    worker.start();
    // A relaxed flag orders nothing for the sanitizer: it only makes the main thread's write come
    // after the worker's, before either thread does anything that could order them (a quit sent
    // to the worker's loop would).
    static std::atomic<bool> workerWrote { false };
    QMetaObject::invokeMethod(
        &context,
        [] {
            plantedWrite(1);
            workerWrote.store(true, std::memory_order_relaxed);
        },
        Qt::QueuedConnection);
    QTimer::singleShot(0, &app, [] {
        QDeadlineTimer deadline(10000);
        while (!workerWrote.load(std::memory_order_relaxed) && !deadline.hasExpired())
            QThread::yieldCurrentThread();
        plantedWrite(2);
        QCoreApplication::quit();
    });
    const int result = app.exec();
    worker.quit();
    worker.wait();
    return result;
}

} // namespace

int main(int argc, char **argv)
{
    const char *shape = argc > 1 ? argv[1] : "";
    if (std::strcmp(shape, "threads") == 0)
        return raceThreads();
    if (std::strcmp(shape, "qt") == 0)
        return raceQt(argc, argv);
    std::fprintf(stderr, "usage: %s threads|qt\n", argv[0]);
    return 2;
}
