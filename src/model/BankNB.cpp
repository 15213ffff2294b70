#include "model/BankNB.h"

#include "model/RecordMapping.h"

#include <array>

namespace kovena {

namespace mapping {

// The bank's own table lives with it, in BankNBData.cpp.
template<> const RecordTable<BankNBData> &table<BankNBData>();

template<> const RecordTable<BankNB> &table<BankNB>()
{
    using R = BankNB;
    static constexpr std::array<Field<R>, 6> fields {
        field<R, &R::success>("success"),
        field<R, &R::responseCode>("responseCode"),
        field<R, &R::secureHash>("secureHash"),
        // Read for the bank picker; the list is not part of what the record writes back.
        readOnlyField<R, &R::data>("data"),
        field<R, &R::responseMessage>("responseMessage"),
        field<R, &R::csrfToken>("csrfToken"),
    };
    static constexpr RecordTable<R> t { "BankNB", fields };
    return t;
}

} // namespace mapping

template class MappedRecord<BankNB, Dictionary::Required>;

BankNB::BankNB(const JsonValue &dictionary)
{
    mapping::readRequired(*this, dictionary);
}

} // namespace kovena
