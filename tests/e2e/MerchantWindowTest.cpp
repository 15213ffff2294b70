// The demo's merchant window driven as a person would, in this process, against the sandbox:
// the library takes the window over, reports into the log, and the store comes back.
#include "MerchantWindow.h"
#include "DemoBackend.h"
#include "DemoOptions.h"
#include "MerchantScreen.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace kovena::demo {
namespace {

template<class T> T *child(QWidget &window, const char *name)
{
    T *found = window.findChild<T *>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

void typeInto(QWidget &window, const char *name, const QString &text)
{
    auto *field = child<QLineEdit>(window, name);
    ASSERT_NE(field, nullptr);
    field->clear();
    QTest::keyClicks(field, text);
}

TEST(MerchantWindow, StatusEnquiryReportsIntoTheLogAndTheStoreComesBack)
{
    DemoOptions options;
    DemoBackend backend;
    QString error;
    ASSERT_TRUE(backend.start(options, &error)) << error.toStdString();

    MerchantWindow window(options, backend.description());
    window.logLibraryEvents();
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    auto *log = child<QPlainTextEdit>(window, "eventLog");
    auto *back = window.findChild<QAction *>(QStringLiteral("backToStoreAction"));
    ASSERT_TRUE(log && back);
    EXPECT_FALSE(back->isEnabled());

    typeInto(window, "statusTxnField", "42");
    typeInto(window, "statusOrderField", "ORD-1");
    QTest::mouseClick(child<QPushButton>(window, "statusButton"), Qt::LeftButton);

    ASSERT_TRUE(QTest::qWaitFor([&] { return log->toPlainText().contains("onTransactionComplete"); }, 20000))
        << log->toPlainText().toStdString();
    const QString text = log->toPlainText();
    EXPECT_TRUE(text.contains("\"paymentStatus\":1")) << text.toStdString();
    EXPECT_TRUE(text.contains("\"description\":\"Success\"")) << text.toStdString();
    EXPECT_NE(window.centralWidget(), window.merchantScreen());
    EXPECT_TRUE(back->isEnabled());

    back->trigger();
    EXPECT_EQ(window.centralWidget(), window.merchantScreen());
    EXPECT_TRUE(window.merchantScreen()->isVisible());
    EXPECT_FALSE(back->isEnabled());

    // A second flow from the restored store replaces the first one's screens.
    auto *mode = child<QComboBox>(window, "modeField");
    ASSERT_NE(mode, nullptr);
    mode->lineEdit()->clear();
    QTest::keyClicks(mode->lineEdit(), "4");
    QTest::mouseClick(child<QPushButton>(window, "payButton"), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return log->toPlainText().contains("PaymentOptionVC"); }, 10000))
        << log->toPlainText().toStdString();
    EXPECT_NE(window.centralWidget(), window.merchantScreen());
}

} // namespace
} // namespace kovena::demo
