#include "RequestTypes.h"

#include "model/BankNBData.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
#include "platform/UserDefaults.h"

#include <QDate>

#include <gtest/gtest.h>

#include <algorithm>

namespace kovena::test {

namespace {

const QString kReference = QStringLiteral("ORD-F");

std::string describeStatus(const Recorder::Call &call)
{
    if (call.kind != "status")
        return "callback " + call.kind;
    if (!call.status)
        return "failure";
    const auto &data = call.status->data;
    const auto paymentStatus = data ? data->paymentStatus : std::nullopt;
    return "record " + call.status->responseCodeValue().toStdString() + ", paymentStatus "
        + (paymentStatus ? std::to_string(*paymentStatus) : "absent");
}

std::string describeRegistration(const Recorder::Call &call)
{
    if (call.kind != "upi1")
        return "callback " + call.kind;
    if (call.first.isEmpty() && call.second.isEmpty())
        return "failure";
    bool numeric = false;
    call.first.toLongLong(&numeric);
    return (numeric ? "registered " : "registered without an id ") + call.second.toStdString();
}

std::string describeCollect(const Recorder::Call &call)
{
    if (call.kind != "upi2")
        return "callback " + call.kind;
    return call.upi ? "collect " + call.upi->responseCode.value_or(QString()).toStdString() : "failure";
}

std::string describePaymentParams(const Recorder::Call &call)
{
    if (call.kind != "params")
        return "callback " + call.kind;
    if (call.first.isEmpty() && call.second.isEmpty() && call.third.isEmpty())
        return "failure";
    const bool page = call.first.endsWith(QStringLiteral("/bank/pay"))
        && call.second.contains(QStringLiteral("kovenaTransactionId=") + call.third);
    return page ? "bank page" : "params " + call.first.toStdString();
}

std::string describeBanks(const Recorder::Call &call)
{
    if (call.kind != "banks")
        return "callback " + call.kind;
    if (call.banks.isEmpty())
        return "failure";
    const auto all = [&](auto test) { return std::all_of(call.banks.begin(), call.banks.end(), test); };
    const bool named = all([](const auto &bank) { return bank->netBankingName && bank->netbankingCodes; });
    const bool idsAbsent = all([](const auto &bank) { return !bank->netBankingId; });
    return std::string(named ? "banks" : "banks without names") + (idsAbsent ? ", ids absent" : "");
}

QString nextYear()
{
    return QString::number(QDate::currentDate().year() + 1);
}

} // namespace

const std::array<RequestType, kTypeCount> kRequestTypes { {
    { "status", statusRequest.path, false, false,
        [](auto cb, const QString &) {
            return ApiManager::getTransactionStatus(cb, QStringLiteral("42"), QStringLiteral("ORD-1"));
        },
        describeStatus },
    { "upiCollect", paymentRequest.path, true, false,
        [](auto cb, const QString &) {
            return ApiManager::payUPICollect(cb, kReference, QStringLiteral("1.00"), QStringLiteral("1001"));
        },
        describeRegistration },
    { "collectByVpa", collectRequest.path, false, true,
        [](auto cb, const QString &pendingId) {
            return ApiManager::payUPICollectByVPA(cb, pendingId, kReference, QStringLiteral("1.00"),
                QStringLiteral("success@kovena"), QStringLiteral("1001"));
        },
        describeCollect },
    { "card", cardRequest.path, true, false,
        [](auto cb, const QString &) {
            return ApiManager::payCard(cb, kReference, QString::fromLatin1(kCardNumber),
                QString::fromLatin1(kCardName), QStringLiteral("07"), nextYear(), QString::fromLatin1(kCvv),
                QStringLiteral("1.00"), QStringLiteral("1001"));
        },
        describePaymentParams },
    { "netBanking", netBankingRequest.path, true, false,
        [](auto cb, const QString &) {
            return ApiManager::payNB(
                cb, kReference, QStringLiteral("1001"), QStringLiteral("1.00"), QStringLiteral("1001"));
        },
        describePaymentParams },
    { "bankList", bankListRequest.path, false, false,
        [](auto cb, const QString &) { return ApiManager::callApiNBList(cb); }, describeBanks },
} };

QString registerPendingPayment()
{
    UserDefaults::standard().setString(QStringLiteral("accessToken"), QStringLiteral("setup-token"));
    auto recorder = std::make_shared<Recorder>();
    ApiManager::payUPICollect(
        recorder, QStringLiteral("ORD-P"), QStringLiteral("1.00"), QStringLiteral("1001"));
    EXPECT_TRUE(recorder->waitForCallback());
    const auto calls = recorder->calls();
    return calls.empty() ? QString() : calls.front().first;
}

} // namespace kovena::test
