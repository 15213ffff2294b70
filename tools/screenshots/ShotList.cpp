#include "Shot.h"

#include "Customer.h"
#include "DemoOptions.h"
#include "MerchantWindow.h"
#include "Stage.h"

#include "payment/NetBankingViewController.h"
#include "platform/ViewController.h"
#include "sandbox/Sandbox.h"

#include <QAbstractButton>
#include <QDate>
#include <QLineEdit>
#include <QListView>
#include <QPointer>
#include <QWebEnginePage>
#include <QWebEngineView>

#include <chrono>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace kovena::screenshots {

namespace customer = demo::customer;

namespace {

const QSize kPhone(360, 640);
const QSize kDesktop(1280, 800);

// The sandbox's test card: never a real one in a picture.
const QString kTestCard = u"4111111111111111"_s;

demo::DemoOptions checkout(const QString &mode, const QString &amount = u"1499"_s)
{
    static int serial = 0;
    demo::DemoOptions options;
    options.paymentMode = mode;
    options.amount = amount;
    // Only the option screen shows the order number; every payment still gets its own.
    options.orderNo = mode == u"4" ? u"ORD-2024-0042"_s : u"ORD-SHOT-%1"_s.arg(++serial);
    options.appName = u"Chai Point"_s;
    return options;
}

QWidget *onTop(Stage &stage, const QString &name)
{
    ViewController *top = stage.topScreen();
    return top ? top->findChild<QWidget *>(name) : nullptr;
}

QString notShown(const QString &what)
{
    return what + u" did not show"_s;
}

// Opens the checkout at `screen`: "" once it is there.
QString open(Stage &stage, const demo::DemoOptions &options, const QString &screen)
{
    stage.startCheckout(options);
    return stage.waitForScreen(screen) ? QString() : notShown(screen);
}

void type(QWidget *field, const QString &text)
{
    field->setFocus(Qt::TabFocusReason);
    for (const QChar c : text)
        customer::typeCharacter(field, c);
}

bool visible(Stage &stage, const QString &name)
{
    const auto widgets = stage.window()->findChildren<QWidget *>(name);
    for (const QWidget *widget : widgets) {
        if (widget->isVisible())
            return true;
    }
    return false;
}

QString waitVisible(Stage &stage, const QString &name, int timeoutMs = 10000)
{
    return Stage::waitFor([&] { return visible(stage, name); }, timeoutMs) ? QString() : notShown(name);
}

// Chooses `entry` of the drop-down list opened by tapping `anchor`, with the arrow keys.
QString choose(Stage &stage, const QString &anchor, const QString &entry)
{
    customer::tap(onTop(stage, anchor));
    if (QString error = waitVisible(stage, u"dropDownList"_s); !error.isEmpty())
        return error;
    // Each list of the screen has its own; the one that just opened is the visible one.
    QListView *list = nullptr;
    for (QListView *each : stage.window()->findChildren<QListView *>(u"dropDownList"_s))
        list = each->isVisible() ? each : list;
    for (int i = 0; i < 60 && list->currentIndex().data().toString() != entry; ++i)
        customer::pressKey(list, Qt::Key_Down);
    if (list->currentIndex().data().toString() != entry)
        return u"no entry "_s + entry;
    customer::pressKey(list, Qt::Key_Return);
    Stage::settle(100);
    return {};
}

QString fillCard(Stage &stage, bool complete)
{
    type(onTop(stage, u"tfCardNumber"_s), kTestCard);
    type(onTop(stage, u"tfCardName"_s), u"Asha Rao"_s);
    if (!complete)
        return {};
    if (QString error = choose(stage, u"btnMonth"_s, u"12"_s); !error.isEmpty())
        return error;
    const QString year = QString::number(QDate::currentDate().year() + 3);
    if (QString error = choose(stage, u"btnYear"_s, year); !error.isEmpty())
        return error;
    type(onTop(stage, u"tfCvv"_s), u"123"_s);
    onTop(stage, u"btnProceed"_s)->setFocus(Qt::TabFocusReason);
    return onTop(stage, u"btnProceed"_s)->isEnabled() ? QString() : u"the proceed button stayed disabled"_s;
}

using Steps = std::function<QString(Stage &)>;

// Opens the checkout for payment `mode` at `screen`, then takes `steps` there (if any).
Steps at(const QString &mode, const QString &screen, Steps steps = {}, const QString &amount = u"1499"_s)
{
    return [=](Stage &stage) {
        if (QString error = open(stage, checkout(mode, amount), screen); !error.isEmpty() || !steps)
            return error;
        return steps(stage);
    };
}

QString bankListLoaded(Stage &stage)
{
    auto *screen = qobject_cast<NetBankingViewController *>(stage.topScreen());
    const bool loaded = screen && Stage::waitFor([screen] { return !screen->bankList.isEmpty(); })
        && Stage::waitFor([&stage] { return !visible(stage, u"loaderContainer"_s); });
    return loaded ? QString() : notShown(u"the bank list"_s);
}

} // namespace

