#pragma once

#include "DemoOptions.h"
#include "MerchantScreen.h"

#include <QMainWindow>
#include <QPointer>

#include <nlohmann/json.hpp>

class QAction;
class QPlainTextEdit;

namespace kovena::demo {

class ScreenWatcher;

// The merchant test window: the merchant's screen in the middle (which the library replaces
// while a flow runs), a log of everything the library showed and reported below it, and a
// "Back to store" action that puts the merchant's screen back.
class MerchantWindow : public QMainWindow
{
    Q_OBJECT

public:
    MerchantWindow(const DemoOptions &initial, const QString &backendDescription, QWidget *parent = nullptr);
    ~MerchantWindow() override;

    MerchantScreen *merchantScreen() const { return m_screen; }
    // Logs every toast, screen and merchant callback of the library in the window.
    void logLibraryEvents();
    // Main thread only.
    void appendEvent(const nlohmann::ordered_json &event);
    void restoreMerchantScreen();

private:
    void updateActions();

    QPointer<MerchantScreen> m_screen;
    ScreenWatcher *m_watcher = nullptr;
    QPlainTextEdit *m_log = nullptr;
    QAction *m_backAction = nullptr;
};

} // namespace kovena::demo
