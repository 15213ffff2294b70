// The bank page in a real embedded browser against the in-process sandbox: the form it posts,
// the return address it watches for, the one status enquiry and the two ways it reports.
// Main-queue work runs on the manual clock; the browser and the network run for real and the
// tests wait for them with bounded loops.
#include "api/ApiManager.h"
#include "api/Callbacks.h"
#include "model/TransactionStatus.h"
#include "payment/PaymentViewController.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "support/FatalDiagnostic.h"
#include "support/InProcessBackend.h"
#include "support/TestMerchant.h"

#include <QCoreApplication>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineView>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <mutex>
#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace kovena {
namespace {

const std::string kBankPagePath = "/bank/pay";

using testing::bodiesSentTo;
using testing::fatalLine;
using testing::kStatusEndpoint;

// What the backend answered to a card payment's registration.
struct Registration
{
    QString url, postParams, kovenaTransactionId;
};

class RegistrationRecorder final : public PaymentCallback
{
public:
    void getPaymentParams(const QString &url, const QString &postParams, const QString &id) override
    {
        std::lock_guard lock(m_mutex);
        m_answer = Registration { url, postParams, id };
    }
    std::optional<Registration> answer() const
    {
        std::lock_guard lock(m_mutex);
        return m_answer;
    }

private:
    mutable std::mutex m_mutex;
    std::optional<Registration> m_answer;
};

Registration registerCardPayment()
{
    auto recorder = std::make_shared<RegistrationRecorder>();
    ApiManager::payCard(recorder, u"ORD-BANK-1"_s, u"4111111111111111"_s, u"A B"_s, u"12"_s, u"2099"_s,
        u"123"_s, u"100.00"_s, u"COLL-1"_s);
    if (!QTest::qWaitFor([&] { return recorder->answer().has_value(); }, 10000))
        return {};
    return *recorder->answer();
}

std::vector<sandbox::RecordedRequest> requestsTo(const std::string &path)
{
    std::vector<sandbox::RecordedRequest> out;
    for (const auto &request : testing::inProcessBackend().requests())
        if (request.path == path)
            out.push_back(request);
    return out;
}

class BankPageTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        testing::resetBackendForCheckout(u"bank-page-token"_s);
        registration = registerCardPayment();
        ASSERT_FALSE(registration.url.isEmpty());
        testing::inProcessBackend().clearRequests();
    }

    // Pushes the bank page over a screen of the flow, as the card screen's segue does.
    void open(const QString &url, const QString &postData)
    {
        window.resize(375, 667);
        merchant = new testing::TestMerchant;
        merchant->setParent(&window);
        nav = new NavigationController;
        page = new PaymentViewController;
        page->url = url;
        page->postData = postData;
        page->kovenaTransactionId = registration.kovenaTransactionId;
        page->merchantVC = merchant;
        QObject::connect(page->webView, &QWebEngineView::loadFinished, page,
            [this](bool ok) { loadedUrls << (ok ? page->webView->url().toString() : QString()); });
        nav->setViewControllers({ new ViewController, page.data() });
        setRootViewController(&window, nav);
        window.show();
        clock.runDue();
    }
    void open() { open(registration.url, registration.postParams); }

    // Waits for `done`, running main-queue work as it is posted.
    bool waitFor(const std::function<bool()> &done, int ms = 15000)
    {
        return QTest::qWaitFor(
            [&] {
                clock.runDue();
                return done();
            },
            ms);
    }

    ManualScheduler clock;
    ScopedScheduler scoped { clock };
    QWidget window;
    Registration registration;
    QPointer<testing::TestMerchant> merchant;
    QPointer<NavigationController> nav;
    QPointer<PaymentViewController> page;
    QStringList loadedUrls;
};

// What the page does around the customer's decision; approving and declining, and leaving the
// page before deciding, are rows of the endings table.
TEST_F(BankPageTest, TheReturnStartsOneEnquiryAndItsStatusReachesTheMerchantOnce)
{
    open();
    ASSERT_TRUE(waitFor([&] { return !loadedUrls.isEmpty(); }));
    bool approveShown = false, answered = false;
    page->webView->page()->runJavaScript(
        u"document.getElementById('approve') !== null"_s, [&](const QVariant &v) {
            approveShown = v.toBool();
            answered = true;
        });
    ASSERT_TRUE(QTest::qWaitFor([&] { return answered; }, 5000) && approveShown);

    page->webView->page()->runJavaScript(u"document.getElementById('approve').click()"_s);
    ASSERT_TRUE(waitFor([&] { return merchant->callCount() == 1; }));
    EXPECT_TRUE(page->scheme.contains(u"KoVena//v3/return"_s));
    EXPECT_FALSE(page->isBackPressed());

    const nlohmann::json enquiry { { "kovenaRefNumber", registration.kovenaTransactionId.toStdString() },
        { "transactionRefNumber", "" }, { "txnOtp", "" } };
    EXPECT_EQ(bodiesSentTo(kStatusEndpoint), std::vector { enquiry });

    // The return timer was fired at once: nothing more when it would have been due. Whatever
    // the due work posted is delivered, and the round trip proves any request it started has
    // reached the backend.
    clock.advance(5000ms);
    QCoreApplication::sendPostedEvents();
    ASSERT_TRUE(testing::roundTrip());
    EXPECT_EQ(bodiesSentTo(kStatusEndpoint), std::vector { enquiry });
    // The return page itself is never loaded.
    for (const auto &request : testing::inProcessBackend().requests())
        EXPECT_EQ(request.path.find("v3/return"), std::string::npos) << request.path;

    EXPECT_FALSE(page->loader().isAnimating());

    // Leaving after the report reports nothing more.
    nav->popViewController(false);
    clock.runDue();
    EXPECT_EQ(merchant->callCount(), 1u);
}

