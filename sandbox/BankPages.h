#pragma once

#include "sandbox/Router.h"

#include <functional>
#include <string>

namespace kovena::sandbox {

class TransactionStore;

// The bank's side of card and net-banking payments, as plain HTML: the page that the posted
// form opens ("bank/pay"), the customer's approve or decline ("bank/confirm") with its
// redirect to the backend's return address, and the return pages themselves.
class BankPages
{
public:
    // `origin` gives "http://127.0.0.1:<port>" of the running sandbox.
    BankPages(TransactionStore &store, std::function<std::string()> origin);

    // The bank's pages go on `pages` (paths from the root); the return addresses live under
    // the backend's base path, on `api`.
    void install(Router &pages, Router &api);

    // Where the bank sends the customer back; the library watches for "KoVena//v3/return".
    static constexpr const char *kReturnPath = "/KoVena//v3/return";

private:
    Reply pay(const RecordedRequest &request) const;
    Reply confirm(const RecordedRequest &request) const;

    TransactionStore &m_store;
    std::function<std::string()> m_origin;
};

} // namespace kovena::sandbox
