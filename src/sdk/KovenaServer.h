#pragma once

#include "sdk/KovenaExport.h"

#include <QString>

namespace kovena {

// Points the library at another backend than the built-in one (a staging host, a local
// sandbox). Call once, on the main thread, before the first checkout or status enquiry. Returns
// false, and changes nothing, afterwards or when `baseUrl` is not an absolute http(s) URL ending
// in "/KoVena/".
KOVENA_EXPORT bool setServerUrl(const QString &baseUrl);

} // namespace kovena
