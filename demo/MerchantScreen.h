#pragma once

#include "DemoOptions.h"

#include "sdk/KovenaCallback.h"

#include <QWidget>

#include <nlohmann/json.hpp>

#include <functional>
#include <memory>

class QButtonGroup;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QNetworkAccessManager;

namespace kovena::demo {

// The merchant's own screen: a form with the checkout arguments (the payment mode a clear choice,
// with a free value for anything else), a status enquiry, the backend's bank list for reference,
// and the KovenaCallback through which the library reports. Starting a flow hands this screen to the
// library, which then takes over its window until the merchant brings the screen back.
class MerchantScreen : public QWidget, public KovenaCallback
{
    Q_OBJECT

public:
    using CompletionHook = std::function<void(const nlohmann::ordered_json &event)>;

    explicit MerchantScreen(const DemoOptions &initial, QWidget *parent = nullptr);

    // Runs on the thread the library reports on, before the call returns.
    void setCompletionHook(CompletionHook hook) { m_hook = std::move(hook); }

    void startCheckout(const DemoOptions &options);
    void startStatusEnquiry(const DemoOptions &options);
    // The form as it stands, over `base` for the values the form does not show.
    DemoOptions checkoutFormValues(const DemoOptions &base) const;
    DemoOptions statusFormValues(const DemoOptions &base) const;

    void onTransactionComplete(std::shared_ptr<TransactionStatus> transactionStatus) override;

    // {"event":"onTransactionComplete","transactionStatus":{...}}; a null record gives null.
    static nlohmann::ordered_json completionEvent(const std::shared_ptr<TransactionStatus> &status);

    // Asks the backend at `baseUrl` (ending in /KoVena/) for its bank list, over HTTP as any
    // client would, with the form's access token, and fills the bank picker with it.
    void loadBankList(const QString &baseUrl);

Q_SIGNALS:
    // Emitted on the main thread after a flow was handed to the library.
    void flowStarted();
    // Emitted once the bank list request has ended, whether or not it gave banks.
    void bankListLoaded();

private:
    QLineEdit *addField(
        QFormLayout *form, const QString &label, const QString &objectName, const QString &value);

    DemoOptions m_initial;
    CompletionHook m_hook;
    QLineEdit *m_amount = nullptr;
    QLineEdit *m_order = nullptr;
    QLineEdit *m_token = nullptr;
    QLineEdit *m_collector = nullptr;
    QLineEdit *m_mobile = nullptr;
    QLineEdit *m_email = nullptr;
    QLineEdit *m_requestId = nullptr;
    QLineEdit *m_appName = nullptr;
    QButtonGroup *m_modes = nullptr;
    QLineEdit *m_otherMode = nullptr;
    QComboBox *m_bank = nullptr;
    QLabel *m_bankState = nullptr;
    QNetworkAccessManager *m_network = nullptr;
    QString m_bankBaseUrl;
    QLineEdit *m_statusTxn = nullptr;
    QLineEdit *m_statusOrder = nullptr;
    QLineEdit *m_statusToken = nullptr;
};

} // namespace kovena::demo
