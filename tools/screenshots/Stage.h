#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>

class QWidget;

namespace kovena {
class ViewController;
}

namespace kovena::demo {
class MerchantScreen;
struct DemoOptions;
} // namespace kovena::demo

namespace kovena::screenshots {

// One window of a given size in which a shot is set up, the way a customer would get there:
// a merchant screen that starts the checkout, then taps and keys on the library's screens.
class Stage
{
public:
    explicit Stage(QSize size);
    ~Stage();
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    QWidget *window() const { return m_window.get(); }
    // Starts a checkout from the merchant screen with these arguments.
    void startCheckout(const demo::DemoOptions &options);
    // Shows `content` (the merchant's own window, say) as the stage's window instead.
    void adopt(std::unique_ptr<QWidget> content);

    // The library screen on top of the checkout's navigation stack, or nullptr.
    ViewController *topScreen() const;
    // Lets the event loop run until `done` holds (true) or `timeoutMs` passes (false).
    static bool waitFor(const std::function<bool()> &done, int timeoutMs = 10000);
    // Lets the event loop run for `ms`: animations (a push, a popup) come to rest.
    static void settle(int ms = 450);
    // Waits until the top screen is the storyboard scene `identifier` and its push has ended.
    bool waitForScreen(const QString &identifier, int timeoutMs = 10000) const;

    // The window as it is on screen, pop-up lists over it included.
    QImage capture() const;

private:
    std::unique_ptr<QWidget> m_window;
};

} // namespace kovena::screenshots
