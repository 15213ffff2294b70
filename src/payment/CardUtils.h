#pragma once

#include "payment/CreditCardValidationType.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringView>

#include <functional>
#include <optional>

namespace kovena {

class ToastPresenter;

// What the checkout knows about card numbers: the scheme (issuer) of a number as it is typed,
// its icon and CVV length, and whether the card form is complete and valid.
class CardUtils
{
public:
    // The issuer constants; the empty string means no issuer.
    struct CardIssuer
    {
        static constexpr QStringView AMEX = u"AMEX";
        static constexpr QStringView VISA = u"VISA";
        static constexpr QStringView MASTER = u"MASTER";
        static constexpr QStringView MAESTRO = u"MAESTRO";
        static constexpr QStringView DINER = u"DINER";
        static constexpr QStringView JCB = u"JCB";
        static constexpr QStringView DISCOVER = u"DISCOVER";
        static constexpr QStringView LASER = u"LASER";
        static constexpr QStringView RUPAY = u"RUPAY";
    };

    // Today's date in the local calendar; replaceable so that the expiry checks can be run
    // against a chosen day.
    using Today = std::function<QDate()>;

    explicit CardUtils(Today today = &QDate::currentDate);

    // The scheme records, in the order they are tried; built on first use, then the same list.
    const QList<CreditCardValidationType> &types() const;

    QString getCardIssuer(const QString &cardNumber) const;
    QString getCardIssuerIcon(const QString &cardNumber) const;
    // The first scheme record whose pattern matches the number's decimal digits as a whole.
    std::optional<CreditCardValidationType> type(const QString &cardNumber) const;
    int getCvvLength(const QString &cardNumber) const;

    // An absent argument that a check needs is a programming error and ends the process.
    bool isValidCvv(const std::optional<QString> &cardNumber, const std::optional<QString> &cvv) const;
    bool isValidMonth(const std::optional<QString> &cardNumber, const std::optional<QString> &month,
        const std::optional<QString> &year) const;
    bool isValidYear(const std::optional<QString> &cardNumber, const std::optional<QString> &year) const;

    // Checks the form in order and, on the first failure, queues its toast on the main queue for
    // `context` (skipped if `context` is gone by then) and returns false at once.
    bool isValidCardDetails(ToastPresenter &context, const std::optional<QString> &cardNumber,
        const std::optional<QString> &cardName, const std::optional<QString> &month,
        const std::optional<QString> &year, const std::optional<QString> &cvv) const;
    // The same checks, without a toast.
    bool isButtonProceedEnabled(const std::optional<QString> &cardNumber,
        const std::optional<QString> &cardName, const std::optional<QString> &month,
        const std::optional<QString> &year, const std::optional<QString> &cvv) const;

private:
    // The toast text of the first check that fails, or nothing when all pass.
    std::optional<QString> firstFailure(const char *caller, const std::optional<QString> &cardNumber,
        const std::optional<QString> &cardName, const std::optional<QString> &month,
        const std::optional<QString> &year, const std::optional<QString> &cvv) const;

    Today m_today;
    mutable std::optional<QList<CreditCardValidationType>> m_types;
};

} // namespace kovena
