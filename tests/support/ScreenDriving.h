#pragma once

// Driving a library screen as the customer does.
#include "payment/PaymentScreen.h"
#include "platform/AlertController.h"
#include "platform/NavigationController.h"

#include <QLabel>
#include <QPushButton>
#include <QStringList>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

namespace kovena::testing {

// The toasts on `screen`, oldest first.
inline QStringList toastsOn(const QWidget *screen)
{
    QStringList texts;
    if (screen)
        for (const QLabel *label : screen->findChildren<QLabel *>(QStringLiteral("kovenaToast")))
            texts << label->text();
    return texts;
}

// What the payment option screen hands a payment screen: the checkout's amount, order and
// collector, the merchant to report to, and a Cancel button in the navigation bar.
inline void handOverCheckout(PaymentScreen &screen, QWidget *merchant, const QString &amount,
    const QString &reference, const QString &collectorId)
{
    screen.amount = amount;
    screen.merchantTransactionRefNumber = reference;
    screen.collectorId = collectorId;
    screen.merchantVC = merchant;
    screen.isPaymentModeAvail = true;
}

// Taps the navigation bar's "Cancel", then `button` ("Cancel" or "Proceed") of the question it
// brings up over `screen`.
inline void answerCancelQuestion(NavigationController *nav, ViewController *screen, const QString &button)
{
    ASSERT_TRUE(nav && screen);
    QTest::mouseClick(nav->rightButton(), Qt::LeftButton);
    auto *alert = qobject_cast<AlertController *>(screen->presentedViewController());
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->message(), QStringLiteral("Are you sure want to cancel transaction?"));
    const auto buttons = alert->findChildren<QPushButton *>();
    const auto tapped = std::find_if(
        buttons.begin(), buttons.end(), [&](const QPushButton *b) { return b->text() == button; });
    ASSERT_NE(tapped, buttons.end());
    QTest::mouseClick(*tapped, Qt::LeftButton);
}

} // namespace kovena::testing
