#pragma once

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QString>
#include <QWebEngineView>

#include <optional>

namespace kovena::demo {

// The customer's part on the bank's page: notices every page the embedded browser loads, and
// presses a button of the page with real mouse events at the button's place on the screen.
class BankPagePlayer : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Starts following `view`; a view already followed is left as it is.
    void follow(QWebEngineView *view);
    // The followed view has a page that finished loading.
    bool hasPage() const { return m_view && m_pageLoaded; }

    enum class Press { NotYet, Pressed };
    // Call repeatedly: asks the page where the element with this id is, then presses it once it
    // is on the page. NotYet while there is no page, no answer yet or no such element.
    Press pressElement(const QString &id);

Q_SIGNALS:
    // Each page that finished loading, with its address.
    void pageLoaded(const QString &url);

private:
    QPointer<QWebEngineView> m_view;
    bool m_pageLoaded = false;
    bool m_asking = false;
    std::optional<QPointF> m_target;
};

} // namespace kovena::demo
