#include "model/BankNBData.h"

#include "model/RecordMapping.h"

#include <array>

namespace kovena {

namespace mapping {

template<> const RecordTable<BankNBData> &table<BankNBData>()
{
    using R = BankNBData;
    static constexpr std::array<Field<R>, 3> fields {
        field<R, &R::netBankingId>("netBankingId"),
        field<R, &R::netBankingName>("netBankingName"),
        field<R, &R::netbankingCodes>("netbankingCodes"),
    };
    static constexpr RecordTable<R> t { "BankNB::Data", fields };
    return t;
}

} // namespace mapping

template class MappedRecord<BankNBData, Dictionary::Required>;

BankNBData::BankNBData(const JsonValue &dictionary)
{
    mapping::readRequired(*this, dictionary);
}

} // namespace kovena
