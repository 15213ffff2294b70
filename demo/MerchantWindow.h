#pragma once

#include "DemoOptions.h"
#include "MerchantScreen.h"

#include <QMainWindow>
#include <QPointer>

#include <nlohmann/json.hpp>

class QAction;
class QPlainTextEdit;
class QTreeWidget;

namespace kovena::demo {

struct CallbackRow;
class ScreenWatcher;

// The merchant test window: the merchant's screen in the middle (which the library replaces
// while a flow runs), every merchant callback as a row beside it with the selected one's whole
// record below, a log of the screens and toasts the library showed, and a "Back to store" action
// that puts the merchant's screen back.
class MerchantWindow : public QMainWindow
{
    Q_OBJECT

public:
    MerchantWindow(const DemoOptions &initial, const QString &backendDescription, QWidget *parent = nullptr);
    ~MerchantWindow() override;

    MerchantScreen *merchantScreen() const { return m_screen; }
    // Lists every toast, screen and merchant callback of the library in the window.
    void logLibraryEvents();
    // Main thread only.
    void appendEvent(const nlohmann::ordered_json &event);
    void appendCallback(const CallbackRow &row);
    void restoreMerchantScreen();

private:
    void updateActions();
    void showSelectedRecord();

    QPointer<MerchantScreen> m_screen;
    ScreenWatcher *m_watcher = nullptr;
    QPlainTextEdit *m_log = nullptr;
    QTreeWidget *m_callbacks = nullptr;
    QPlainTextEdit *m_record = nullptr;
    QAction *m_backAction = nullptr;
};

} // namespace kovena::demo
