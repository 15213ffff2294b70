#pragma once

#include <QString>

class QAbstractButton;
class QWidget;

namespace kovena::demo {

// What a person does on the screens: find a control they can see, tap it, type into it. Taps
// and keys are real mouse and key events sent to the widget, so the library handles them
// exactly as it handles a person's.
namespace customer {

// The first visible widget with this object name, or nullptr.
QWidget *visibleWidget(const QString &objectName);
// The visible button titled `title` on a visible alert, or nullptr.
QAbstractButton *alertButton(const QString &title);

void tap(QWidget *widget);
// One key press and release that produces `character`.
void typeCharacter(QWidget *widget, QChar character);
// One press and release of a key that produces no text (arrows, Return, Escape).
void pressKey(QWidget *widget, Qt::Key key);
// True while a library screen shows its loading overlay: a person waits for it to go.
bool loaderVisible();

} // namespace customer
} // namespace kovena::demo
