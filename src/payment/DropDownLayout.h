#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace kovena::dropDownLayout {

// Height of one row: easy to hit with a pointer or a finger.
inline constexpr int kRowHeight = 40;
// Rows shown at once; a longer list scrolls.
inline constexpr int kMaxVisibleRows = 7;
// Space on either side of a row's text.
inline constexpr int kTextMargin = 12;
// Point size of a row's text.
inline constexpr double kFontSize = 14;

// Where a drop-down list goes, in the coordinates of `anchor` and `bounds` (the anchor's window).
// The list's top-left is the anchor's top-left moved by `offset`; it is as wide as the anchor, or
// `wanted` when that is wider, and `wanted` high. Without room below, it flips above the anchor
// (the offset mirrored); with room on neither side it takes the roomier one, cut to whole rows
// (`chrome` is the frame around the rows). It never leaves `bounds` sideways.
QRect popupGeometry(const QRect &anchor, QPoint offset, QSize wanted, int chrome, const QRect &bounds);

} // namespace kovena::dropDownLayout
