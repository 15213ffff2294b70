// Test entry point shared by every suite: a Qt application (offscreen unless the caller chose
// a platform), the web engine's own sandbox off when run as root, an isolated user-defaults
// folder per run, and death tests that are safe with the session thread running.
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The bank page's browser refuses to start its own sandbox as root, as a CI machine runs.
    if (::geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    ::testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    // The bank page's embedded browser shares OpenGL contexts with the widgets.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QTemporaryDir defaultsDir;
    kovena::UserDefaults::setStandardLocation(defaultsDir.path());

    return RUN_ALL_TESTS();
}
