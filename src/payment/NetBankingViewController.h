#pragma once

#include "api/Callbacks.h"
#include "payment/BankPageOpener.h"
#include "payment/DropDown.h"

#include <QColor>
#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class QPushButton;

namespace Ui {
class NetBankingViewController;
}

namespace kovena {

class BankNBData;
template<class Screen> class CallbackRelay;

// The net banking screen: loads the banks that offer net banking, offers six popular ones as
// one-tap buttons and all of them in a drop-down list, registers the payment with the chosen
// bank and opens the bank's page with the backend's answer.
class NetBankingViewController : public BankPageOpener, public GetNBListCallback
{
    Q_OBJECT

public:
    explicit NetBankingViewController(QWidget *parent = nullptr);
    ~NetBankingViewController() override;

    QPointer<QPushButton> btnSelectBank;
    QPointer<QPushButton> btnDropDownList;
    QPointer<QPushButton> btnProceed1;
    QPointer<QPushButton> btnProceedInvisible;

    DropDown amountDropDown;
    QList<std::shared_ptr<BankNBData>> bankList;
    // The bank chosen in the drop-down list.
    std::shared_ptr<BankNBData> bank;
    std::shared_ptr<BankNBData> sbi, axisBank, hdfc, yesBank, pnbBank, iciciBank;
    std::optional<QColor> currentButtonBg;

    void viewDidLoad() override;

    // Session thread: the bank list, in the backend's order (empty on failure).
    void getNBList(QList<std::shared_ptr<BankNBData>> bankList) override;
    // Fills the drop-down list; an index of `list` must be an index of bankList.
    void setupAmountDropDown(const QStringList &list);

    // Actions. The outlets btnSelectBank and btnProceed1 share their actions' names, so those
    // two actions carry an "Action" suffix.
    void btnSelectBankAction();
    void btnDropDownBank();
    void btnProceed1Action();
    void btnSbiBank();
    void btnAxixBank();
    void btnHdfcBank();
    void btnYesBank();
    void btnPnbBank();
    void btnIciciBank();

    // The text a bank shows in the drop-down list: its name, or "" when it has none.
    static QString listName(const std::shared_ptr<BankNBData> &bank);

private:
    void bankListArrived(const QList<std::shared_ptr<BankNBData>> &banks);
    void chooseBank(int index, const QString &name);
    // No network: "No Network"; no bank: "Error occured"; else registers the payment.
    void payWith(const std::shared_ptr<BankNBData> &chosen);
    void paintProceed(const QColor &colour);

    std::unique_ptr<Ui::NetBankingViewController> ui;
    std::shared_ptr<CallbackRelay<NetBankingViewController>> m_relay;
};

} // namespace kovena
