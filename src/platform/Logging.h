#pragma once

#include <QLoggingCategory>

// Logging categories. A host silences or routes all of them with the rule "kovena*".
Q_DECLARE_LOGGING_CATEGORY(lcKovena) // "kovena": facade and general
Q_DECLARE_LOGGING_CATEGORY(lcApi) // "kovena.api": requests and replies (debug off by default)
Q_DECLARE_LOGGING_CATEGORY(lcFlow) // "kovena.flow": navigation and screens
Q_DECLARE_LOGGING_CATEGORY(lcPayment) // "kovena.payment": payment screens
