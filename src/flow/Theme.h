#pragma once

#include <QColor>

class QLabel;
class QLineEdit;
class QPixmap;
class QPushButton;
class QString;
class QWidget;

namespace kovena::theme {

// The look the library's screens share: its colours, its style sheet, the field icons.

// The designed colour of primary buttons and accents.
inline const QColor kBrand { 0x39, 0x7B, 0x9E };
// Text, secondary text and the outline of fields.
inline const QColor kInk { 0x1F, 0x2A, 0x33 };
inline const QColor kMuted { 0x5F, 0x6B, 0x76 };
inline const QColor kLine { 0xC4, 0xC4, 0xC4 };
// Around the phone-width column when a screen is wider than a phone.
inline const QColor kSurround { 0xEE, 0xF2, 0xF5 };

// The screens' style sheet (resources/theme/kovena.qss).
QString styleSheet();
// Gives `root`, the top of the library's screens, the style sheet and the library's font. Its
// children (the screens, the navigation bar, alerts and presentations) inherit both; the
// merchant's own widgets are not touched.
void applyTo(QWidget *root);

// Shows `button`'s background in `colour` and keeps the colour in its palette too: a style
// sheet paints over the palette, so both are set. Pressing it shows a darker shade.
void paintButtonBackground(QPushButton *button, const QColor &colour);

// The small line drawings of the forms, 20 x 20 points, drawn at twice that size: "ic_card",
// "ic_person", "ic_lock", "ic_calendar", "ic_phone", "ic_bank", "ic_chevron". Null for others.
QPixmap fieldIcon(const QString &name, const QColor &colour = kBrand);
// Puts a field icon at the leading edge of a text field.
void setLeadingIcon(QLineEdit *field, const QString &name);

// Gives a label that shows an amount its accessible name ("Amount ₹ 499.00"), so a screen
// reader says the amount, not just the caption.
void describeAmount(QLabel *label, const QString &caption);

} // namespace kovena::theme