// The form goes out as the backend wrote it, but every device type of 1 in it goes out as 0; a
// return address with a single slash is a page like any other, neither enquired about nor reported.
TEST_F(BankPageTest, EveryDeviceTypeOneIsPostedAsZeroAndASingleSlashReturnLoadsLikeAnyPage)
{
    open(registration.url, registration.postParams + u"&b=device_type=1&device_type=10"_s);
    ASSERT_TRUE(waitFor([&] { return !loadedUrls.isEmpty(); }));
    const auto posted = requestsTo(kBankPagePath);
    ASSERT_EQ(posted.size(), 1u);
    EXPECT_EQ(posted[0].method, "POST");
    QString expected = registration.postParams;
    expected.replace(u"device_type=1"_s, u"device_type=0"_s);
    EXPECT_EQ(QString::fromStdString(posted[0].body), expected + u"&b=device_type=0&device_type=00"_s);

    const QString single = QString::fromStdString(testing::inProcessBackend().baseUrl())
        + u"v3/return?kovenaTransactionId=1"_s;
    ASSERT_TRUE(single.contains(u"KoVena/v3/return"_s));
    page->webView->page()->runJavaScript(u"location.href = '%1'"_s.arg(single));
    ASSERT_TRUE(waitFor([&] { return loadedUrls.contains(single); }));
    EXPECT_EQ(page->scheme, single);
    EXPECT_TRUE(page->isBackPressed());
    EXPECT_TRUE(bodiesSentTo(kStatusEndpoint).empty());
    EXPECT_EQ(merchant->callCount(), 0u);
}

TEST(BankPageForm, IsPostedAsAsciiWithEachOtherCharacterReplaced)
{
    const std::pair<const char *, const char *> rows[] = {
        { "a=1&b=2", "a=1&b=2" },
        { "name=Ravi Kumar&amount=\u20b9100", "name=Ravi Kumar&amount=?100" },
        { "city=M\u00fcnchen", "city=M?nchen" },
        { "smile=\U0001F600!", "smile=?!" }, // one character, two UTF-16 units: one "?"
        { "", "" },
    };
    for (const auto &[text, posted] : rows)
        EXPECT_EQ(PaymentViewController::asciiLossy(QString::fromUtf8(text)), QByteArray(posted)) << text;
}

// Each death test opens the page and goes straight to the return address, with the status
// enquiry's answer scripted.
class BankPageDeathTest : public BankPageTest
{
protected:
    void returnWith(const char *statusReply)
    {
        sandbox::ScriptedReply reply;
        reply.body = statusReply;
        testing::inProcessBackend().enqueueReply(kStatusEndpoint, reply);
        open();
        page->shouldStartLoad(
            QUrl(QString::fromStdString(testing::inProcessBackend().baseUrl()) + u"/v3/return"_s));
        waitFor([] { return false; }, 10000);
    }
};

TEST_F(BankPageDeathTest, FatalSpots)
{
    EXPECT_DEATH(open(u"not an address"_s, registration.postParams),
        fatalLine("bank page: the page address cannot be parsed"));
    EXPECT_DEATH(returnWith(R"({"error":"Service unavailable"})"),
        fatalLine("bank page: the status enquiry answered no status"));
    EXPECT_DEATH(returnWith(R"({"responseCode":"200TRANSRESPSUCC","data":{}})"),
        fatalLine("bank page: the transaction status has no payment status"));
    EXPECT_DEATH(returnWith(R"({"responseCode":"200TRANSRESPSUCC","data":{"paymentStatus":4294967297}})"),
        fatalLine("bank page: the payment status does not fit in 32 bits"));
    EXPECT_DEATH(
        {
            open();
            page->shouldStartLoad(QUrl());
        },
        fatalLine("bank page: a navigation request has no address"));
    EXPECT_DEATH(
        {
            PaymentViewController alone;
            alone.url = registration.url;
            delete alone.webView.data();
            alone.loadViewIfNeeded();
        },
        fatalLine("bank page: there is no web view"));
}

} // namespace
} // namespace kovena
