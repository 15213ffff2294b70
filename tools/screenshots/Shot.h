#pragma once

#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>

namespace kovena::sandbox {
class Sandbox;
}

namespace kovena::screenshots {

class Stage;

// One screenshot: how to get there, and what must be on screen when it is taken.
struct Shot
{
    QString name; // the file is <name>.png
    QString caption; // one line for the README
    QSize size; // the window: phone (360 x 640) or desktop (1280 x 800)
    // Sets the stage up; returns what went wrong, or "" once the screen is ready to be taken.
    std::function<QString(Stage &)> setUp;
    // Object names of widgets that must be visible in the shot.
    QStringList required;
};

// Every shot, in the README's order. The sandbox is the backend the checkout talks to.
QList<Shot> allShots(sandbox::Sandbox &sandbox);

// Why `image` is not a drawing of a screen of `expected` size, or "" when it is one: it must
// have that size and not be blank (a single colour, or almost).
QString imageProblem(const QImage &image, QSize expected);
// The required widgets that are not visible in the stage's window.
QStringList missingWidgets(const Stage &stage, const QStringList &required);

} // namespace kovena::screenshots
