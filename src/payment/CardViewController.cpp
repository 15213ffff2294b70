#include "payment/CardViewController.h"

#include "ui_CardViewController.h"

#include "api/ApiManager.h"
#include "flow/CallbackRelay.h"
#include "flow/MainKovena.h"
#include "flow/Theme.h"
#include "flow/Utils.h"
#include "payment/CardFormEditing.h"
#include "platform/Dispatch.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"

#include <QDate>
#include <QEvent>
#include <QFrame>
#include <QIcon>
#include <QLabel>
#include <QPalette>
#include <QPixmap>
#include <QPushButton>
#include <QToolBar>

#include <utility>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

using cardFormEditing::NumberEdit;

constexpr quint32 kBorderColour = 0xC4C4C4;
// The proceed button's colour while the form is incomplete.
constexpr quint32 kLightGrey = 0xAAAAAA;
constexpr int kYearsOffered = 40;

} // namespace

CardViewController::CardViewController(QWidget *parent)
    : BankPageOpener(parent)
    , ui(std::make_unique<Ui::CardViewController>())
    , m_relay(std::make_shared<CallbackRelay<CardViewController>>(this))
{
    ui->setupUi(this);
    tfCardNumber = ui->tfCardNumber;
    tfCardName = ui->tfCardName;
    tfCvv = ui->tfCvv;
    iconCardIssuer = ui->iconCardIssuer;
    viewDate = ui->viewDate;
    ivIconDate = ui->ivIconDate;
    btnMonth = ui->btnMonth;
    btnDropMonth = ui->btnDropMonth;
    btnYear = ui->btnYear;
    btnDropYear = ui->btnDropYear;
    btnProceed = ui->btnProceed;
    btnProceedInvisible = ui->btnProceedInvisible;
    setProceedInvisible(btnProceedInvisible);

    // A field asks about an edit once it already shows it: each keeps its text from before.
    const std::pair<TextField *, QString *> fields[]
        = { { tfCardNumber, &m_numberBefore }, { tfCardName, &m_nameBefore }, { tfCvv, &m_cvvBefore } };
    for (const auto &[field, before] : fields) {
        field->setDelegate(this);
        field->installEventFilter(this);
        connect(field, &QLineEdit::textChanged, this, [field, before] { *before = field->text(); });
        connect(field, &QLineEdit::returnPressed, this, [this, field] { textFieldShouldReturn(field); });
    }
    connect(tfCardNumber, &TextField::editingChanged, this, &CardViewController::numberEdited);

    connect(btnProceed, &QPushButton::clicked, this, &CardViewController::btnProceedAction);
    connect(btnMonth, &QPushButton::clicked, this, &CardViewController::btnMonthAction);
    connect(btnDropMonth, &QPushButton::clicked, this, &CardViewController::btnDropMonthAction);
    connect(btnYear, &QPushButton::clicked, this, &CardViewController::btnYearAction);
    connect(btnDropYear, &QPushButton::clicked, this, &CardViewController::btnDropYearAction);
}

CardViewController::~CardViewController()
{
    // After detach() no answer reaches this screen; a call already running has finished.
    m_relay->detach();
    if (task)
        task->cancel();
}

void CardViewController::viewDidLoad()
{
    BankPageOpener::viewDidLoad();
    addDismissKeyboardTap();
    addDoneButtonOnKeyboard();

    btnProceedInvisible->setEnabled(false);
    btnProceed->setEnabled(false);
    currentButtonBg = btnProceed->palette().color(QPalette::Button);
    paintProceed(uicolorFromHex(kLightGrey));

    setDateViewAttrib(viewDate);
    setFieldAttributes(tfCardNumber, u"ic_card"_s);
    setFieldAttributes(tfCardName, u"ic_person"_s);
    setFieldAttributes(tfCvv, u"ic_lock"_s);

    setupMMDropDown();
    setupYYYYDropDown();

    limitLength = cardUtils.getCvvLength(QString());

    for (TextField *field : { tfCardNumber.data(), tfCvv.data() }) {
        field->setInputMethodHints(Qt::ImhDigitsOnly);
        field->setInputAccessoryView(doneToolbar());
    }

    if (isPaymentModeAvail) {
        navigationItem().hidesBackButton = true;
        setNavButton();
    }

    const QString shownAmount = Utils::isValidAmount(amount) ? Utils::amountFormat(amount) : amount;
    ui->lbAmount->setText(u"\u20B9 "_s + shownAmount);
    theme::describeAmount(ui->lbAmount, ui->lbAmountCaption->text());
}

