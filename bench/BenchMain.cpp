// Entry point of kovena_bench: a Qt application (offscreen unless the caller chose a platform)
// around the benchmark run. `--figure NAME [--quick]` runs one end-to-end figure instead and
// prints its table rows (bench/run runs each figure in a process of its own).
#include "Figures.h"

#include <QApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

// The library's diagnostics would only interleave with the results.
void quietKovena(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (context.category && std::strncmp(context.category, "kovena", 6) == 0 && type < QtWarningMsg)
        return;
    std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    // User defaults and the browser profile go to a folder of this run, not the user's home.
    QTemporaryDir home;
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit() + "/data");
    qputenv("XDG_CACHE_HOME", home.path().toLocal8Bit() + "/cache");
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit() + "/config");
    qInstallMessageHandler(quietKovena);

    QString figure;
    kovena::bench::Options options;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--figure") == 0 && i + 1 < argc)
            figure = QString::fromLocal8Bit(argv[++i]);
        else if (std::strcmp(argv[i], "--quick") == 0)
            options.quick = true;
    }

    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    int status = 0;
    if (!figure.isEmpty()) {
        int qtArgc = 1;
        QApplication app(qtArgc, argv);
        status = kovena::bench::runFigure(figure, options);
        kovena::bench::runShutdown();
        return status;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    QApplication app(argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    kovena::bench::runShutdown();
    return status;
}
