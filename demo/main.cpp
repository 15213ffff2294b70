// kovena-demo: the merchant test application. Opens a merchant window; with --headless runs one
// scripted flow offscreen and prints its events as JSON lines; with --tour runs several such
// flows and prints one readable line per outcome.
#include "DemoBackend.h"
#include "DemoOptions.h"
#include "EventPrinter.h"
#include "HeadlessRun.h"
#include "MerchantWindow.h"
#include "Tour.h"

#include "platform/UserDefaults.h"

#include <QApplication>
#include <QTemporaryDir>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

constexpr int kExitUsage = 2;

// Every Qt and library diagnostic goes to stderr: stdout belongs to the event stream.
void messageToStderr(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QString line = qFormatLogMessage(type, context, message);
    std::fprintf(stderr, "%s\n", qUtf8Printable(line));
    std::fflush(stderr);
    if (type == QtFatalMsg)
        std::abort();
}

bool hasSwitch(int argc, char **argv, const char *name)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], name) == 0)
            return true;
    }
    return false;
}

int usageError(const QString &error, const QString &helpText)
{
    std::fprintf(stderr, "kovena-demo: %s\n\n%s", qUtf8Printable(error), qUtf8Printable(helpText));
    return kExitUsage;
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(messageToStderr);
    // Checked before the application exists: the platform plugin is chosen when it is created.
    if (hasSwitch(argc, argv, "--headless") || hasSwitch(argc, argv, "-headless")
        || hasSwitch(argc, argv, "--tour") || hasSwitch(argc, argv, "-tour"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The bank page's browser refuses to start its own sandbox as root.
    if (::geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);

    QApplication app(argc, argv);
    QApplication::setApplicationName(u"kovena-demo"_s);
    QApplication::setApplicationVersion(QStringLiteral(KOVENA_VERSION));
    QApplication::setOrganizationName(u"Kovena"_s);

    const kovena::demo::ParseOutcome parsed = kovena::demo::parseDemoOptions(QApplication::arguments());
    switch (parsed.kind) {
    case kovena::demo::ParseOutcome::Kind::Help:
        std::fputs(qUtf8Printable(parsed.helpText), stdout);
        return 0;
    case kovena::demo::ParseOutcome::Kind::Version:
        std::printf("kovena-demo %s\n", KOVENA_VERSION);
        return 0;
    case kovena::demo::ParseOutcome::Kind::Error:
        return usageError(parsed.error, parsed.helpText);
    case kovena::demo::ParseOutcome::Kind::Run:
        break;
    }
    const kovena::demo::DemoOptions &options = parsed.options;
    if (options.tour)
        return kovena::demo::runTour(QApplication::applicationFilePath(), options.serverUrl, stdout);

    kovena::demo::EventPrinter printer;
    QTemporaryDir scratch;
    if (options.headless) {
        if (!printer.claimStdout()) {
            std::fprintf(stderr, "kovena-demo: cannot set up the event stream on stdout\n");
            return 1;
        }
        // A scripted run keeps its settings to itself, so runs side by side cannot mix them.
        if (!scratch.isValid()) {
            std::fprintf(stderr, "kovena-demo: cannot create a temporary settings folder\n");
            return 1;
        }
        kovena::UserDefaults::setStandardLocation(
            options.settingsDir.isEmpty() ? scratch.path() : options.settingsDir);
    }

    kovena::demo::DemoBackend backend;
    QString error;
    if (!backend.start(options, &error)) {
        std::fprintf(stderr, "kovena-demo: %s\n", qUtf8Printable(error));
        return 1;
    }
    std::fprintf(stderr, "kovena-demo: %s\n", qUtf8Printable(backend.description()));

    kovena::demo::MerchantWindow window(options, backend.description());
    if (options.headless) {
        kovena::demo::HeadlessRun run(options, printer, window);
        run.start();
        return QApplication::exec();
    }

    window.logLibraryEvents();
    window.merchantScreen()->loadBankList(backend.baseUrl());
    window.show();
    return QApplication::exec();
}
