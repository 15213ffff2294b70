#pragma once

// Complete replies with every field set, both as JSON (keys in declared order) and as records built
// member by member, so that a key bound to the wrong member shows up as a mismatch.

#include "api/JsonValue.h"
#include "model/BankNB.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
#include "model/UPIStatus.h"

#include <memory>
#include <ostream>
#include <type_traits>

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

// Builds a Record from `value` through whichever argument its constructor takes.
template<class Record> std::shared_ptr<Record> read(const JsonValue &value)
{
    if constexpr (std::is_pointer_v<typename Record::Argument>)
        return Record::fromDictionary(&value);
    else
        return Record::fromDictionary(value);
}

JsonValue fullStatusReply();
JsonValue fullUpiResponseReply();
JsonValue fullUpiResponseData();
JsonValue fullUpiStatusReply();
JsonValue fullBankListReply();

std::shared_ptr<TransactionStatus> builtStatus();
std::shared_ptr<UPIResponse> builtUpiResponse();
std::shared_ptr<UPIResponse::Data> builtUpiResponseData();
std::shared_ptr<UPIStatus> builtUpiStatus();
std::shared_ptr<BankNB> builtBankList();

} // namespace kovena::fixtures
