#include "flow/MainKovena.h"

#include "flow/InitialViewController.h"
#include "flow/NavigatorController.h"
#include "flow/PaymentOptionVC.h"
#include "flow/PaymentOptionViewController.h"
#include "flow/PopUpViewController.h"
#include "flow/Theme.h"
#include "payment/CardViewController.h"
#include "payment/NetBankingViewController.h"
#include "payment/UPIViewController.h"
#include "platform/Logging.h"
#include "platform/Storyboard.h"

#include <QFile>
#include <QFont>
#include <QFontDatabase>
#include <QPixmap>

#include <mutex>

using namespace Qt::StringLiterals;

// Resources compiled into a static library are only linked in when something refers to them.
static void initKovenaResources()
{
    Q_INIT_RESOURCE(kovena);
}

namespace kovena {

namespace {

const QString kFontName = u"Montserrat-Light"_s;
const QString kFontFamily = u"Montserrat"_s;
const QString kImageFolder = u":/kovena/icons/"_s;
constexpr qreal kImageScale = 2.0;

Storyboard buildMainKovena()
{
    Storyboard storyboard(u"MainKovena"_s);
    storyboard.registerScene(u"NavigatorController"_s, [] {
        auto *navigator = new NavigatorController;
        // Everything the checkout shows lives under this root and takes its look from it.
        theme::applyTo(navigator);
        navigator->setViewControllers({ new InitialViewController });
        return navigator;
    });
    storyboard.setInitialScene(u"NavigatorController"_s);
    storyboard.registerScene(u"PaymentOptionVC"_s, [] { return new PaymentOptionVC; });
    storyboard.registerScene(
        u"PaymentOptionViewController"_s, [] { return new PaymentOptionViewController; });
    storyboard.registerScene(u"UPIViewController"_s, [] { return new UPIViewController; });
    storyboard.registerScene(u"CardViewController"_s, [] { return new CardViewController; });
    storyboard.registerScene(u"NetBankingViewController"_s, [] { return new NetBankingViewController; });
    storyboard.registerScene(u"PopUpViewController"_s, [] { return new PopUpViewController; });
    for (const QString &screen :
        { u"CardViewController"_s, u"NetBankingViewController"_s, u"UPIViewController"_s })
        storyboard.registerSegue(screen, screen);
    return storyboard;
}

} // namespace

Storyboard &mainKovenaStoryboard()
{
    registerKovenaResources();
    static Storyboard storyboard = buildMainKovena();
    return storyboard;
}

void registerKovenaResources()
{
    static std::once_flag once;
    std::call_once(once, [] {
        initKovenaResources();
        if (QFontDatabase::addApplicationFont(u":/kovena/fonts/Montserrat-Light.ttf"_s) < 0)
            qCWarning(lcFlow) << "the font" << kFontName << "could not be loaded; the default font is used";
        // Screens ask for the font by its face name; the file registers the family with a
        // Light style.
        QFont::insertSubstitution(kFontName, kFontFamily);
    });
}

QFont kovenaFont(double pointSize)
{
    registerKovenaResources();
    QFont font(kFontName);
    font.setWeight(QFont::Light);
    font.setPointSizeF(pointSize);
    return font;
}

QPixmap kovenaImage(const QString &fileName)
{
    // "" is how callers say "no image" (a card number of no known scheme).
    if (fileName.isEmpty())
        return {};
    registerKovenaResources();
    // The exact name of a file in the image folder: nothing outside it is reachable through
    // this, and no other name (the image reader would also try "name" plus an extension) works.
    const QString path = kImageFolder + fileName;
    QPixmap image;
    if (!fileName.contains(u'/') && QFile::exists(path))
        image.load(path);
    if (image.isNull())
        qCWarning(lcFlow) << "no bundled image is named" << fileName;
    else
        image.setDevicePixelRatio(kImageScale);
    return image;
}

} // namespace kovena
