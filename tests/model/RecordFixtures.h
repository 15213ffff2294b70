#pragma once

// Complete replies with every field set, both as JSON (keys in declared order) and as records built
// member by member, so that a key bound to the wrong member shows up as a mismatch.

#include "api/JsonValue.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
#include "model/UPIStatus.h"

#include <memory>
#include <ostream>

// Readable QString values in test failure messages.
inline void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace kovena::fixtures {

inline JsonValue json(const char *text)
{
    return JsonValue::parse(text);
}

JsonValue fullStatusReply();
JsonValue fullUpiResponseReply();
JsonValue fullTxnRefNumber();
JsonValue fullUpiResponseData();
JsonValue fullUpiStatusReply();

std::shared_ptr<TransactionStatus> builtStatus();
std::shared_ptr<TransactionStatus::Data> builtStatusData();
std::shared_ptr<UPIResponse> builtUpiResponse();
std::shared_ptr<UPIResponse::UpiTxnRefNumber> builtTxnRefNumber();
std::shared_ptr<UPIResponse::Data> builtUpiResponseData();
std::shared_ptr<UPIStatus> builtUpiStatus();
std::shared_ptr<UPIStatus::Data> builtUpiStatusData();

} // namespace kovena::fixtures
