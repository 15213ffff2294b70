#include "platform/Logging.h"

Q_LOGGING_CATEGORY(lcKovena, "kovena")
Q_LOGGING_CATEGORY(lcApi, "kovena.api", QtInfoMsg)
Q_LOGGING_CATEGORY(lcFlow, "kovena.flow")
Q_LOGGING_CATEGORY(lcPayment, "kovena.payment")
