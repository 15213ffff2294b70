#pragma once

#include <QString>

#include <memory>

namespace kovena {

// Something that can show the customer a toast: the screens implement it, so rules that tell
// the customer what is wrong (card details, ...) need no widget. Work scheduled for later holds
// it through weakHandle(), never owning it, and skips it once it is gone.
class ToastPresenter
{
public:
    ToastPresenter()
        : m_self(std::make_shared<ToastPresenter *>(this))
    { }
    virtual ~ToastPresenter() = default;
    ToastPresenter(const ToastPresenter &) = delete;
    ToastPresenter &operator=(const ToastPresenter &) = delete;

    virtual void showToast(const QString &message) = 0;

    // Expires when the presenter is destroyed. Check it on the thread that destroys it.
    std::weak_ptr<ToastPresenter *> weakHandle() const { return m_self; }

private:
    std::shared_ptr<ToastPresenter *> m_self;
};

} // namespace kovena
