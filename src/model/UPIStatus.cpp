#include "model/UPIStatus.h"

#include "model/PaymentFields.h"
#include "model/RecordMapping.h"

#include <array>

namespace kovena {

namespace mapping {

template<> const RecordTable<UPIStatus> &table<UPIStatus>()
{
    using R = UPIStatus;
    static constexpr std::array<Field<R>, 6> fields {
        field<R, &R::success>("success"),
        field<R, &R::responseCode>("responseCode"),
        field<R, &R::secureHash>("secureHash"),
        field<R, &R::data, Reading::StrictWhenPresent>("data"),
        field<R, &R::responseMessage>("responseMessage"),
        field<R, &R::csrfToken>("csrfToken"),
    };
    static constexpr RecordTable<R> t { "UPIStatus", fields };
    return t;
}

template<> const RecordTable<UPIStatus::Data> &table<UPIStatus::Data>()
{
    static constexpr auto fields = upiPaymentFields<UPIStatus::Data, Reading::Lenient>();
    static constexpr RecordTable<UPIStatus::Data> t { "UPIStatus::Data", fields };
    return t;
}

} // namespace mapping

template class MappedRecord<UPIStatus, Dictionary::Optional>;
template class MappedRecord<UPIStatus::Data, Dictionary::Required>;

UPIStatus::UPIStatus(const JsonValue *dictionary)
{
    mapping::readOptional(*this, dictionary);
}

UPIStatus::Data::Data(const JsonValue &dictionary)
{
    mapping::readRequired(*this, dictionary);
}

} // namespace kovena
