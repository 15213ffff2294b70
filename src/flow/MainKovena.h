#pragma once

class QFont;
class QPixmap;
class QString;

namespace kovena {

class Storyboard;

// The storyboard "MainKovena": the library's scenes and segues, built once. Its initial scene
// is a NavigatorController holding one InitialViewController.
Storyboard &mainKovenaStoryboard();

// Registers the library's resources and the "Montserrat-Light" font; safe to call repeatedly.
void registerKovenaResources();
// The library's font at `pointSize`.
QFont kovenaFont(double pointSize);
// A bundled image by its file name (the card scheme icons, "ci_visa.png", ...), sized for the
// screen: the files are drawn at twice their on-screen size. Null for "" or an unknown name.
QPixmap kovenaImage(const QString &fileName);

} // namespace kovena
