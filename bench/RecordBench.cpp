// Reading (as the library reads a reply) and writing the reply records: a full status reply (every field of
// TransactionStatus and its 27 data fields), the UPI collect reply and the bank list, from bytes to record
// and back.
#include "RecordFixtures.h"

#include "api/JsonReader.h"

#include <benchmark/benchmark.h>

#include <string>

using namespace kovena;

namespace {

template<class Read> void parseText(benchmark::State &state, const JsonValue &reply, Read read)
{
    const std::string text = reply.dump();
    const QByteArray bytes = QByteArray::fromStdString(text);
    std::string fault;
    for (auto _ : state) {
        const std::optional<JsonValue> value = JsonReader::read(bytes, fault);
        benchmark::DoNotOptimize(read(*value));
    }
    state.SetBytesProcessed(std::int64_t(state.iterations()) * std::int64_t(text.size()));
}

template<class Read> void mapValue(benchmark::State &state, const JsonValue &reply, Read read)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(read(reply));
}

template<class Record> void writeText(benchmark::State &state, const Record &record)
{
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string text = record.dictionaryRepresentation().dump();
        bytes += text.size();
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(std::int64_t(bytes));
}

auto readStatus = [](const JsonValue &v) { return TransactionStatus::fromDictionary(&v); };
auto readUpiResponse = [](const JsonValue &v) { return UPIResponse::fromDictionary(&v); };
auto readUpiData = [](const JsonValue &v) { return UPIResponse::Data::fromDictionary(v); };
auto readBankList = [](const JsonValue &v) { return BankNB::fromDictionary(v); };

void BM_StatusReply_ParseText(benchmark::State &state)
{
    parseText(state, fixtures::fullStatusReply(), readStatus);
}

void BM_StatusReply_MapParsedValue(benchmark::State &state)
{
    mapValue(state, fixtures::fullStatusReply(), readStatus);
}

void BM_StatusReply_WriteText(benchmark::State &state)
{
    writeText(state, *fixtures::builtStatus());
}

void BM_UpiResponse_ParseText(benchmark::State &state)
{
    parseText(state, fixtures::fullUpiResponseReply(), readUpiResponse);
}

void BM_UpiResponse_WriteText(benchmark::State &state)
{
    writeText(state, *fixtures::builtUpiResponse());
}

void BM_UpiResponseData_ParseText(benchmark::State &state)
{
    parseText(state, fixtures::fullUpiResponseData(), readUpiData);
}

void BM_UpiResponseData_WriteText(benchmark::State &state)
{
    writeText(state, *fixtures::builtUpiResponseData());
}

// The net banking screen's picker: a reply with a couple of hundred banks.
void BM_BankList_ParseText(benchmark::State &state)
{
    JsonValue reply = fixtures::fullBankListReply();
    const JsonValue bank = reply["data"][0];
    for (int i = 0; i < 200; ++i)
        reply["data"].push_back(bank);
    parseText(state, reply, readBankList);
}

} // namespace

BENCHMARK(BM_StatusReply_ParseText);
BENCHMARK(BM_StatusReply_MapParsedValue);
BENCHMARK(BM_StatusReply_WriteText);
BENCHMARK(BM_UpiResponse_ParseText);
BENCHMARK(BM_UpiResponse_WriteText);
BENCHMARK(BM_UpiResponseData_ParseText);
BENCHMARK(BM_UpiResponseData_WriteText);
BENCHMARK(BM_BankList_ParseText);
