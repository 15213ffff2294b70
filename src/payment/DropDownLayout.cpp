#include "payment/DropDownLayout.h"

#include <algorithm>

namespace kovena::dropDownLayout {

QRect popupGeometry(const QRect &anchor, QPoint offset, QSize wanted, int chrome, const QRect &bounds)
{
    const int width = std::min(std::max(anchor.width(), wanted.width()), bounds.width());
    const int left
        = std::clamp(anchor.left() + offset.x(), bounds.left(), bounds.left() + bounds.width() - width);

    const int topBelow = anchor.top() + offset.y();
    const int bottomAbove = anchor.top() + anchor.height() - offset.y();
    const int roomBelow = bounds.top() + bounds.height() - topBelow;
    const int roomAbove = bottomAbove - bounds.top();

    int height = wanted.height();
    bool above = false;
    if (height > roomBelow) {
        above = height <= roomAbove || roomAbove > roomBelow;
        if (height > (above ? roomAbove : roomBelow)) {
            // At least one row, even in a window too small for it.
            const int rows = std::max(1, ((above ? roomAbove : roomBelow) - chrome) / kRowHeight);
            height = std::min(height, chrome + rows * kRowHeight);
        }
    }
    return QRect(left, above ? bottomAbove - height : topBelow, width, height);
}

} // namespace kovena::dropDownLayout
