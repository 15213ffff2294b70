#pragma once

#include "flow/BaseViewController.h"

#include <QPointer>
#include <QString>

namespace kovena {

// The bank page as the screens that open it see it: the fields they hand over before it
// loads. The page itself (an embedded browser) lives in the bank page layer.
class BankPageScreen : public BaseViewController
{
    Q_OBJECT

public:
    using BaseViewController::BaseViewController;

    QString postData; // form body to post
    QString url; // address of the bank page to post it to
    QString kovenaTransactionId; // the backend's id, for the status enquiry on return
    QPointer<QWidget> merchantVC;
};

} // namespace kovena
