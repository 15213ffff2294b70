#include "sdk/KovenaServer.h"

#include "api/ApiManager.h"

namespace kovena {

bool setServerUrl(const QString &baseUrl)
{
    return ApiManager::setServerUrl(baseUrl);
}

} // namespace kovena
