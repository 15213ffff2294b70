#include "api/AccessToken.h"

#include "api/Constants.h"
#include "platform/FatalError.h"
#include "platform/UserDefaults.h"

#include <QMutex>
#include <QMutexLocker>

namespace kovena {

using namespace Qt::StringLiterals;

namespace {

struct TokenState
{
    QMutex mutex;
    QString MERCHANT_ACCESS_TOKEN = u"MERCHANT_ACCESS_TOKEN"_s;
};

TokenState &tokenState()
{
    static TokenState state;
    return state;
}

} // namespace

QString AccessToken::refresh()
{
    const UserDefaults &defaults = UserDefaults::standard();
    const QString &key = Constants::PG::MERCHANT_ACCESS_TOKEN();
    TokenState &state = tokenState();
    QMutexLocker lock(&state.mutex);
    if (defaults.contains(key)) {
        const std::optional<QString> stored = defaults.string(key);
        if (!stored)
            fatalError("the stored access token is not a string");
        state.MERCHANT_ACCESS_TOKEN = *stored;
    }
    return state.MERCHANT_ACCESS_TOKEN;
}

QString AccessToken::current()
{
    TokenState &state = tokenState();
    QMutexLocker lock(&state.mutex);
    return state.MERCHANT_ACCESS_TOKEN;
}

} // namespace kovena