QList<Shot> allShots(sandbox::Sandbox &sandbox)
{
    QList<Shot> shots;

    shots.append(
        { u"merchant-window"_s, u"The merchant's demo window, before the checkout"_s, QSize(1180, 800),
            [&sandbox](Stage &stage) {
                demo::DemoOptions options = checkout(u"1"_s);
                options.orderNo = u"ORD-2024-0042"_s;
                auto window = std::make_unique<demo::MerchantWindow>(options, u"Sandbox on this machine"_s);
                window->resize(1180, 800);
                demo::MerchantScreen *screen = window->merchantScreen();
                screen->loadBankList(QString::fromStdString(sandbox.baseUrl()));
                stage.adopt(std::move(window));
                auto *picker = screen->findChild<QWidget *>(u"bankPicker"_s);
                if (!Stage::waitFor([picker] { return picker && picker->isEnabled(); }))
                    return notShown(u"the bank list"_s);
                Stage::settle(200);
                return QString();
            },
            { u"payButton"_s, u"statusButton"_s, u"modeUpi"_s, u"bankPicker"_s, u"callbackTable"_s } });

    shots.append({ u"payment-options"_s, u"Payment option screen: the amount and the UPI choice"_s, kPhone,
        at(u"4"_s, u"PaymentOptionVC"_s), { u"lbAmount"_s, u"UPILabel"_s, u"cancelButton"_s } });

    shots.append({ u"payment-options-over-upi-limit"_s,
        u"Over the UPI limit the UPI choice is greyed out and cannot be pressed"_s, kPhone,
        at(
            u"4"_s, u"PaymentOptionVC"_s,
            [](Stage &stage) {
                return onTop(stage, u"UPILabel"_s)->isEnabled() ? u"the UPI choice stayed enabled"_s
                                                                : QString();
            },
            u"150000.50"_s),
        { u"UPILabel"_s } });

    shots.append({ u"upi"_s, u"UPI: the customer types the UPI ID"_s, kPhone,
        at(u"1"_s, u"UPIViewController"_s,
            [](Stage &stage) {
                type(onTop(stage, u"tfUpiId"_s), u"asha.rao@okbank"_s);
                return QString();
            }),
        { u"tfUpiId"_s, u"btnProceed"_s, u"navRightButton"_s } });

    shots.append(
        { u"upi-approval"_s, u"UPI: approve the request in the bank's app (the loader waits below)"_s, kPhone,
            at(u"1"_s, u"UPIViewController"_s,
                [](Stage &stage) {
                    type(onTop(stage, u"tfUpiId"_s), u"pending@kovena"_s);
                    customer::tap(onTop(stage, u"btnProceed"_s));
                    if (QString error = waitVisible(stage, u"popUpPanel"_s); !error.isEmpty())
                        return error;
                    return waitVisible(stage, u"loaderContainer"_s);
                }),
            { u"popUpPanel"_s, u"popUpText"_s, u"loaderContainer"_s } });

    shots.append({ u"cancel-question"_s, u"Cancel asks first"_s, kPhone,
        at(u"1"_s, u"UPIViewController"_s,
            [](Stage &stage) {
                customer::tap(customer::visibleWidget(u"navRightButton"_s));
                return waitVisible(stage, u"alertBox"_s);
            }),
        { u"alertBox"_s, u"alertAction0"_s, u"alertAction1"_s } });

    shots.append({ u"toast"_s, u"A toast: the UPI ID was not valid"_s, kPhone,
        at(u"1"_s, u"UPIViewController"_s,
            [](Stage &stage) {
                type(onTop(stage, u"tfUpiId"_s), u"asha"_s);
                customer::tap(onTop(stage, u"btnProceed"_s));
                // Taken before the fade has begun.
                return waitVisible(stage, u"kovenaToast"_s);
            }),
        { u"kovenaToast"_s } });

    shots.append({ u"card"_s, u"Card entry: proceed stays grey until every field is filled"_s, kPhone,
        at(u"2"_s, u"CardViewController"_s),
        { u"tfCardNumber"_s, u"tfCardName"_s, u"viewDate"_s, u"tfCvv"_s, u"btnProceed"_s } });

    shots.append({ u"card-month-list"_s, u"Card entry: the expiry month list"_s, kPhone,
        at(u"2"_s, u"CardViewController"_s,
            [](Stage &stage) {
                fillCard(stage, false);
                customer::tap(onTop(stage, u"btnMonth"_s));
                return waitVisible(stage, u"dropDownList"_s);
            }),
        { u"dropDownList"_s, u"tfCardNumber"_s } });

    shots.append({ u"card-year-list"_s, u"Card entry: the expiry year list"_s, kPhone,
        at(u"2"_s, u"CardViewController"_s,
            [](Stage &stage) {
                fillCard(stage, false);
                if (QString error = choose(stage, u"btnMonth"_s, u"12"_s); !error.isEmpty())
                    return error;
                customer::tap(onTop(stage, u"btnYear"_s));
                return waitVisible(stage, u"dropDownList"_s);
            }),
        { u"dropDownList"_s, u"tfCardNumber"_s } });

    shots.append({ u"card-filled"_s, u"Card entry, complete: proceed in its colour"_s, kPhone,
        at(u"2"_s, u"CardViewController"_s, [](Stage &stage) { return fillCard(stage, true); }),
        { u"btnProceed"_s, u"iconCardIssuer"_s } });

    shots.append({ u"net-banking"_s, u"Net banking: popular banks and every bank in a list"_s, kPhone,
        at(u"3"_s, u"NetBankingViewController"_s, bankListLoaded),
        { u"btnSbiBank"_s, u"btnPnbBank"_s, u"btnSelectBank"_s, u"btnProceed1"_s } });

    shots.append({ u"net-banking-list"_s, u"Net banking: the list of every bank"_s, kPhone,
        at(u"3"_s, u"NetBankingViewController"_s,
            [](Stage &stage) {
                if (QString error = bankListLoaded(stage); !error.isEmpty())
                    return error;
                customer::tap(onTop(stage, u"btnSelectBank"_s));
                return waitVisible(stage, u"dropDownList"_s);
            }),
        { u"dropDownList"_s } });

    shots.append({ u"bank-page"_s, u"The bank's page (here the sandbox's) in the embedded browser"_s, kPhone,
        at(u"3"_s, u"NetBankingViewController"_s,
            [](Stage &stage) {
                if (QString error = bankListLoaded(stage); !error.isEmpty())
                    return error;
                customer::tap(onTop(stage, u"btnSbiBank"_s));
                if (!stage.waitForScreen(u"PaymentViewController"_s, 20000))
                    return notShown(u"the bank page"_s);
                // The page may have loaded before the screen showed: ask the page itself.
                QPointer<QWebEngineView> view = stage.topScreen()->findChild<QWebEngineView *>(u"webView"_s);
                struct Asked
                {
                    bool asking = false;
                    bool complete = false;
                };
                // Shared with the answer, which may come after this set-up gave up.
                const auto asked = std::make_shared<Asked>();
                const bool loaded = Stage::waitFor(
                    [&view, asked] {
                        if (view && !asked->asking) {
                            asked->asking = true;
                            view->page()->runJavaScript(
                                u"document.readyState === 'complete' && document.body.innerText.length > 0"_s,
                                [asked](const QVariant &answer) {
                                    asked->complete = answer.toBool();
                                    asked->asking = false;
                                });
                        }
                        return asked->complete;
                    },
                    30000);
                if (!loaded)
                    return u"the bank page did not load"_s;
                Stage::settle(1500); // the page paints after it has loaded
                return QString();
            }),
        { u"webView"_s } });

    shots.append({ u"desktop-payment-options"_s, u"Desktop: a phone-width column in a wide window"_s,
        kDesktop, at(u"4"_s, u"PaymentOptionVC"_s), { u"UPILabel"_s } });

    shots.append({ u"desktop-card"_s, u"Desktop: card entry"_s, kDesktop,
        at(u"2"_s, u"CardViewController"_s, [](Stage &stage) { return fillCard(stage, true); }),
        { u"btnProceed"_s } });

    // Last: its bank list answers only when the run ends.
    shots.append({ u"loader"_s, u"The loader, while the bank list is on its way"_s, kPhone,
        [&sandbox](Stage &stage) {
            sandbox::ScriptedReply slow;
            slow.delay = 30000ms;
            slow.handleNormally = true;
            sandbox.enqueueReply("v1/netbanking/listofbanks", slow);
            if (QString error = open(stage, checkout(u"3"_s), u"NetBankingViewController"_s);
                !error.isEmpty())
                return error;
            const QString error = waitVisible(stage, u"loaderContainer"_s);
            Stage::settle(200);
            return error;
        },
        { u"loaderContainer"_s, u"loaderLoadingView"_s } });

    return shots;
}

} // namespace kovena::screenshots
