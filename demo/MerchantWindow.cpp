#include "MerchantWindow.h"

#include "MerchantScreen.h"
#include "ScreenWatcher.h"

#include <QAction>
#include <QDockWidget>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QTime>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace kovena::demo {

MerchantWindow::MerchantWindow(const DemoOptions &initial, const QString &backendDescription, QWidget *parent)
    : QMainWindow(parent)
    , m_screen(new MerchantScreen(initial))
{
    setObjectName(u"merchantWindow"_s);
    setWindowTitle(u"Kovena demo store"_s);
    resize(420, 780);
    setCentralWidget(m_screen);

    auto *toolbar = addToolBar(u"Store"_s);
    toolbar->setObjectName(u"storeToolbar"_s);
    toolbar->setMovable(false);
    m_backAction = toolbar->addAction(u"Back to store"_s);
    m_backAction->setObjectName(u"backToStoreAction"_s);
    m_backAction->setToolTip(u"Close the checkout screens and show the store again"_s);
    connect(m_backAction, &QAction::triggered, this, &MerchantWindow::restoreMerchantScreen);
    connect(m_screen, &MerchantScreen::flowStarted, this, &MerchantWindow::updateActions);

    m_log = new QPlainTextEdit(this);
    m_log->setObjectName(u"eventLog"_s);
    m_log->setReadOnly(true);
    m_log->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_log->setMaximumBlockCount(2000);
    auto *dock = new QDockWidget(u"What the library did"_s, this);
    dock->setObjectName(u"eventDock"_s);
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setWidget(m_log);
    addDockWidget(Qt::BottomDockWidgetArea, dock);

    statusBar()->showMessage(backendDescription);
    updateActions();
}

MerchantWindow::~MerchantWindow()
{
    // While the library shows its screens, the merchant's screen is out of the window.
    if (m_screen && !m_screen->parent())
        delete m_screen;
}

void MerchantWindow::logLibraryEvents()
{
    if (m_watcher)
        return;
    m_watcher = new ScreenWatcher(this);
    connect(m_watcher, &ScreenWatcher::toastShown, this, [this](const QString &message) {
        appendEvent({ { "event", "toast" }, { "message", message.toStdString() } });
    });
    connect(m_watcher, &ScreenWatcher::screenShown, this, [this](const QString &name) {
        appendEvent({ { "event", "screen" }, { "name", name.toStdString() } });
    });
    m_watcher->install();
    // The library may report from another thread: the log is written on the main thread.
    m_screen->setCompletionHook([this](const nlohmann::ordered_json &event) {
        QMetaObject::invokeMethod(
            this, [this, event] { appendEvent(event); }, Qt::QueuedConnection);
    });
}

void MerchantWindow::appendEvent(const nlohmann::ordered_json &event)
{
    const std::string text = event.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    m_log->appendPlainText(
        QTime::currentTime().toString(u"HH:mm:ss.zzz"_s) + u"  "_s + QString::fromStdString(text));
}

void MerchantWindow::restoreMerchantScreen()
{
    if (!m_screen || centralWidget() == m_screen)
        return;
    // The library's screens stay alive (hidden, owned by this window) until the next flow
    // replaces them: a reply still in flight must find them.
    if (QWidget *library = takeCentralWidget()) {
        library->hide();
        library->setParent(this);
    }
    setCentralWidget(m_screen);
    m_screen->show();
    updateActions();
}

void MerchantWindow::updateActions()
{
    m_backAction->setEnabled(m_screen && centralWidget() != m_screen);
}

} // namespace kovena::demo
