#include "model/TransactionStatus.h"

#include "model/PaymentFields.h"
#include "model/RecordMapping.h"

#include <array>

namespace kovena {

namespace mapping {

template<> const RecordTable<TransactionStatus> &table<TransactionStatus>()
{
    using R = TransactionStatus;
    static constexpr std::array<Field<R>, 6> fields {
        field<R, &R::success>("success"),
        field<R, &R::responseCode>("responseCode"),
        field<R, &R::secureHash>("secureHash"),
        field<R, &R::data>("data"),
        field<R, &R::responseMessage>("responseMessage"),
        field<R, &R::csrfToken>("csrfToken"),
    };
    static constexpr RecordTable<R> t { "TransactionStatus", fields };
    return t;
}

template<> const RecordTable<TransactionStatus::Data> &table<TransactionStatus::Data>()
{
    using R = TransactionStatus::Data;
    static constexpr auto fields = concat(paymentRecordFields<R, Reading::Lenient>(),
        std::array<Field<R>, 2> {
            field<R, &R::status>("status"),
            field<R, &R::collectorId>("collectorId"),
        });
    static constexpr RecordTable<R> t { "TransactionStatus::Data", fields };
    return t;
}

} // namespace mapping

template class MappedRecord<TransactionStatus, Dictionary::Optional>;
template class MappedRecord<TransactionStatus::Data, Dictionary::Optional>;

TransactionStatus::TransactionStatus() = default;

TransactionStatus::TransactionStatus(const JsonValue *dictionary)
{
    mapping::readOptional(*this, dictionary);
}

void TransactionStatus::assign(std::optional<QString> &field, const QString &value)
{
    if (value.isNull())
        field.reset();
    else
        field = value;
}

TransactionStatus::Data::Data(const JsonValue *dictionary)
{
    mapping::readOptional(*this, dictionary);
}

} // namespace kovena