bool CardViewController::textFieldShouldChangeCharacters(
    TextField *field, int start, int length, const QString &replacement)
{
    if (field == tfCvv) {
        // Stands in for the phone's number pad, which offers nothing but digits.
        if (!cardFormEditing::isDigitsOnly(replacement))
            return false;
        // Typing stops at the limit, or past it once the number changed to a shorter CVV.
        if (!replacement.isEmpty() && !m_cvvBefore.isEmpty() && cvv.size() >= limitLength)
            return false;
        cvv = cardFormEditing::followedText(cvv, m_cvvBefore, replacement);
        refreshProceed();
        return true;
    }
    if (field == tfCardNumber) {
        const NumberEdit edit
            = cardFormEditing::numberEdit(cardUtils, m_numberBefore, start, length, replacement, card);
        switch (edit.kind) {
        case NumberEdit::Kind::Refuse:
            return false;
        case NumberEdit::Kind::Accept:
            return true;
        case NumberEdit::Kind::Show:
            // The rule refuses the edit and sets the field itself. A refused edit here puts the
            // old text back, so the edit is taken and at once replaced (numberEdited): the
            // customer sees the same text, with the cursor at the end.
            m_numberToShow = edit.shown;
            return true;
        }
    }
    if (field == tfCardName) {
        name = cardFormEditing::followedText(name, m_nameBefore, replacement);
        refreshProceed();
    }
    return true;
}

void CardViewController::numberEdited()
{
    const std::optional<QString> shown = std::exchange(m_numberToShow, std::nullopt);
    if (!shown)
        return; // taken as typed: the stored number, icon and CVV length stay as they were
    // Most keys leave the grouping as typed: setting the same text again would only lay the
    // field out a second time.
    if (*shown != tfCardNumber->text())
        tfCardNumber->setText(*shown);
    tfCardNumber->end(false);
    card = QString(tfCardNumber->text()).remove(u'-');
    // Decoding the image and relaying out the label on every key cost more than the rest of
    // the keystroke: the icon is only replaced when the scheme changes.
    const QString icon = cardUtils.getCardIssuerIcon(tfCardNumber->text());
    if (icon != m_issuerIconShown) {
        m_issuerIconShown = icon;
        if (icon.isEmpty())
            iconCardIssuer->clear();
        else
            iconCardIssuer->setPixmap(kovenaImage(icon));
    }
    limitLength = cardUtils.getCvvLength(card);
    refreshProceed();
}

bool CardViewController::textFieldShouldReturn(TextField *field)
{
    if (field == tfCardName)
        dismissKeyboard();
    return true;
}

void CardViewController::textFieldDidBeginEditing(TextField *field)
{
    if (field == tfCvv)
        move(x(), -kCvvLift);
}

bool CardViewController::textFieldShouldEndEditing(TextField *field)
{
    if (field == tfCvv)
        move(x(), 0);
    return true;
}

bool CardViewController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == tfCardNumber || watched == tfCardName || watched == tfCvv) {
        auto *field = static_cast<TextField *>(watched);
        if (event->type() == QEvent::FocusIn)
            textFieldDidBeginEditing(field);
        else if (event->type() == QEvent::FocusOut)
            textFieldShouldEndEditing(field);
    }
    return BankPageOpener::eventFilter(watched, event);
}

