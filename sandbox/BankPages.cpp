#include "sandbox/BankPages.h"

#include "sandbox/BankForm.h"
#include "sandbox/HtmlPage.h"
#include "sandbox/Sandbox.h"
#include "sandbox/TransactionStore.h"
#include "sandbox/WireText.h"

namespace kovena::sandbox {

namespace {

const std::string kHtml = "text/html; charset=utf-8";

Reply htmlReply(int status, std::string body)
{
    return { status, std::move(body), kHtml, {} };
}

Reply messagePage(int status, const std::string &title, const std::string &text)
{
    return htmlReply(status, html::message(title, text));
}

Reply unknownPayment()
{
    return messagePage(
        404, "Unknown payment", "There is no card or net-banking payment with this transaction id.");
}

Reply alreadyDecided()
{
    return messagePage(409, "Payment already completed", "This payment was already approved or declined.");
}

std::string decisionButton(const std::string &decision, const std::string &label)
{
    return R"(<button type="submit" id=")" + decision + R"(" name="decision" value=")" + decision + R"(">)"
        + label + "</button>\n";
}

std::string paymentPage(const Transaction &t)
{
    const std::string instrument = t.transactionType == "CARD" ? "Card ending " + t.cardLastFour : t.bankName;
    std::string content = R"(<p id="instrument">)" + html::escape(instrument) + "</p>\n<dl>\n";
    content += R"(<dt>Merchant reference</dt><dd id="reference">)" + html::escape(t.merchantReference)
        + "</dd>\n";
    content += R"(<dt>Amount</dt><dd id="amount">)" + html::escape(wire::rupees(t.amount)) + "</dd>\n</dl>\n";
    content += std::string(R"(<form method="post" action="/bank/confirm">)") + '\n';
    content += R"(<input type="hidden" name="kovenaTransactionId" value=")" + std::to_string(t.id) + "\">\n";
    content += decisionButton("approve", "Approve") + decisionButton("decline", "Decline") + "</form>\n";
    return html::page("Confirm your payment", content);
}

} // namespace

BankPages::BankPages(TransactionStore &store, std::function<std::string()> origin)
    : m_store(store)
    , m_origin(std::move(origin))
{ }

void BankPages::install(Router &pages, Router &api)
{
    pages.add("POST", "bank/pay", [this](const RecordedRequest &request) { return pay(request); });
    pages.add("POST", "bank/confirm", [this](const RecordedRequest &request) { return confirm(request); });

    // Both spellings load: only the doubled slash is the address the library stops at.
    auto returned = [](const RecordedRequest &) {
        return messagePage(200, "Payment finished", "Payment finished, returning to the merchant");
    };
    for (const char *endpoint : { "v3/return", "/v3/return" }) {
        api.add("GET", endpoint, returned);
        api.add("POST", endpoint, returned);
    }
}

// The body is read as a url-encoded form whatever its Content-Type: the library posts it
// without one.
Reply BankPages::pay(const RecordedRequest &request) const
{
    const BankForm form = BankForm::parse(request.body);
    auto id = wire::parseDecimalId(form.kovenaTransactionId);
    auto t = id ? m_store.find(*id) : std::nullopt;
    if (!t || t->transactionType == "COLLECT")
        return unknownPayment();
    if (t->paymentStatus != 0)
        return alreadyDecided();
    if (!form.intact())
        return messagePage(
            400, "Payment form altered", "The payment form differs from the one the backend handed out.");
    if (form.deviceType == "1")
        return messagePage(403, "Cannot continue", "This page cannot be shown inside an app (device_type=1)");
    if (form.deviceType != "0")
        return messagePage(400, "Payment form incomplete", "The payment form has no valid device_type.");
    return htmlReply(200, paymentPage(*t));
}

Reply BankPages::confirm(const RecordedRequest &request) const
{
    const auto form = wire::parseForm(request.body);
    const std::string decision = wire::formValue(form, "decision").value_or(std::string());
    if (decision != "approve" && decision != "decline")
        return messagePage(400, "Unknown decision", "Choose Approve or Decline.");
    auto id = wire::parseDecimalId(wire::formValue(form, "kovenaTransactionId").value_or(std::string()));
    if (!id)
        return unknownPayment();

    switch (m_store.decide(*id, decision == "approve" ? 1 : 2)) {
    case TransactionStore::DecideOutcome::NotFound:
        return unknownPayment();
    case TransactionStore::DecideOutcome::Closed:
        return alreadyDecided();
    case TransactionStore::DecideOutcome::Decided:
        break;
    }
    const std::string location = m_origin() + kReturnPath + "?kovenaTransactionId=" + std::to_string(*id);
    Reply reply = messagePage(303, "Payment finished", "Returning to the merchant.");
    reply.headers.emplace_back("Location", location);
    return reply;
}

} // namespace kovena::sandbox
