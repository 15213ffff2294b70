#include "payment/BankPageScene.h"

#include "payment/BankPageOpener.h"
#include "payment/PaymentViewController.h"
#include "platform/Storyboard.h"

namespace kovena {

void addBankPage(Storyboard &storyboard)
{
    const QString scene = BankPageOpener::bankPageSegue();
    storyboard.registerScene(scene, [] { return new PaymentViewController; });
    storyboard.registerSegue(scene, scene);
}

} // namespace kovena
