#include "Shot.h"

#include "Stage.h"

#include <QHash>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace kovena::screenshots {

QString imageProblem(const QImage &image, QSize expected)
{
    if (image.isNull())
        return u"nothing was drawn"_s;
    if (image.size() != expected)
        return u"is %1 x %2, not %3 x %4"_s.arg(image.width())
            .arg(image.height())
            .arg(expected.width())
            .arg(expected.height());
    // A screen has text, fields and buttons: many colours, and a good share of pixels that are
    // not its background. A blank or failed drawing has one colour, or nearly.
    QHash<QRgb, int> counts;
    int samples = 0;
    for (int y = 0; y < image.height(); y += 2) {
        for (int x = 0; x < image.width(); x += 2) {
            ++counts[image.pixel(x, y)];
            ++samples;
        }
    }
    int background = 0;
    for (const int count : std::as_const(counts))
        background = std::max(background, count);
    const double drawn = 1.0 - double(background) / samples;
    if (counts.size() < 16 || drawn < 0.01)
        return u"looks blank (%1 colours, %2% drawn over the background)"_s.arg(counts.size())
            .arg(drawn * 100, 0, 'f', 2);
    return {};
}

QStringList missingWidgets(const Stage &stage, const QStringList &required)
{
    QStringList missing;
    for (const QString &name : required) {
        bool shown = false;
        const auto widgets = stage.window()->findChildren<QWidget *>(name);
        for (const QWidget *widget : widgets)
            shown = shown || widget->isVisible();
        if (!shown)
            missing << name;
    }
    return missing;
}

} // namespace kovena::screenshots
