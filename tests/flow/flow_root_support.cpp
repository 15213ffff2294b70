#include "flow/flow_root_support.h"

#include <QLoggingCategory>

namespace kovena::testing {

namespace {
QMutex g_mutex;
QByteArray g_category;
QStringList g_messages;
QtMessageHandler g_previous = nullptr;
} // namespace

LogCatcher::LogCatcher(const char *category)
{
    QMutexLocker lock(&g_mutex);
    g_category = category;
    g_messages.clear();
    QLoggingCategory::setFilterRules(QStringLiteral("%1.debug=true").arg(QLatin1String(category)));
    g_previous = qInstallMessageHandler(&LogCatcher::handler);
}

LogCatcher::~LogCatcher()
{
    qInstallMessageHandler(g_previous);
    QLoggingCategory::setFilterRules(QString());
}

QStringList LogCatcher::messages() const
{
    QMutexLocker lock(&g_mutex);
    return g_messages;
}

void LogCatcher::handler(QtMsgType, const QMessageLogContext &context, const QString &message)
{
    QMutexLocker lock(&g_mutex);
    if (context.category && g_category == context.category)
        g_messages.append(message);
}

} // namespace kovena::testing
