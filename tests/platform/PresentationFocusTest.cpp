// A presentation is modal for the keyboard too: it takes the keyboard when it shows, keeps Tab
// among its own controls, and gives the keyboard back when it goes. A second presentation while
// one is shown is refused, and a refused screen nobody owns is released, not leaked.
#include "ScreenTestSupport.h"

#include "platform/ManualScheduler.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace kovena {
namespace {

using test::flushDeletes;

// A screen with named buttons, one above the other.
class ButtonsScreen : public ViewController
{
public:
    explicit ButtonsScreen(const QStringList &names)
    {
        auto *layout = new QVBoxLayout(this);
        for (const QString &name : names) {
            auto *button = new QPushButton(name, this);
            button->setObjectName(name);
            button->setFocusPolicy(Qt::StrongFocus);
            layout->addWidget(button);
        }
    }
};

class PresentationFocusTest : public ::testing::Test
{
protected:
    PresentationFocusTest()
    {
        window.resize(360, 640);
        nav = new NavigationController;
        home = new ButtonsScreen({ u"homeField"_s, u"homeProceed"_s });
        nav->setViewControllers({ home });
        setRootViewController(&window, nav);
        window.show();
        QApplication::setActiveWindow(&window);
        clock.runDue();
    }

    QString focused() const
    {
        return QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
    }

    ManualScheduler clock;
    ScopedScheduler installed { clock };
    QWidget window;
    NavigationController *nav = nullptr;
    ViewController *home = nullptr;
};

TEST_F(PresentationFocusTest, TheKeyboardGoesInStaysInsideAndComesBack)
{
    home->findChild<QWidget *>(u"homeProceed"_s)->setFocus();
    auto *sheet = new ButtonsScreen({ u"first"_s, u"second"_s });
    int dismissals = 0;
    QObject::connect(home, &ViewController::presentedViewControllerDismissed, home, [&] { ++dismissals; });
    home->present(sheet, true);
    EXPECT_EQ(focused(), u"first"_s);

    // Forward and backward, Tab never leaves the presentation for the screen beneath it.
    QStringList forward, backward;
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        forward << focused();
    }
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
        backward << focused();
    }
    EXPECT_EQ(forward, QStringList({ "second", "first", "second", "first" }));
    EXPECT_EQ(backward, QStringList({ "second", "first", "second", "first" }));

    home->dismiss(true);
    EXPECT_EQ(focused(), u"homeProceed"_s);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(PresentationFocusTest, ARefusedPresentationIsReleasedUnlessSomeoneOwnsIt)
{
    QPointer<ViewController> shown = new ButtonsScreen({ u"first"_s });
    home->present(shown, true);

    QPointer<ViewController> orphan = new ButtonsScreen({ u"orphan"_s });
    QWidget owner;
    QPointer<ViewController> owned = new ButtonsScreen({ u"owned"_s });
    owned->setParent(&owner);
    home->present(orphan, true);
    home->present(owned, true);
    flushDeletes();

    EXPECT_EQ(home->presentedViewController(), shown.data());
    EXPECT_TRUE(shown);
    EXPECT_FALSE(orphan) << "a refused presentation nobody owns must not leak";
    ASSERT_TRUE(owned) << "a refused screen with an owner stays the owner's";
    EXPECT_EQ(owned->parent(), &owner);
    EXPECT_FALSE(owned->isVisible());
}

} // namespace
} // namespace kovena
