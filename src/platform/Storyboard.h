#pragma once

#include <QMap>
#include <QString>

#include <functional>

class QObject;

namespace kovena {

class ViewController;

// A set of scenes by identifier, one initial, and the segues between them. Instantiating a
// scene creates a new screen each time; the caller owns it until it is pushed or presented.
class Storyboard
{
public:
    using Factory = std::function<ViewController *()>;

    explicit Storyboard(QString name);
    QString name() const { return m_name; }

    void registerScene(const QString &identifier, Factory factory);
    void setInitialScene(const QString &identifier);
    // A segue named `segueIdentifier` that leads to the scene `destinationIdentifier`.
    void registerSegue(const QString &segueIdentifier, const QString &destinationIdentifier);

    bool hasScene(const QString &identifier) const { return m_scenes.contains(identifier); }
    // nullptr when the storyboard has no initial scene.
    ViewController *instantiateInitialViewController();
    // An unknown identifier is a programming error: fatal.
    ViewController *instantiateViewController(const QString &identifier);
    // Instantiates the destination, calls source->prepare(), then pushes it on the source's
    // navigation controller. An unknown segue is fatal.
    void performSegue(ViewController *source, const QString &segueIdentifier, QObject *sender);

private:
    // Fatal: "storyboard <name> <what>".
    [[noreturn]] void stop(const QString &what) const;

    QString m_name;
    QString m_initial;
    QMap<QString, Factory> m_scenes;
    QMap<QString, QString> m_segues;
};

} // namespace kovena
