#include "api/ServerUrl.h"

#include <QMutex>
#include <QMutexLocker>
#include <QUrl>

namespace kovena {

using namespace Qt::StringLiterals;

namespace {

struct State
{
    QMutex mutex;
    QString url = u"https://api.kovena.in/KoVena/"_s;
    bool locked = false;
};

State &state()
{
    static State s;
    return s;
}

} // namespace

QString ServerUrl::current()
{
    State &s = state();
    QMutexLocker lock(&s.mutex);
    return s.url;
}

QString ServerUrl::lockForRequest()
{
    State &s = state();
    QMutexLocker lock(&s.mutex);
    s.locked = true;
    return s.url;
}

bool ServerUrl::isAcceptable(const QString &url)
{
    const QUrl parsed(url, QUrl::StrictMode);
    if (!parsed.isValid() || parsed.isRelative() || parsed.host().isEmpty())
        return false;
    if (parsed.scheme() != "https"_L1 && parsed.scheme() != "http"_L1)
        return false;
    // Credentials in the URL would travel with every request and show up in diagnostics.
    if (!parsed.userInfo().isEmpty() || parsed.hasQuery() || parsed.hasFragment())
        return false;
    return url.endsWith("/KoVena/"_L1) && parsed.path().endsWith("/KoVena/"_L1);
}

bool ServerUrl::set(const QString &url)
{
    if (!isAcceptable(url))
        return false;
    State &s = state();
    QMutexLocker lock(&s.mutex);
    if (s.locked)
        return false;
    s.url = url;
    return true;
}

} // namespace kovena
