#pragma once

#include "flow/LoaderUI.h"
#include "platform/ToastPresenter.h"
#include "platform/ViewController.h"

#include <QPointer>

class QToolBar;

namespace kovena {

// The base of every library screen: tap to dismiss the keyboard, the "Done" keyboard bar,
// the loading overlay and the toast.
class BaseViewController : public ViewController, public ToastPresenter
{
    Q_OBJECT

public:
    explicit BaseViewController(QWidget *parent = nullptr);

    void viewDidLoad() override;
    void dismissKeyboard();
    void addDoneButtonOnKeyboard();
    // Queue their work on the main queue; safe from any thread.
    void loadering(bool flag);
    void showToast(const QString &message) override;

    // Adds one more tap recogniser whose action is dismissKeyboard().
    void addDismissKeyboardTap();
    int tapRecognizerCount() const { return m_tapRecognizers; }
    QToolBar *doneToolbar() const;
    LoaderUI &loader() { return m_loader; }

    // The widest the form column grows: on a wide window the form stays phone-width and
    // centred on a light surround instead of stretching.
    static constexpr int kColumnWidth = 440;
    // The form's margin inside the column.
    static constexpr int kColumnMargin = 24;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    // The part of the view the form takes (all of it up to kColumnWidth).
    QRect columnRect() const;

private:
    LoaderUI m_loader;
    QPointer<QToolBar> m_doneToolbar;
    int m_tapRecognizers = 0;
};

} // namespace kovena