void CardViewController::btnProceedAction()
{
    if (refusesSecondPayment())
        return;
    if (!cardUtils.isValidCardDetails(*this, card, name, month, year, cvv))
        return;
    dismissKeyboard();
    if (!Utils::isConnectedToNetwork()) {
        showToast(u"No Network"_s);
        return;
    }
    if (!merchantTransactionRefNumber)
        fatalError("CardViewController: merchantTransactionRefNumber is missing");
    if (!collectorId)
        fatalError("CardViewController: collectorId is missing");
    paymentSent();
    loadering(true);
    task = ApiManager::payCard(
        m_relay, *merchantTransactionRefNumber, card, name, month, year, cvv, amount, *collectorId);
}

void CardViewController::btnMonthAction()
{
    mmDropDown.show();
}

void CardViewController::btnDropMonthAction()
{
    mmDropDown.show();
}

void CardViewController::btnYearAction()
{
    yyyyDropDown.show();
}

void CardViewController::btnDropYearAction()
{
    yyyyDropDown.show();
}

void CardViewController::enableButtonProceed(bool isEnable)
{
    btnProceed->setEnabled(isEnable);
    paintProceed(isEnable ? currentButtonBg : std::optional(uicolorFromHex(kLightGrey)));
}

void CardViewController::refreshProceed()
{
    enableButtonProceed(cardUtils.isButtonProceedEnabled(card, name, month, year, cvv));
}

void CardViewController::paintProceed(const std::optional<QColor> &background)
{
    if (background)
        theme::paintButtonBackground(btnProceed, *background);
}

void CardViewController::setupMMDropDown()
{
    QStringList months { u"MM"_s };
    for (int m = 1; m <= 12; ++m)
        months << QString::number(m);
    setupExpiryDropDown(mmDropDown, btnMonth, months, u"Expiry month"_s, month);
}

void CardViewController::setupYYYYDropDown()
{
    QStringList years { u"YYYY"_s };
    const int currentYear = QDate::currentDate().year();
    for (int y = currentYear; y < currentYear + kYearsOffered; ++y)
        years << QString::number(y);
    setupExpiryDropDown(yyyyDropDown, btnYear, years, u"Expiry year"_s, year);
}

// The list opens under its button; a choice shows on the button and is kept in `field`.
void CardViewController::setupExpiryDropDown(
    DropDown &list, QPushButton *button, const QStringList &items, const QString &name, QString &field)
{
    list.setAnchorView(button);
    list.setBottomOffset(QPoint(0, button->height()));
    list.setDataSource(items);
    list.setAccessibleName(name);
    list.setSelectionAction([this, button, &field](int, const QString &item) {
        button->setText(item);
        field = item;
        refreshProceed();
    });
}

void CardViewController::setDateViewAttrib(QFrame *viewDate)
{
    // The expiry box looks like a text field; its buttons are drawn flat inside it.
    viewDate->setStyleSheet(
        u"QFrame#viewDate { background-color: #FFFFFF; border: 1px solid %1; border-radius: 8px; }"_s.arg(
            uicolorFromHex(kBorderColour).name()));
    ivIconDate->setPixmap(theme::fieldIcon(u"ic_calendar"_s));
    for (QPushButton *arrow : { btnDropMonth.data(), btnDropYear.data() }) {
        arrow->setIcon(QIcon(theme::fieldIcon(u"ic_chevron"_s, theme::kMuted)));
        arrow->setIconSize(QSize(14, 14));
    }
}

void CardViewController::setFieldAttributes(TextField *textField, const QString &imageName)
{
    theme::setLeadingIcon(textField, imageName);
}

QColor CardViewController::uicolorFromHex(quint32 rgbValue)
{
    return QColor::fromRgb((rgbValue >> 16) & 0xFF, (rgbValue >> 8) & 0xFF, rgbValue & 0xFF);
}

} // namespace kovena
