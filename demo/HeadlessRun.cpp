#include "HeadlessRun.h"

#include "BankPagePlayer.h"
#include "Customer.h"
#include "EventPrinter.h"
#include "MerchantScreen.h"
#include "MerchantWindow.h"
#include "ScreenWatcher.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QHash>
#include <QWebEngineView>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace kovena::demo {
namespace {

// A screen is taken as settled once no screen has appeared for this long (pushes animate
// for 0.3 s); the customer acts only on a settled screen.
constexpr qint64 kSettleMs = 500;
// With the merchant called, this much quiet ends the run.
constexpr qint64 kQuietAfterCallbackMs = 1000;
constexpr int kTickMs = 40;

void diagnostic(const QString &text)
{
    std::fprintf(stderr, "kovena-demo: %s\n", qUtf8Printable(text));
    std::fflush(stderr);
}

} // namespace

HeadlessRun::HeadlessRun(const DemoOptions &options, EventPrinter &printer, MerchantWindow &window)
    : m_options(options)
    , m_printer(printer)
    , m_window(window)
{
    m_ticker.setInterval(kTickMs);
    connect(&m_ticker, &QTimer::timeout, this, &HeadlessRun::tick);
}

HeadlessRun::~HeadlessRun()
{
    if (MerchantScreen *screen = m_window.merchantScreen())
        screen->setCompletionHook({});
}

void HeadlessRun::start()
{
    m_clock.start();
    m_watcher = new ScreenWatcher(this);
    connect(m_watcher, &ScreenWatcher::toastShown, this, [this](const QString &message) {
        m_printer.print({ { "event", "toast" }, { "message", message.toStdString() } });
        noteActivity(false);
    });
    connect(m_watcher, &ScreenWatcher::screenShown, this, [this](const QString &name) {
        m_printer.print({ { "event", "screen" }, { "name", name.toStdString() } });
        noteActivity(true);
        if (name == "PaymentViewController"_L1)
            followBankPage();
    });
    m_bankPage = new BankPagePlayer(this);
    connect(m_bankPage, &BankPagePlayer::pageLoaded, this, [this](const QString &url) {
        m_printer.print({ { "event", "bankPage" }, { "url", url.toStdString() } });
        noteActivity(false);
    });
    m_watcher->install();

    // The library may report on another thread (and may end the process right after a report):
    // print at once, count on the main thread.
    m_window.merchantScreen()->setCompletionHook([this](const nlohmann::ordered_json &event) {
        m_printer.print(event);
        m_callbacksPrinted.fetch_add(1);
        QMetaObject::invokeMethod(
            this,
            [this] {
                ++m_callbacks;
                noteActivity(false);
            },
            Qt::QueuedConnection);
    });

    planSteps();
    m_window.show();
    QTimer::singleShot(0, this, &HeadlessRun::startFlow);
    m_ticker.start();
}

void HeadlessRun::planSteps()
{
    const DemoOptions &o = m_options;
    if (o.vpa) {
        m_steps.push_back(typeIntoField(u"tfUpiId"_s, *o.vpa));
        m_steps.push_back(tapButton(u"btnProceed"_s));
    }

    const auto exactly = [](const QString &text) {
        return [text](const QStringList &rows) { return int(rows.indexOf(text)); };
    };
    if (o.cardNumber)
        m_steps.push_back(typeIntoField(u"tfCardNumber"_s, *o.cardNumber));
    if (o.cardName)
        m_steps.push_back(typeIntoField(u"tfCardName"_s, *o.cardName));
    if (o.expiryMonth)
        m_steps.push_back(
            chooseFromList(u"btnMonth"_s, u"month "_s + *o.expiryMonth, exactly(*o.expiryMonth)));
    if (o.expiryYear)
        m_steps.push_back(chooseFromList(u"btnYear"_s, u"year "_s + *o.expiryYear, exactly(*o.expiryYear)));
    if (o.cvv)
        m_steps.push_back(typeIntoField(u"tfCvv"_s, *o.cvv));
    if (o.cardNumber || o.cardName || o.expiryMonth || o.expiryYear || o.cvv) {
        Step proceed = tapButton(u"btnProceed"_s);
        // A form the screen does not accept keeps the button disabled: say so, then wait out the run.
        proceed.giveUpAfterMs = 5000;
        m_steps.push_back(proceed);
    }

    if (o.bankCode) {
        static const QHash<QString, QString> buttons = { { u"SBIB"_s, u"btnSbiBank"_s },
            { u"AXIB"_s, u"btnAxixBank"_s }, { u"HDFB"_s, u"btnHdfcBank"_s }, { u"YESB"_s, u"btnYesBank"_s },
            { u"PNBB"_s, u"btnPnbBank"_s }, { u"ICIB"_s, u"btnIciciBank"_s } };
        m_steps.push_back(tapButton(buttons.value(*o.bankCode)));
    }
    if (o.bankIndex) {
        const int index = *o.bankIndex;
        m_steps.push_back(chooseFromList(u"btnSelectBank"_s, u"bank %1"_s.arg(index),
            [index](const QStringList &rows) { return index < rows.size() ? index : -1; }));
        m_steps.push_back(tapButton(u"btnProceed1"_s));
    }
    if (o.bankPage != DemoOptions::BankPage::None)
        m_steps.push_back(actOnBankPage(o.bankPage));

    if (m_options.cancel) {
        m_steps.push_back(pressCancel());
        m_steps.push_back(confirmAlert(u"Proceed"_s));
    }
}

