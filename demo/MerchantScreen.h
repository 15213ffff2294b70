#pragma once

#include "DemoOptions.h"

#include "sdk/KovenaCallback.h"

#include <QWidget>

#include <nlohmann/json.hpp>

#include <functional>
#include <memory>

class QComboBox;
class QFormLayout;
class QLineEdit;

namespace kovena::demo {

// The merchant's own screen: a form with the checkout arguments and a status enquiry, and the
// KovenaCallback through which the library reports. Starting a flow hands this screen to the
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

Q_SIGNALS:
    // Emitted on the main thread after a flow was handed to the library.
    void flowStarted();

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
    QComboBox *m_mode = nullptr;
    QLineEdit *m_statusTxn = nullptr;
    QLineEdit *m_statusOrder = nullptr;
    QLineEdit *m_statusToken = nullptr;
};

} // namespace kovena::demo
