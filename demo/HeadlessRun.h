#pragma once

#include "DemoOptions.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <nlohmann/json.hpp>

#include <atomic>
#include <deque>
#include <functional>

namespace kovena::demo {

class BankPagePlayer;
class EventPrinter;
class MerchantWindow;
class ScreenWatcher;

// One scripted flow without a person: starts the checkout or status enquiry from the merchant
// window, plays the customer's part (typing a VPA, pressing Cancel), prints every toast, screen
// and merchant callback, and ends the application: 0 once the merchant was called and nothing
// more happened for a second, 3 when the time limit passes first.
class HeadlessRun : public QObject
{
    Q_OBJECT

public:
    static constexpr int kExitTimedOut = 3;

    HeadlessRun(const DemoOptions &options, EventPrinter &printer, MerchantWindow &window);
    ~HeadlessRun() override;

    void start();

private:
    enum class StepState { Waiting, Running, Done };
    struct Step
    {
        QString what;
        std::function<StepState()> run;
        bool dropWhenMerchantCalled = false; // pointless once the flow has reported
        qint64 giveUpAfterMs = -1; // -1: wait for as long as the run lasts
        bool running = false;
        qint64 startedAtMs = -1;
        int callbacksAtStart = 0;
    };

    void planSteps();
    void startFlow();
    void tick();
    void runSteps(qint64 now);
    void noteActivity(bool screenChanged);
    void finish(int exitCode);

    Step typeIntoField(const QString &objectName, const QString &text);
    Step tapButton(const QString &objectName);
    // Opens the drop-down list of `anchor` and moves to the entry `rowOf` picks with the arrow
    // keys, then chooses it with Return.
    Step chooseFromList(
        const QString &anchor, const QString &what, std::function<int(const QStringList &rows)> rowOf);
    Step actOnBankPage(DemoOptions::BankPage action);
    void followBankPage();
    Step pressCancel();
    Step confirmAlert(const QString &title);

    DemoOptions m_options;
    EventPrinter &m_printer;
    MerchantWindow &m_window;
    ScreenWatcher *m_watcher = nullptr;
    BankPagePlayer *m_bankPage = nullptr;
    QTimer m_ticker;
    QElapsedTimer m_clock;
    std::deque<Step> m_steps;
    qint64 m_lastActivityMs = 0;
    qint64 m_lastScreenMs = 0;
    int m_callbacks = 0;
    std::atomic<int> m_callbacksPrinted { 0 };
    bool m_finished = false;
};

} // namespace kovena::demo
