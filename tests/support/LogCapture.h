#pragma once

// Every line the library logs, at every level, kept for a test to read.
#include <QLoggingCategory>
#include <QMutex>
#include <QStringList>

#include <cstring>

namespace kovena::testing {

// While it lives, every kovena* category logs at debug level and its lines are kept here instead
// of printed; other categories go where they went before. One at a time.
class ScopedLogCapture
{
public:
    ScopedLogCapture()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("kovena*.debug=true"));
        s_previous = qInstallMessageHandler(&ScopedLogCapture::handle);
    }
    ~ScopedLogCapture()
    {
        qInstallMessageHandler(s_previous);
        QLoggingCategory::setFilterRules(QString());
        QMutexLocker lock(&s_mutex);
        s_lines.clear();
    }
    ScopedLogCapture(const ScopedLogCapture &) = delete;
    ScopedLogCapture &operator=(const ScopedLogCapture &) = delete;

    // The messages so far, each as "<category>: <text>".
    QStringList lines() const
    {
        QMutexLocker lock(&s_mutex);
        return s_lines;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (context.category && std::strncmp(context.category, "kovena", 6) == 0) {
            QMutexLocker lock(&s_mutex);
            s_lines << QString::fromLatin1(context.category) + QStringLiteral(": ") + message;
            return;
        }
        if (s_previous)
            s_previous(type, context, message);
    }

    static inline QMutex s_mutex;
    static inline QStringList s_lines;
    static inline QtMessageHandler s_previous = nullptr;
};

} // namespace kovena::testing
