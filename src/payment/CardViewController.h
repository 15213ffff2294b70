#pragma once

#include "payment/BankPageOpener.h"
#include "payment/CardUtils.h"
#include "payment/DropDown.h"
#include "platform/TextField.h"

#include <QColor>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class QFrame;
class QLabel;
class QPushButton;

namespace Ui {
class CardViewController;
}

namespace kovena {

template<class Screen> class CallbackRelay;

// The card payment screen: takes the card number (grouped as it is typed, with its scheme's
// icon), the name on the card, the expiry month and year from two lists and the CVV, keeps
// proceed enabled only while the form is complete, registers the payment and opens the bank page.
class CardViewController : public BankPageOpener, public TextFieldDelegate
{
    Q_OBJECT

public:
    explicit CardViewController(QWidget *parent = nullptr);
    ~CardViewController() override;

    QPointer<TextField> tfCardNumber;
    QPointer<TextField> tfCardName;
    QPointer<TextField> tfCvv;
    QPointer<QLabel> iconCardIssuer;
    QPointer<QFrame> viewDate;
    QPointer<QLabel> ivIconDate;
    QPointer<QPushButton> btnMonth;
    QPointer<QPushButton> btnDropMonth;
    QPointer<QPushButton> btnYear;
    QPointer<QPushButton> btnDropYear;
    QPointer<QPushButton> btnProceed;
    // Hidden and disabled: only the bank page hand-over touches it up.
    QPointer<QPushButton> btnProceedInvisible;

    QString card; // digits only, as last shown grouped or ungrouped
    QString name;
    QString month = QStringLiteral("mm"); // "1"..."12", or a placeholder
    QString year = QStringLiteral("yyyy"); // four digits, or a placeholder
    QString cvv;
    int limitLength = 3; // the CVV's length for the stored number
    CardUtils cardUtils;
    DropDown mmDropDown;
    DropDown yyyyDropDown;
    // The proceed button's designed colour, kept while it shows grey.
    std::optional<QColor> currentButtonBg;

    void viewDidLoad() override;

    bool textFieldShouldChangeCharacters(
        TextField *field, int start, int length, const QString &replacement) override;
    // Return on the name on card ends editing.
    bool textFieldShouldReturn(TextField *field);
    // Editing the CVV lifts the screen so the keyboard leaves it in sight; ending puts it back.
    void textFieldDidBeginEditing(TextField *field);
    bool textFieldShouldEndEditing(TextField *field);

    // The buttons' actions.
    void btnProceedAction();
    void btnMonthAction();
    void btnDropMonthAction();
    void btnYearAction();
    void btnDropYearAction();

    void enableButtonProceed(bool isEnable);
    void setupMMDropDown();
    void setupYYYYDropDown();
    void setDateViewAttrib(QFrame *viewDate);
    void setFieldAttributes(TextField *textField, const QString &imageName);
    static QColor uicolorFromHex(quint32 rgbValue);

    // How far the screen moves up while the CVV is edited.
    static constexpr int kCvvLift = 70;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setupExpiryDropDown(
        DropDown &list, QPushButton *button, const QStringList &items, const QString &name, QString &field);
    void numberEdited();
    void refreshProceed();
    void paintProceed(const std::optional<QColor> &background);

    std::unique_ptr<Ui::CardViewController> ui;
    std::shared_ptr<CallbackRelay<CardViewController>> m_relay;
    // Each field's text as it stood before the edit being decided (the field already shows the
    // edit when it asks).
    QString m_numberBefore;
    QString m_nameBefore;
    QString m_cvvBefore;
    // The text the number field shows in place of the edit just accepted.
    std::optional<QString> m_numberToShow;
    // The scheme icon's file name the issuer label shows ("" for none).
    QString m_issuerIconShown;
};

} // namespace kovena
