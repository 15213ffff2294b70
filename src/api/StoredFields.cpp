#include "api/StoredFields.h"

#include "api/Constants.h"
#include "platform/FatalError.h"
#include "platform/UserDefaults.h"

namespace kovena {

CustomerFields StoredFields::customer()
{
    const UserDefaults &defaults = UserDefaults::standard();
    const QString &mobileKey = Constants::PG::CUSTOMER_MOBILE_NUM();
    const QString &emailKey = Constants::PG::CUSTOMER_EMAIL();

    CustomerFields fields;
    if (!defaults.contains(mobileKey) || !defaults.contains(emailKey))
        return fields;
    const std::optional<QString> mobile = defaults.string(mobileKey);
    if (!mobile)
        fatalError("the stored customer mobile number is not a string");
    const std::optional<QString> email = defaults.string(emailKey);
    if (!email)
        fatalError("the stored customer e-mail is not a string");
    fields.customerMobNum = *mobile;
    fields.customerEmail = *email;
    return fields;
}

StoredRequestFields StoredFields::request()
{
    const UserDefaults &defaults = UserDefaults::standard();
    const std::optional<bool> retry = defaults.boolean(Constants::PG::RETRY());
    if (!retry)
        fatalError("the stored \"retry\" flag is missing or not a boolean");
    const std::optional<QString> requestId = defaults.string(Constants::PG::REQUEST_ID());
    if (!requestId)
        fatalError("the stored \"requestId\" is missing or not a string");
    return { *retry, *requestId };
}

void StoredFields::markRetry()
{
    UserDefaults::standard().setBool(Constants::PG::RETRY(), true);
}

} // namespace kovena
