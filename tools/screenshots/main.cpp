// kovena-screenshots: sets up every screen of the checkout against an in-process sandbox, as a
// customer would reach it, and saves each as a PNG; or, with --check, only checks that each one
// is drawn (right size, not blank, its widgets shown) and exits non-zero when one is not.
#include "Shot.h"
#include "Stage.h"

#include "api/ApiManager.h"
#include "platform/Reachability.h"
#include "platform/UserDefaults.h"
#include "sandbox/Sandbox.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <unistd.h>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void messageToStderr(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // Only the tool's own lines go to stdout; the library's diagnostics are not wanted here.
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    std::fprintf(stderr, "%s\n", qUtf8Printable(qFormatLogMessage(type, context, message)));
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(messageToStderr);
    if (::geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    QApplication::setApplicationName(u"kovena-screenshots"_s);

    QCommandLineParser parser;
    parser.setApplicationDescription(u"Draws every screen of the Kovena checkout into PNG files."_s);
    parser.addHelpOption();
    const QCommandLineOption outOption(u"out"_s, u"Write the PNG files into <dir>."_s, u"dir"_s);
    const QCommandLineOption checkOption(
        u"check"_s, u"Draw every screen and check it, write nothing; exit 1 if one cannot be drawn."_s);
    const QCommandLineOption onlyOption(u"only"_s, u"Only the shot <name> (repeatable)."_s, u"name"_s);
    const QCommandLineOption listOption(u"list"_s, u"Print the shots' names and captions."_s);
    parser.addOptions({ outOption, checkOption, onlyOption, listOption });
    parser.process(app);

    using namespace kovena;
    sandbox::Sandbox backend;
    QList<screenshots::Shot> shots = screenshots::allShots(backend);
    if (parser.isSet(listOption)) {
        for (const screenshots::Shot &shot : std::as_const(shots))
            std::printf("%s\t%dx%d\t%s\n", qUtf8Printable(shot.name), shot.size.width(), shot.size.height(),
                qUtf8Printable(shot.caption));
        return 0;
    }
    const bool check = parser.isSet(checkOption);
    const QString out = parser.value(outOption);
    if (!check && out.isEmpty()) {
        std::fprintf(stderr, "kovena-screenshots: say where the files go (--out DIR), or --check\n");
        return 2;
    }
    if (!out.isEmpty() && !QDir().mkpath(out)) {
        std::fprintf(stderr, "kovena-screenshots: cannot create %s\n", qUtf8Printable(out));
        return 1;
    }
    const QStringList only = parser.values(onlyOption);

    // The checkout's user defaults stay in a folder of this run.
    QTemporaryDir settings;
    if (!settings.isValid() || backend.start(0) == 0) {
        std::fprintf(stderr, "kovena-screenshots: cannot set up the sandbox\n");
        return 1;
    }
    UserDefaults::setStandardLocation(settings.path());
    reachability::setProbe([] { return std::optional<std::uint32_t>(reachability::Reachable); });
    if (!ApiManager::setServerUrl(QString::fromStdString(backend.baseUrl()))) {
        std::fprintf(stderr, "kovena-screenshots: the library refused the sandbox's address\n");
        return 1;
    }

    int failures = 0;
    int drawn = 0;
    QElapsedTimer total;
    total.start();
    for (const screenshots::Shot &shot : std::as_const(shots)) {
        if (!only.isEmpty() && !only.contains(shot.name))
            continue;
        QString problem;
        QImage image;
        {
            screenshots::Stage stage(shot.size);
            problem = shot.setUp(stage);
            if (problem.isEmpty()) {
                const QStringList missing = screenshots::missingWidgets(stage, shot.required);
                if (!missing.isEmpty())
                    problem = u"not shown: "_s + missing.join(u", "_s);
            }
            if (problem.isEmpty()) {
                image = stage.capture();
                problem = screenshots::imageProblem(image, shot.size);
            }
        }
        ++drawn;
        if (problem.isEmpty() && !out.isEmpty()) {
            const QString file = QDir(out).filePath(shot.name + u".png"_s);
            if (!image.save(file, "PNG"))
                problem = u"cannot write "_s + file;
        }
        std::printf("%-4s %-32s %s\n", problem.isEmpty() ? "ok" : "FAIL", qUtf8Printable(shot.name),
            qUtf8Printable(
                problem.isEmpty() ? u"%1x%2"_s.arg(shot.size.width()).arg(shot.size.height()) : problem));
        std::fflush(stdout);
        if (!problem.isEmpty())
            ++failures;
    }
    if (drawn == 0) {
        std::fprintf(stderr, "kovena-screenshots: no shot is named %s\n", qUtf8Printable(only.join(u", "_s)));
        return 2;
    }
    std::printf("%d drawn, %d failed, in %.1f s\n", drawn, failures, total.elapsed() / 1000.0);
    backend.stop();
    return failures == 0 ? 0 : 1;
}
