#include "platform/Storyboard.h"

#include "platform/FatalError.h"
#include "platform/NavigationController.h"
#include "platform/ViewController.h"

namespace kovena {

Storyboard::Storyboard(QString name)
    : m_name(std::move(name))
{ }

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
        fatalError("storyboard has no scene with this identifier");
    ViewController *vc = (*it)();
    if (!vc)
        fatalError("storyboard scene factory made no screen");
    vc->m_storyboard = this;
    vc->m_storyboardIdentifier = identifier;
    return vc;
}

void Storyboard::performSegue(ViewController *source, const QString &segueIdentifier, QObject *sender)
{
    const auto it = m_segues.constFind(segueIdentifier);
    if (it == m_segues.constEnd())
        fatalError("storyboard has no segue with this identifier");
    if (!source)
        fatalError("segue performed without a source screen");
    ViewController *destination = instantiateViewController(*it);
    source->prepare(StoryboardSegue { segueIdentifier, source, destination }, sender);
    if (NavigationController *nav = source->navigationController())
        nav->pushViewController(destination, true);
    else
        destination->deleteLater();
}

} // namespace kovena
