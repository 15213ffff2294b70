#pragma once

#include "payment/BankPageScreen.h"

#include <QPointer>
#include <QString>
#include <QUrl>

#include <memory>

class QWebEngineProfile;
class QWebEngineView;

namespace kovena {

class Timer;
class TransactionStatus;

// The bank's page: posts the payment's form to the bank inside an embedded browser, watches
// every navigation for the backend's return address, then asks for the transaction's status
// once and hands it to the merchant. Leaving before the return reports a cancelled payment.
class PaymentViewController : public BankPageScreen
{
    Q_OBJECT

public:
    // Where the bank sends the customer back when the payment is over.
    static QString returnAddressMarker();
    // `text` as ASCII, each other character (a whole code point) replaced by "?".
    static QByteArray asciiLossy(const QString &text);

    explicit PaymentViewController(QWidget *parent = nullptr);
    ~PaymentViewController() override;

    QPointer<QWidget> overlay;
    QPointer<QWebEngineView> webView;
    // The address of the latest navigation request seen.
    QString scheme;

    void viewDidLoad() override;
    void viewWillDisappear(bool animated) override;

    // Asked before every navigation of the page, whatever its kind: false stops it. The return
    // address starts the status enquiry at once and is never loaded.
    bool shouldStartLoad(const QUrl &url);
    // Starts the status enquiry (the return timer's action).
    void waitForStatus(Timer &timer);
    // Reports `trnasactionStatus` to the merchant on the calling thread; after it, leaving the
    // screen reports nothing.
    void finish(std::shared_ptr<TransactionStatus> trnasactionStatus);
    // True until finish() has run.
    bool isBackPressed() const;
    // A black cover over the whole screen at 0.8 opacity (true), or none (false).
    void loading(bool flag);

private:
    class Reporter;

    QWebEngineProfile *m_profile = nullptr;
    std::shared_ptr<Reporter> m_reporter;
};

} // namespace kovena
