// BankNB and BankNB::Data read from any JSON value. The bank list's one strict spot is an
// element that is not an object; a bank itself reads anything from an object.
#include "RecordFuzz.h"

#include "model/BankNB.h"

using namespace kovena;
using namespace kovena::fuzzing;

namespace kovena::fuzzing {

// The bank list is read but never written back.
template<> bool sameWritten<BankNB>(const BankNB &a, const BankNB &b)
{
    BankNB envelopeA = a, envelopeB = b;
    envelopeA.data.reset();
    envelopeB.data.reset();
    return envelopeA == envelopeB;
}

} // namespace kovena::fuzzing

namespace {

// The list is absent exactly when "data" is, and each bank reads as its own element does.
void checkBankList(const JsonValue &value)
{
    std::shared_ptr<BankNB> list;
    if (stops([&] { list = BankNB::fromDictionary(value); }))
        return;
    const JsonValue *data = findMember(value, "data");
    require(list->data.has_value() == (data != nullptr), "the bank list is absent but \"data\" is not");
    require(!list->dictionaryRepresentation().contains("data"), "the bank list was written back");
    if (!data || !data->is_array()) {
        require(!list->data || list->data->isEmpty(), "banks were read from a \"data\" that is not an array");
        return;
    }
    require(std::size_t(list->data->size()) == data->size(), "not one bank per element of \"data\"");
    for (qsizetype i = 0; i < list->data->size(); ++i) {
        const auto bank = BankNB::Data::fromDictionary((*data)[std::size_t(i)]);
        require(*bank == *list->data->at(i), "a bank of the list differs from its element read alone");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzJson(data, size, [](const JsonValue &value) {
        fuzzReadings<BankNB>(value, Reading::Strict);
        checkBankList(value);
        for (const JsonValue *banks : valueAndMember(value, "data")) {
            fuzzReadings<BankNB::Data>(*banks, Reading::Lenient);
        }
    });
}
