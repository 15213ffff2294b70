#pragma once

#include <QMutex>
#include <QString>

#include <map>
#include <optional>
#include <variant>

namespace kovena {

// The library's key-value store: strings, booleans and numbers kept apart by kind.
// Thread-safe; every change is written to disk atomically, so nothing is lost on a crash.
class UserDefaults
{
public:
    using Value = std::variant<QString, bool, double>;

    // The shared store, created on first use in the standard location (or the one set below).
    static UserDefaults &standard();
    // Clears every entry of the shared store and its file.
    static void resetStandardUserDefaults();
    // Folder of the shared store's file; call before first use (tests, or a host with its own
    // data folder). Empty restores the default (the application's data location).
    static void setStandardLocation(const QString &folder);

    explicit UserDefaults(const QString &filePath); // empty path: in memory only
    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;

    // Any value under `key`, whatever its kind.
    std::optional<Value> object(const QString &key) const;
    bool contains(const QString &key) const { return object(key).has_value(); }
    // The value only if it is of that kind.
    std::optional<QString> string(const QString &key) const;
    std::optional<bool> boolean(const QString &key) const;
    std::optional<double> number(const QString &key) const;

    void setString(const QString &key, const QString &value);
    void setBool(const QString &key, bool value);
    void setNumber(const QString &key, double value);
    void remove(const QString &key);
    void clear();

    // Writes the store to disk now; true on success. Changes are also written as they happen.
    bool synchronize();
    QString filePath() const { return m_filePath; }

private:
    void reopen(const QString &filePath);
    void setValue(const QString &key, Value value);
    void load();
    bool saveLocked();

    mutable QMutex m_mutex;
    QString m_filePath;
    std::map<QString, Value> m_values;
};

} // namespace kovena
