#pragma once

#include <QPointer>

class QWidget;

namespace kovena {

// The loading overlay: three views made once and reused on every show.
class LoaderUI
{
public:
    LoaderUI();
    ~LoaderUI();
    LoaderUI(const LoaderUI &) = delete;
    LoaderUI &operator=(const LoaderUI &) = delete;

    void showActivityIndicator(QWidget *uiView);
    void hideActivityIndicator();

    QWidget *container() const { return m_container; }
    QWidget *loadingView() const { return m_loadingView; }
    QWidget *activityIndicator() const { return m_activityIndicator; }
    bool isAnimating() const;

private:
    QPointer<QWidget> m_container;
    QPointer<QWidget> m_loadingView;
    QPointer<QWidget> m_activityIndicator;
};

} // namespace kovena