void HeadlessRun::startFlow()
{
    m_lastActivityMs = m_lastScreenMs = m_clock.elapsed();
    MerchantScreen *screen = m_window.merchantScreen();
    if (m_options.flow == DemoOptions::Flow::Status)
        screen->startStatusEnquiry(m_options);
    else
        screen->startCheckout(m_options);
}

void HeadlessRun::noteActivity(bool screenChanged)
{
    m_lastActivityMs = m_clock.elapsed();
    if (screenChanged)
        m_lastScreenMs = m_lastActivityMs;
}

void HeadlessRun::tick()
{
    if (m_finished)
        return;
    const qint64 now = m_clock.elapsed();
    if (now >= qint64(m_options.timeoutSeconds * 1000)) {
        diagnostic(
            u"timed out after %1 s (%2 merchant callbacks)"_s.arg(m_options.timeoutSeconds).arg(m_callbacks));
        finish(kExitTimedOut);
        return;
    }
    runSteps(now);
    if (m_callbacks > 0 && m_steps.empty() && now - m_lastActivityMs >= kQuietAfterCallbackMs)
        finish(0);
}

void HeadlessRun::runSteps(qint64 now)
{
    while (!m_steps.empty()) {
        Step &step = m_steps.front();
        if (step.startedAtMs < 0) {
            step.startedAtMs = now;
            step.callbacksAtStart = m_callbacksPrinted.load();
        }
        if (step.dropWhenMerchantCalled && m_callbacksPrinted.load() > step.callbacksAtStart) {
            m_steps.pop_front();
            continue;
        }
        if (step.giveUpAfterMs >= 0 && !step.running && now - step.startedAtMs > step.giveUpAfterMs) {
            diagnostic(u"gave up: "_s + step.what);
            m_steps.pop_front();
            continue;
        }
        if (!step.running && now - m_lastScreenMs < kSettleMs)
            return;
        // A report caused by this very action counts as "after" for the step that follows.
        const int callbacksBefore = m_callbacksPrinted.load();
        switch (step.run()) {
        case StepState::Waiting:
            return;
        case StepState::Running:
            step.running = true;
            noteActivity(false);
            return;
        case StepState::Done:
            diagnostic(u"customer: "_s + step.what);
            m_steps.pop_front();
            if (!m_steps.empty()) {
                m_steps.front().startedAtMs = now;
                m_steps.front().callbacksAtStart = callbacksBefore;
            }
            noteActivity(false);
            return; // one action per tick, as a person would
        }
    }
}

HeadlessRun::Step HeadlessRun::typeIntoField(const QString &objectName, const QString &text)
{
    Step step;
    // What was typed is not repeated: a field may hold something that must not reach a log.
    step.what = u"typed %1 characters into %2"_s.arg(text.size()).arg(objectName);
    auto typed = std::make_shared<qsizetype>(-1);
    step.run = [objectName, text, typed]() -> StepState {
        QWidget *field = customer::visibleWidget(objectName);
        if (!field)
            return StepState::Waiting;
        if (*typed < 0) {
            customer::tap(field);
            field->setFocus(Qt::MouseFocusReason);
            *typed = 0;
        } else if (*typed < text.size()) {
            customer::typeCharacter(field, text.at((*typed)++));
        }
        return *typed < text.size() ? StepState::Running : StepState::Done;
    };
    return step;
}

