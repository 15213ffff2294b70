// The demo's merchant window driven as a person would, in this process, against the sandbox: the
// merchant's part through the window's own controls, the customer's part through the library's
// screens and the bank's page; each payment ends as a callback row, and the store comes back.
#include "MerchantWindow.h"
#include "BankPagePlayer.h"
#include "Customer.h"
#include "DemoBackend.h"
#include "DemoOptions.h"
#include "MerchantScreen.h"
#include "ScreenWatcher.h"

#include "payment/NetBankingViewController.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDate>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>
#include <QWebEngineView>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

using namespace Qt::StringLiterals;

namespace kovena::demo {
namespace {

constexpr int kStepLimitMs = 20000;
constexpr int kOutcomeLimitMs = 60000;

// The customer's part, one action at a time, each after a bounded wait for its control.
class Person
{
public:
    explicit Person(MerchantWindow &window)
        : m_window(window)
    {
        m_watcher.install();
        // The bank page starts loading before its screen shows: follow the view at once.
        QObject::connect(&m_watcher, &ScreenWatcher::screenShown, &m_page, [this](const QString &name) {
            if (name != QLatin1String("PaymentViewController"))
                return;
            for (auto *view : m_window.findChildren<QWebEngineView *>(QStringLiteral("webView")))
                m_page.follow(view);
        });
    }

    QWidget *ready(const QString &name)
    {
        QWidget *widget = nullptr;
        const bool found = QTest::qWaitFor(
            [&] {
                widget = customer::visibleWidget(name);
                return widget && widget->isEnabled() && !customer::loaderVisible();
            },
            kStepLimitMs);
        EXPECT_TRUE(found) << "no " << name.toStdString();
        return found ? widget : nullptr;
    }

    void tap(const QString &name)
    {
        if (QWidget *widget = ready(name))
            customer::tap(widget);
    }

    void type(const QString &name, const QString &text)
    {
        QWidget *field = ready(name);
        if (!field)
            return;
        customer::tap(field);
        field->setFocus(Qt::MouseFocusReason);
        for (const QChar c : text)
            customer::typeCharacter(field, c);
    }

    // Opens the list under `anchor` and moves to `entry` with the arrow keys, then Return.
    void choose(const QString &anchor, const QString &entry)
    {
        tap(anchor);
        QAbstractItemView *list = nullptr;
        ASSERT_TRUE(QTest::qWaitFor(
            [&] {
                return (list = qobject_cast<QAbstractItemView *>(customer::visibleWidget(u"dropDownList"_s)));
            },
            kStepLimitMs));
        int target = -1;
        for (int row = 0; row < list->model()->rowCount(); ++row) {
            if (list->model()->index(row, 0).data().toString() == entry)
                target = row;
        }
        ASSERT_GE(target, 0) << entry.toStdString();
        for (int keys = 0; keys < 200 && list->currentIndex().row() != target; ++keys)
            customer::pressKey(list, list->currentIndex().row() < target ? Qt::Key_Down : Qt::Key_Up);
        ASSERT_EQ(list->currentIndex().row(), target);
        customer::pressKey(list, Qt::Key_Return);
    }

    // The popular banks' buttons answer "Error occured" until the bank list is in: a person
    // waits for the list.
    void waitForBankList()
    {
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                const auto screens = m_window.findChildren<NetBankingViewController *>();
                return !screens.isEmpty() && !screens.constLast()->bankList.isEmpty();
            },
            kStepLimitMs));
    }

    void approveOnBankPage()
    {
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                for (auto *view : m_window.findChildren<QWebEngineView *>(u"webView"_s)) {
                    if (view->isVisible())
                        m_page.follow(view);
                }
                return m_page.hasPage()
                    && m_page.pressElement(u"approve"_s) == BankPagePlayer::Press::Pressed;
            },
            kStepLimitMs));
    }

private:
    MerchantWindow &m_window;
    ScreenWatcher m_watcher;
    BankPagePlayer m_page;
};

struct Flow
{
    const char *name;
    const char *mode; // radio button of the payment mode; nullptr: a status enquiry
    std::function<void(Person &)> customer; // every flow here ends in one "1 Success" report
    bool onGuiThread;
};

void PrintTo(const Flow &flow, std::ostream *out)
{
    *out << flow.name;
}

// The merchant window on a sandbox of its own, shown and exposed.
class MerchantWindowTest : public testing::Test
{
protected:
    void open()
    {
        QString error;
        ASSERT_TRUE(backend.start(options, &error)) << error.toStdString();
        opened = std::make_unique<MerchantWindow>(options, backend.description());
        opened->logLibraryEvents();
        opened->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(opened.get()));
    }

    // A request of the test's own, answered by the sandbox after every request the library sent
    // before it; then the main queue drained so whatever those answers started has been handed on.
    void settle()
    {
        QNetworkAccessManager network;
        QNetworkReply *reply = network.get(QNetworkRequest(QUrl(backend.baseUrl())));
        ASSERT_TRUE(QTest::qWaitFor([&] { return reply->isFinished(); }, kStepLimitMs));
        reply->deleteLater();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        QCoreApplication::sendPostedEvents();
    }

    DemoOptions options;
    DemoBackend backend;
    std::unique_ptr<MerchantWindow> opened;
};

class MerchantWindowFlow : public MerchantWindowTest, public testing::WithParamInterface<Flow>
{
};

