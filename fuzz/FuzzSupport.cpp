#include "FuzzSupport.h"

#include "platform/UserDefaults.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace kovena::fuzzing {

namespace {

std::vector<QString> &caught()
{
    static std::vector<QString> lines;
    return lines;
}

void catchDiagnostic(QtMsgType, const QMessageLogContext &, const QString &message)
{
    caught().push_back(message);
}

} // namespace

std::string &latestStop()
{
    static std::string text;
    return text;
}

void finding(const std::string &what)
{
    std::fprintf(stderr, "fuzz finding: %s\n", what.c_str());
    if (!latestStop().empty())
        std::fprintf(stderr, "latest stop of the library: %s\n", latestStop().c_str());
    std::fflush(stderr);
    std::abort();
}

void initialise()
{
    qInstallMessageHandler(catchDiagnostic);
    // Stored flags are written to disk as they change; keep them out of the user's own data.
    static const auto folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + u"/kovena-fuzz-XXXXXX");
    require(folder->isValid(), "no temporary folder for the user defaults");
    UserDefaults::setStandardLocation(folder->path());
    UserDefaults::resetStandardUserDefaults();
}

const std::vector<QString> &diagnostics()
{
    return caught();
}

void clearDiagnostics()
{
    caught().clear();
}

QString lenientUtf8(const std::uint8_t *data, std::size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
}

QString rawUtf16(const std::uint8_t *data, std::size_t size)
{
    QString text(qsizetype(size / 2), Qt::Uninitialized);
    std::memcpy(text.data(), data, (size / 2) * sizeof(char16_t));
    return text;
}

QStringList splitArguments(const QString &text, qsizetype count)
{
    QStringList arguments = text.split(QChar(0x1f));
    arguments.resize(count);
    return arguments;
}

bool writtenFrom(const JsonValue &written, const JsonValue &reply)
{
    if (!written.is_object() || !reply.is_object())
        return false;
    for (const auto &[key, value] : written.items()) {
        const auto found = reply.find(key);
        if (found == reply.end())
            return false;
        if (value.is_object()) {
            const bool fallback = value.empty() && !found->is_object();
            if (!fallback && !writtenFrom(value, *found))
                return false;
        } else if (value.is_array()) {
            if (!found->is_array() || found->size() != value.size())
                return false;
            for (std::size_t i = 0; i < value.size(); ++i) {
                if (!writtenFrom(value[i], (*found)[i]))
                    return false;
            }
        } else if (value != *found) {
            return false;
        }
    }
    return true;
}

} // namespace kovena::fuzzing
