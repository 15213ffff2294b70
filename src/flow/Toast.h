#pragma once

#include <QString>

class QLabel;
class QWidget;

namespace kovena {

// A short message near the bottom of a view that fades out on its own and then goes away.
// Several toasts coexist, each fading independently.
class Toast
{
public:
    Toast() = delete;
    // Shows it now, on the calling (main) thread; returns the label (object name "kovenaToast").
    static QLabel *show(QWidget *view, const QString &message);

    static constexpr int kFadeDelayMs = 100;
    static constexpr int kFadeDurationMs = 4000;
};

} // namespace kovena