TEST_P(MerchantWindowFlow, EndsAsOneCallbackRowWithItsRecordAndTheStoreComesBack)
{
    const Flow &flow = GetParam();
    options.orderNo = u"ORD-WINDOW-1"_s;
    ASSERT_NO_FATAL_FAILURE(open());
    MerchantWindow &window = *opened;
    auto *rows = window.findChild<QTreeWidget *>(u"callbackTable"_s);
    auto *record = window.findChild<QPlainTextEdit *>(u"callbackRecord"_s);
    auto *back = window.findChild<QAction *>(u"backToStoreAction"_s);
    ASSERT_TRUE(rows && record && back);
    EXPECT_FALSE(back->isEnabled());

    Person person(window);
    if (flow.mode) {
        person.tap(QString::fromLatin1(flow.mode));
        person.tap(u"payButton"_s);
    } else {
        person.type(u"statusTxnField"_s, u"42"_s);
        person.type(u"statusOrderField"_s, u"ORD-1"_s);
        person.tap(u"statusButton"_s);
    }
    if (flow.customer)
        flow.customer(person);

    auto *log = window.findChild<QPlainTextEdit *>(u"eventLog"_s);
    ASSERT_TRUE(QTest::qWaitFor([&] { return rows->topLevelItemCount() > 0; }, kOutcomeLimitMs))
        << log->toPlainText().toStdString();
    // Exactly one report per flow: once the sandbox has answered everything and the queue is
    // drained, a second report would already be a row.
    ASSERT_NO_FATAL_FAILURE(settle());
    ASSERT_EQ(rows->topLevelItemCount(), 1);
    const QTreeWidgetItem *row = rows->topLevelItem(0);
    EXPECT_EQ(row->text(1), u"1"_s);
    EXPECT_EQ(row->text(2), u"Success"_s);
    EXPECT_FALSE(row->text(3).isEmpty()) << "transaction id";
    EXPECT_EQ(row->text(4) == u"GUI thread"_s, flow.onGuiThread) << row->text(4).toStdString();
    // The row is selected, so its whole record is already on show.
    EXPECT_TRUE(record->toPlainText().contains(u"\"paymentStatus\": 1"_s))
        << record->toPlainText().toStdString();
    EXPECT_TRUE(record->toPlainText().contains(u"\"kovenaTransactionId\": "_s + row->text(3)));

    // The library's screens stay until the merchant brings its own back.
    EXPECT_NE(window.centralWidget(), window.merchantScreen());
    EXPECT_TRUE(back->isEnabled());
    back->trigger();
    EXPECT_EQ(window.centralWidget(), window.merchantScreen());
    EXPECT_TRUE(window.merchantScreen()->isVisible());
    EXPECT_FALSE(back->isEnabled());
}

const QString nextYear = QString::number(QDate::currentDate().year() + 1);

INSTANTIATE_TEST_SUITE_P(Payments, MerchantWindowFlow,
    testing::Values(Flow { "Upi", "modeUpi",
                        [](Person &p) {
                            p.type(u"tfUpiId"_s, u"success@kovena"_s);
                            p.tap(u"btnProceed"_s);
                        },
                        true },
        Flow { "Card", "modeCard",
            [](Person &p) {
                p.type(u"tfCardNumber"_s, u"4111111111111111"_s);
                p.type(u"tfCardName"_s, u"Asha Rao"_s);
                p.choose(u"btnMonth"_s, u"12"_s);
                p.choose(u"btnYear"_s, nextYear);
                p.type(u"tfCvv"_s, u"123"_s);
                p.tap(u"btnProceed"_s);
                p.approveOnBankPage();
            },
            false },
        Flow { "NetBanking", "modeNetBanking",
            [](Person &p) {
                p.waitForBankList();
                p.tap(u"btnSbiBank"_s);
                p.approveOnBankPage();
            },
            false },
        Flow { "StatusEnquiry", nullptr, nullptr, true }),
    [](const testing::TestParamInfo<Flow> &info) { return std::string(info.param.name); });

TEST_F(MerchantWindowTest, BankPickerShowsTheBanksOrWhyNotAndOtherModesReachTheOptions)
{
    ASSERT_NO_FATAL_FAILURE(open());
    MerchantWindow &window = *opened;

    auto *picker = window.findChild<QComboBox *>(u"bankPicker"_s);
    ASSERT_NE(picker, nullptr);
    EXPECT_FALSE(picker->isEnabled());
    QSignalSpy loaded(window.merchantScreen(), &MerchantScreen::bankListLoaded);
    // Port 9 on loopback: nothing listens there, the request fails at once.
    window.merchantScreen()->loadBankList(u"http://127.0.0.1:9/KoVena/"_s);
    ASSERT_TRUE(loaded.wait(kStepLimitMs));
    EXPECT_FALSE(picker->isEnabled()) << "no list";
    EXPECT_TRUE(window.findChild<QWidget *>(u"bankPickerState"_s)
                    ->property("text")
                    .toString()
                    .startsWith(u"Could not load"_s));
    window.merchantScreen()->loadBankList(backend.baseUrl());
    ASSERT_TRUE(loaded.wait(kStepLimitMs));
    EXPECT_TRUE(picker->isEnabled());
    EXPECT_GE(picker->count(), 6);
    EXPECT_GE(picker->findData(u"SBIB"_s), 0);
    EXPECT_GE(picker->findText(u"State Bank of India (SBIB)"_s), 0);

    // A free mode value chooses "Other" and keeps the customer on the payment options.
    Person person(window);
    person.type(u"modeOtherField"_s, u"4"_s);
    EXPECT_TRUE(window.findChild<QAbstractButton *>(u"modeOther"_s)->isChecked());
    auto *log = window.findChild<QPlainTextEdit *>(u"eventLog"_s);
    person.tap(u"payButton"_s);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return log->toPlainText().contains(u"PaymentOptionVC"_s); }, kStepLimitMs))
        << log->toPlainText().toStdString();
}

} // namespace
} // namespace kovena::demo
