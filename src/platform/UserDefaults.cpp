#include "platform/UserDefaults.h"

#include "platform/Logging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutexLocker>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <cerrno>
#include <cstdio>
#include <memory>

namespace kovena {
namespace {

const QString kFileName = QStringLiteral("kovena-defaults.json");

struct StandardStore
{
    QMutex mutex;
    QString folder; // empty: the application's data location
    std::unique_ptr<UserDefaults> store;
};

StandardStore &standardStore()
{
    static StandardStore s;
    return s;
}

QString standardFilePath(const QString &folder)
{
    QString dir = folder;
    if (dir.isEmpty())
        dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (dir.isEmpty()) {
        qCWarning(lcKovena) << "no data location for the user defaults; keeping them in memory";
        return {};
    }
    if (!QDir().mkpath(dir))
        qCWarning(lcKovena) << "cannot create the user defaults folder" << dir;
    return QDir(dir).filePath(kFileName);
}

// A save writes a temporary file beside the store's and renames it over the store's. A process
// killed between the two leaves that file behind, named after the store's file with a dot and
// six random letters; it holds a copy of the store, access token included, so it is removed
// when the store is next opened.
void removeInterruptedSaves(const QString &filePath)
{
    const QFileInfo store(filePath);
    const QRegularExpression leftover(
        QStringLiteral("^%1\\.[A-Za-z]{6}$").arg(QRegularExpression::escape(store.fileName())));
    const QDir dir = store.dir();
    const QStringList candidates = dir.entryList(
        { store.fileName() + QStringLiteral(".*") }, QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : candidates) {
        if (leftover.match(name).hasMatch() && !QFile::remove(dir.filePath(name)))
            qCWarning(lcKovena) << "cannot remove the interrupted save" << dir.filePath(name);
    }
}

} // namespace

UserDefaults &UserDefaults::standard()
{
    StandardStore &s = standardStore();
    QMutexLocker lock(&s.mutex);
    if (!s.store)
        s.store = std::make_unique<UserDefaults>(standardFilePath(s.folder));
    return *s.store;
}

void UserDefaults::resetStandardUserDefaults()
{
    standard().clear();
}

void UserDefaults::setStandardLocation(const QString &folder)
{
    StandardStore &s = standardStore();
    QMutexLocker lock(&s.mutex);
    s.folder = folder;
    // References handed out earlier stay valid: the same store re-opens at the new place.
    if (s.store)
        s.store->reopen(standardFilePath(folder));
}

UserDefaults::UserDefaults(const QString &filePath)
    : m_filePath(filePath)
{
    QMutexLocker lock(&m_mutex);
    load();
}

void UserDefaults::reopen(const QString &filePath)
{
    QMutexLocker lock(&m_mutex);
    m_filePath = filePath;
    m_values.clear();
    load();
}

std::optional<UserDefaults::Value> UserDefaults::object(const QString &key) const
{
    QMutexLocker lock(&m_mutex);
    auto it = m_values.find(key);
    if (it == m_values.end())
        return std::nullopt;
    return it->second;
}

template<typename T> static std::optional<T> valueOfKind(const std::optional<UserDefaults::Value> &v)
{
    if (!v)
        return std::nullopt;
    if (const T *p = std::get_if<T>(&*v))
        return *p;
    return std::nullopt;
}

std::optional<QString> UserDefaults::string(const QString &key) const
{
    return valueOfKind<QString>(object(key));
}

std::optional<bool> UserDefaults::boolean(const QString &key) const
{
    return valueOfKind<bool>(object(key));
}

std::optional<double> UserDefaults::number(const QString &key) const
{
    return valueOfKind<double>(object(key));
}

void UserDefaults::setValue(const QString &key, Value value)
{
    QMutexLocker lock(&m_mutex);
    m_values[key] = std::move(value);
    saveLocked();
}

void UserDefaults::setString(const QString &key, const QString &value)
{
    setValue(key, value);
}

void UserDefaults::setBool(const QString &key, bool value)
{
    setValue(key, value);
}

void UserDefaults::setNumber(const QString &key, double value)
{
    setValue(key, value);
}

void UserDefaults::remove(const QString &key)
{
    QMutexLocker lock(&m_mutex);
    if (m_values.erase(key) > 0)
        saveLocked();
}

void UserDefaults::clear()
{
    QMutexLocker lock(&m_mutex);
    m_values.clear();
    saveLocked();
}

bool UserDefaults::synchronize()
{
    QMutexLocker lock(&m_mutex);
    return saveLocked();
}

void UserDefaults::load()
{
    if (m_filePath.isEmpty())
        return;
    removeInterruptedSaves(m_filePath);
    QFile file(m_filePath);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcKovena) << "cannot read the user defaults file" << m_filePath << "- starting empty";
        return;
    }
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject()) {
        qCWarning(lcKovena) << "the user defaults file" << m_filePath << "is damaged - starting empty";
        return;
    }
    const QJsonObject root = doc.object();
    for (auto it = root.begin(); it != root.end(); ++it) {
        const QJsonValue v = it.value();
        if (v.isString())
            m_values[it.key()] = v.toString();
        else if (v.isBool())
            m_values[it.key()] = v.toBool();
        else if (v.isDouble())
            m_values[it.key()] = v.toDouble();
    }
}

bool UserDefaults::saveLocked()
{
    if (m_filePath.isEmpty())
        return true;
    // JSON's own string, boolean and number types keep the three kinds apart on disk.
    QJsonObject root;
    // Not a structured binding: clang before 16 cannot capture one in a lambda.
    for (const auto &entry : m_values) {
        const QString &key = entry.first;
        std::visit([&root, &key](const auto &v) { root.insert(key, QJsonValue(v)); }, entry.second);
    }

    // A new file that replaces the old one in a single rename: a crash leaves the old store or
    // the new one, never a torn file. It is not flushed to the device first, as QSaveFile
    // would: a checkout changes the store several times on the GUI thread while its first
    // screen is built, and each flush waited for the disk (milliseconds apiece on a busy
    // machine). The values are the merchant's and are given again with every checkout.
    QTemporaryFile file(m_filePath + QStringLiteral(".XXXXXX"));
    const QByteArray text = QJsonDocument(root).toJson(QJsonDocument::Indented);
    if (!file.open() || file.write(text) != text.size() || !file.flush()) {
        qCWarning(lcKovena) << "cannot write the user defaults file" << m_filePath << file.errorString();
        return false;
    }
    file.close();
    if (::rename(QFile::encodeName(file.fileName()).constData(), QFile::encodeName(m_filePath).constData())
        != 0) {
        qCWarning(lcKovena) << "cannot save the user defaults file" << m_filePath << qt_error_string(errno);
        return false;
    }
    file.setAutoRemove(false);
    return true;
}

} // namespace kovena
