#include "MerchantWindow.h"

#include "CallbackRows.h"
#include "MerchantScreen.h"
#include "ScreenWatcher.h"

#include <QAction>
#include <QCoreApplication>
#include <QDockWidget>
#include <QFontDatabase>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QStatusBar>
#include <QThread>
#include <QTime>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace kovena::demo {
namespace {

enum Column { TimeColumn, StatusColumn, DescriptionColumn, TransactionColumn, ThreadColumn, ColumnCount };
constexpr int kRecordRole = Qt::UserRole + 1;

QString now()
{
    return QTime::currentTime().toString(u"HH:mm:ss.zzz"_s);
}

} // namespace

MerchantWindow::MerchantWindow(const DemoOptions &initial, const QString &backendDescription, QWidget *parent)
    : QMainWindow(parent)
    , m_screen(new MerchantScreen(initial))
{
    setObjectName(u"merchantWindow"_s);
    setWindowTitle(u"Kovena demo store"_s);
    resize(1180, 800);
    setCentralWidget(m_screen);

    auto *toolbar = addToolBar(u"Store"_s);
    toolbar->setObjectName(u"storeToolbar"_s);
    toolbar->setMovable(false);
    m_backAction = toolbar->addAction(u"Back to store"_s);
    m_backAction->setObjectName(u"backToStoreAction"_s);
    m_backAction->setToolTip(u"Close the checkout screens and show the store again"_s);
    connect(m_backAction, &QAction::triggered, this, &MerchantWindow::restoreMerchantScreen);
    connect(m_screen, &MerchantScreen::flowStarted, this, &MerchantWindow::updateActions);

    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    m_callbacks = new QTreeWidget(this);
    m_callbacks->setObjectName(u"callbackTable"_s);
    m_callbacks->setAccessibleName(u"Merchant callbacks"_s);
    m_callbacks->setRootIsDecorated(false);
    m_callbacks->setUniformRowHeights(true);
    m_callbacks->setHeaderLabels(
        { u"Time"_s, u"Status"_s, u"Description"_s, u"Transaction id"_s, u"Thread"_s });
    m_callbacks->header()->setStretchLastSection(true);
    m_callbacks->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_record = new QPlainTextEdit(this);
    m_record->setObjectName(u"callbackRecord"_s);
    m_record->setAccessibleName(u"The selected callback's record"_s);
    m_record->setReadOnly(true);
    m_record->setFont(fixed);
    m_record->setPlaceholderText(u"The selected callback's whole record shows here."_s);
    connect(m_callbacks, &QTreeWidget::currentItemChanged, this, &MerchantWindow::showSelectedRecord);
    auto *split = new QSplitter(Qt::Vertical, this);
    split->addWidget(m_callbacks);
    split->addWidget(m_record);
    split->setStretchFactor(1, 1);
    auto *callbackDock = new QDockWidget(u"What the merchant was told"_s, this);
    callbackDock->setObjectName(u"callbackDock"_s);
    callbackDock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    callbackDock->setWidget(split);
    addDockWidget(Qt::RightDockWidgetArea, callbackDock);

    m_log = new QPlainTextEdit(this);
    m_log->setObjectName(u"eventLog"_s);
    m_log->setAccessibleName(u"Library events"_s);
    m_log->setReadOnly(true);
    m_log->setFont(fixed);
    m_log->setMaximumBlockCount(2000);
    auto *logDock = new QDockWidget(u"What the library showed"_s, this);
    logDock->setObjectName(u"eventDock"_s);
    logDock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    logDock->setWidget(m_log);
    addDockWidget(Qt::RightDockWidgetArea, logDock);
    splitDockWidget(callbackDock, logDock, Qt::Vertical);
    resizeDocks({ callbackDock }, { 700 }, Qt::Horizontal);
    resizeDocks({ callbackDock, logDock }, { 520, 200 }, Qt::Vertical);

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
    // Runs on the thread that calls the merchant, which is what the row's thread column shows;
    // the row itself is added on the main thread.
    m_screen->setCompletionHook([this](const nlohmann::ordered_json &event) {
        QThread *caller = QThread::currentThread();
        const CallbackRow row = callbackRow(
            event, now(), caller == QCoreApplication::instance()->thread(), caller->objectName());
        QMetaObject::invokeMethod(
            this, [this, row] { appendCallback(row); }, Qt::QueuedConnection);
    });
}

void MerchantWindow::appendEvent(const nlohmann::ordered_json &event)
{
    const std::string text = event.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    m_log->appendPlainText(now() + u"  "_s + QString::fromStdString(text));
}

void MerchantWindow::appendCallback(const CallbackRow &row)
{
    auto *item = new QTreeWidgetItem(m_callbacks);
    item->setText(TimeColumn, row.time);
    item->setText(StatusColumn, row.status);
    item->setText(DescriptionColumn, row.description);
    item->setText(TransactionColumn, row.transactionId);
    item->setText(ThreadColumn, row.thread);
    item->setData(TimeColumn, kRecordRole, row.record);
    static_assert(ColumnCount == 5);
    // The newest report is the one a tester looks at first.
    m_callbacks->setCurrentItem(item);
    m_callbacks->scrollToItem(item);
    appendEvent({ { "event", "onTransactionComplete" }, { "status", row.status.toStdString() },
        { "description", row.description.toStdString() } });
}

void MerchantWindow::showSelectedRecord()
{
    const QTreeWidgetItem *item = m_callbacks->currentItem();
    m_record->setPlainText(item ? item->data(TimeColumn, kRecordRole).toString() : QString());
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
