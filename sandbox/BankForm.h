#pragma once

#include <cstdint>
#include <string>

namespace kovena::sandbox {

// The form body that a card or net-banking registration hands out for the bank's page, and
// that the page reads back when it is posted. It carries no card data. A checksum over every
// field but device_type shows any change on the way other than the device type.
struct BankForm
{
    std::string kovenaTransactionId;
    std::string amount;
    std::string merchantReference;
    std::string channel; // "card" or "netbanking"
    std::string bankCode; // net banking only
    // A phone app is answered with 1; the page is only shown for 0, which the library posts.
    std::string deviceType = "1";
    std::string checksum;

    // Fills in the checksum and writes the url-encoded body.
    std::string encode() const;
    // Reads the fields of a posted body; absent fields stay empty.
    static BankForm parse(const std::string &body);
    bool intact() const;

private:
    std::string expectedChecksum() const;
};

} // namespace kovena::sandbox
