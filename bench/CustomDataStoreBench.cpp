// The custom data store of an instance: filled once per pack, read once per unpack or info.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Foundations/DataModule/Rows/CustomDataStore.h"

namespace {

using Lumivale::DataModule::ByteBuffer;
using Lumivale::DataModule::CustomDataStore;

std::vector<std::string> Keys(std::size_t count) {
    std::vector<std::string> keys = {"Dicapsule.PackedFile.Name", "Dicapsule.PackedFile.Content",
                                     "Dicapsule.CommandLine", "Dicapsule.InstanceReferences"};
    for (std::size_t i = keys.size(); i < count; ++i) keys.push_back("Bench.Key." + std::to_string(i));
    keys.resize(count);
    return keys;
}

// Filling a store of N text values, as a pack fills the payload keys (N = 4) or a larger one.
void BM_CustomDataStore_SetText(benchmark::State& state) {
    const std::vector<std::string> keys = Keys(static_cast<std::size_t>(state.range(0)));
    const std::string text = "pack -i \"my report.pdf\" -m metadata.xml -o out.dcm";
    for (auto _ : state) {
        CustomDataStore store;
        for (const std::string& key : keys) store.SetText(key, text);
        benchmark::DoNotOptimize(store.Size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CustomDataStore_SetText)->Arg(4)->Arg(64);

// Setting the payload: the store borrows the caller's bytes, so the cost must not grow with size.
void BM_CustomDataStore_SetBorrowedBytes(benchmark::State& state) {
    const std::vector<std::uint8_t> payload(static_cast<std::size_t>(state.range(0)), 0x5A);
    for (auto _ : state) {
        CustomDataStore store;
        store.SetBytes("Dicapsule.PackedFile.Content", ByteBuffer::Borrow(payload.data(), payload.size()));
        benchmark::DoNotOptimize(store.ValueLength("Dicapsule.PackedFile.Content"));
    }
}
BENCHMARK(BM_CustomDataStore_SetBorrowedBytes)->Arg(1 << 10)->Arg(1 << 20)->Arg(64 << 20);

// Reading the payload keys back as unpack and info do: presence, emptiness, text.
void BM_CustomDataStore_Get(benchmark::State& state) {
    const std::vector<std::string> keys = Keys(static_cast<std::size_t>(state.range(0)));
    CustomDataStore store;
    for (const std::string& key : keys) store.SetText(key, key + "=value");
    std::string out;
    std::size_t next = 0;
    for (auto _ : state) {
        const std::string& key = keys[next];
        benchmark::DoNotOptimize(store.IsValueEmpty(key));
        benchmark::DoNotOptimize(store.GetText(key, out));
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CustomDataStore_Get)->Arg(4)->Arg(64);

}  // namespace
