#include "platform/Storyboard.h"

#include "platform/FatalError.h"
#include "platform/NavigationController.h"
#include "platform/ViewController.h"

using namespace Qt::StringLiterals;

namespace kovena {

Storyboard::Storyboard(QString name)
    : m_name(std::move(name))
{ }

void Storyboard::stop(const QString &what) const
{
    fatalError(u"storyboard %1 %2"_s.arg(m_name, what).toUtf8().constData());
}

void Storyboard::registerScene(const QString &identifier, Factory factory)
{
    m_scenes.insert(identifier, std::move(factory));
}

void Storyboard::setInitialScene(const QString &identifier)
{
    m_initial = identifier;
}

void Storyboard::registerSegue(const QString &segueIdentifier, const QString &destinationIdentifier)
{
    m_segues.insert(segueIdentifier, destinationIdentifier);
}

ViewController *Storyboard::instantiateInitialViewController()
{
    if (m_initial.isEmpty())
        return nullptr;
    return instantiateViewController(m_initial);
}

ViewController *Storyboard::instantiateViewController(const QString &identifier)
{
    const auto it = m_scenes.constFind(identifier);
    if (it == m_scenes.constEnd() || !*it)
        stop(u"has no scene \"%1\""_s.arg(identifier));
    ViewController *vc = (*it)();
    if (!vc)
        stop(u"made no screen for the scene \"%1\""_s.arg(identifier));
    vc->m_storyboard = this;
    vc->m_storyboardIdentifier = identifier;
    return vc;
}

void Storyboard::performSegue(ViewController *source, const QString &segueIdentifier, QObject *sender)
{
    const auto it = m_segues.constFind(segueIdentifier);
    if (it == m_segues.constEnd())
        stop(u"has no segue \"%1\""_s.arg(segueIdentifier));
    if (!source)
        stop(u"performed the segue \"%1\" without a source screen"_s.arg(segueIdentifier));
    ViewController *destination = instantiateViewController(*it);
    source->prepare(StoryboardSegue { segueIdentifier, source, destination }, sender);
    if (NavigationController *nav = source->navigationController())
        nav->pushViewController(destination, true);
    else
        destination->deleteLater();
}

} // namespace kovena
