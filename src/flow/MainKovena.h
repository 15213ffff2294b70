#pragma once

class QFont;

namespace kovena {

class Storyboard;

// The storyboard "MainKovena": the library's scenes and segues, built once. Its initial scene
// is a NavigatorController holding one InitialViewController.
Storyboard &mainKovenaStoryboard();

// Registers the library's resources and the "Montserrat-Light" font; safe to call repeatedly.
void registerKovenaResources();
// The library's font at `pointSize`.
QFont kovenaFont(double pointSize);

} // namespace kovena
