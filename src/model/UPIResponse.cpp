#include "model/UPIResponse.h"

#include "model/PaymentFields.h"
#include "model/RecordMapping.h"

#include <array>

namespace kovena {

namespace mapping {

template<> const RecordTable<UPIResponse> &table<UPIResponse>()
{
    using R = UPIResponse;
    static constexpr std::array<Field<R>, 5> fields {
        field<R, &R::success>("success"),
        field<R, &R::responseCode>("responseCode"),
        field<R, &R::secureHash>("secureHash"),
        field<R, &R::responseMessage>("responseMessage"),
        field<R, &R::csrfToken>("csrfToken"),
    };
    static constexpr RecordTable<R> t { "UPIResponse", fields };
    return t;
}

template<> const RecordTable<UPIResponse::UpiTxnRefNumber> &table<UPIResponse::UpiTxnRefNumber>()
{
    using R = UPIResponse::UpiTxnRefNumber;
    static constexpr std::array<Field<R>, 12> fields {
        field<R, &R::version>("version"),
        field<R, &R::idType>("idType"),
        field<R, &R::idValue>("idValue"),
        field<R, &R::mode>("mode"),
        field<R, &R::modeData>("modeData"),
        field<R, &R::additionalInfo>("additionalInfo"),
        field<R, &R::timeStamp>("timeStamp"),
        field<R, &R::checkDigit>("checkDigit"),
        field<R, &R::prefix>("prefix"),
        field<R, &R::originalNum>("originalNum"),
        field<R, &R::base32Num>("base32Num"),
        field<R, &R::txnRefNum>("txnRefNum"),
    };
    static constexpr RecordTable<R> t { "UPIResponse::UpiTxnRefNumber", fields };
    return t;
}

template<> const RecordTable<UPIResponse::Data> &table<UPIResponse::Data>()
{
    static constexpr auto fields = upiPaymentFields<UPIResponse::Data, Reading::StrictWhenPresent>();
    static constexpr RecordTable<UPIResponse::Data> t { "UPIResponse::Data", fields };
    return t;
}

} // namespace mapping

template class MappedRecord<UPIResponse, Dictionary::Optional>;
template class MappedRecord<UPIResponse::UpiTxnRefNumber, Dictionary::Required>;
template class MappedRecord<UPIResponse::Data, Dictionary::Required>;

UPIResponse::UPIResponse(const JsonValue *dictionary)
{
    mapping::readOptional(*this, dictionary);
}

UPIResponse::UpiTxnRefNumber::UpiTxnRefNumber(const JsonValue &dictionary)
{
    mapping::readRequired(*this, dictionary);
}

UPIResponse::Data::Data(const JsonValue &dictionary)
{
    mapping::readRequired(*this, dictionary);
}

} // namespace kovena
