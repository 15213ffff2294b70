#include "sandbox/BankForm.h"

#include "sandbox/WireText.h"

#include <utility>
#include <vector>

namespace kovena::sandbox {

namespace {

constexpr const char *kId = "kovenaTransactionId";
constexpr const char *kAmount = "amount";
constexpr const char *kReference = "merchantTransactionRefNumber";
constexpr const char *kChannel = "channel";
constexpr const char *kBankCode = "bankCode";
constexpr const char *kDeviceType = "device_type";
constexpr const char *kChecksum = "checksum";

} // namespace

std::string BankForm::encode() const
{
    std::vector<std::pair<const char *, std::string>> fields = {
        { kId, kovenaTransactionId },
        { kAmount, amount },
        { kReference, merchantReference },
        { kChannel, channel },
    };
    if (!bankCode.empty())
        fields.emplace_back(kBankCode, bankCode);
    fields.emplace_back(kDeviceType, deviceType);
    fields.emplace_back(kChecksum, expectedChecksum());

    std::string body;
    // Appended piece by piece: gcc 12 at -O3 warns (-Wrestrict) about a temporary built with
    // operator+ from a char pointer here.
    for (const auto &[name, value] : fields) {
        if (!body.empty())
            body += '&';
        body += name;
        body += '=';
        body += wire::formEncode(value);
    }
    return body;
}

BankForm BankForm::parse(const std::string &body)
{
    const auto fields = wire::parseForm(body);
    auto value = [&](const char *name) { return wire::formValue(fields, name).value_or(std::string()); };
    BankForm form;
    form.kovenaTransactionId = value(kId);
    form.amount = value(kAmount);
    form.merchantReference = value(kReference);
    form.channel = value(kChannel);
    form.bankCode = value(kBankCode);
    form.deviceType = value(kDeviceType);
    form.checksum = value(kChecksum);
    return form;
}

bool BankForm::intact() const
{
    return checksum == expectedChecksum();
}

std::string BankForm::expectedChecksum() const
{
    return wire::hexDigest("form|" + kovenaTransactionId + '|' + amount + '|' + merchantReference + '|'
            + channel + '|' + bankCode,
        40);
}

} // namespace kovena::sandbox