HeadlessRun::Step HeadlessRun::tapButton(const QString &objectName)
{
    Step step;
    step.what = u"tapped "_s + objectName;
    step.run = [objectName]() -> StepState {
        QWidget *button = customer::visibleWidget(objectName);
        // The loading overlay covers the screen: a person waits for it to go.
        if (!button || !button->isEnabled() || customer::loaderVisible())
            return StepState::Waiting;
        customer::tap(button);
        return StepState::Done;
    };
    return step;
}

HeadlessRun::Step HeadlessRun::chooseFromList(
    const QString &anchor, const QString &what, std::function<int(const QStringList &rows)> rowOf)
{
    Step step;
    step.what = u"chose "_s + what;
    auto opened = std::make_shared<bool>(false);
    step.run = [anchor, what, rowOf, opened]() -> StepState {
        auto *list = qobject_cast<QAbstractItemView *>(customer::visibleWidget(u"dropDownList"_s));
        if (!list) {
            QWidget *button = customer::visibleWidget(anchor);
            if (*opened)
                return StepState::Running; // the list is on its way
            if (!button || !button->isEnabled() || customer::loaderVisible())
                return StepState::Waiting;
            customer::tap(button);
            *opened = true;
            return StepState::Running;
        }
        QStringList rows;
        for (int row = 0; row < list->model()->rowCount(); ++row)
            rows << list->model()->index(row, 0).data().toString();
        const int target = rowOf(rows);
        if (target < 0) {
            diagnostic(u"the list has no "_s + what);
            customer::pressKey(list, Qt::Key_Escape);
            return StepState::Done;
        }
        // One key a tick, as a person scrolls through a list.
        const int current = list->currentIndex().isValid() ? list->currentIndex().row() : -1;
        if (current == target) {
            customer::pressKey(list, Qt::Key_Return);
            return StepState::Done;
        }
        customer::pressKey(list, current < target ? Qt::Key_Down : Qt::Key_Up);
        return StepState::Running;
    };
    return step;
}

HeadlessRun::Step HeadlessRun::actOnBankPage(DemoOptions::BankPage action)
{
    Step step;
    BankPagePlayer *page = m_bankPage;
    switch (action) {
    case DemoOptions::BankPage::Leave:
        step.what = u"went back from the bank page"_s;
        step.run = [page]() -> StepState {
            QWidget *back = customer::visibleWidget(u"navBackButton"_s);
            if (!page->hasPage() || !back)
                return StepState::Waiting;
            customer::tap(back);
            return StepState::Done;
        };
        break;
    case DemoOptions::BankPage::Approve:
    case DemoOptions::BankPage::Decline: {
        const QString id = action == DemoOptions::BankPage::Approve ? u"approve"_s : u"decline"_s;
        step.what = u"pressed %1 on the bank page"_s.arg(id);
        step.run = [page, id]() -> StepState {
            if (!page->hasPage())
                return StepState::Waiting;
            return page->pressElement(id) == BankPagePlayer::Press::Pressed ? StepState::Done
                                                                            : StepState::Running;
        };
        break;
    }
    case DemoOptions::BankPage::None:
        break;
    }
    return step;
}

void HeadlessRun::followBankPage()
{
    // The page starts loading when the screen loads, before it shows: follow the view at once.
    const auto widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        auto *view = qobject_cast<QWebEngineView *>(widget);
        if (view && view->objectName() == "webView"_L1 && view->window() == m_window.window())
            m_bankPage->follow(view);
    }
}

HeadlessRun::Step HeadlessRun::pressCancel()
{
    Step step;
    step.what = u"pressed Cancel"_s;
    step.run = []() -> StepState {
        // The payment option screen has its own button; the payment screens put it in the bar.
        QWidget *button = customer::visibleWidget(u"cancelButton"_s);
        if (!button)
            button = customer::visibleWidget(u"navRightButton"_s);
        if (!button || !button->isEnabled())
            return StepState::Waiting;
        customer::tap(button);
        return StepState::Done;
    };
    return step;
}

HeadlessRun::Step HeadlessRun::confirmAlert(const QString &title)
{
    Step step;
    step.what = u"confirmed with "_s + title;
    step.dropWhenMerchantCalled = true;
    step.giveUpAfterMs = 3000;
    step.run = [title]() -> StepState {
        QAbstractButton *button = customer::alertButton(title);
        if (!button)
            return StepState::Waiting;
        customer::tap(button);
        return StepState::Done;
    };
    return step;
}

void HeadlessRun::finish(int exitCode)
{
    m_finished = true;
    m_ticker.stop();
    QCoreApplication::exit(exitCode);
}

} // namespace kovena::demo
