#include <benchmark/benchmark.h>

#include "base/xps/fixedpagesaxconvertor.h"
#include "bench/glyphpage.h"

namespace bench {
namespace {

constexpr std::int64_t kMegabyte = 1024 * 1024;

void Report(benchmark::State& state, std::uint64_t bytesPerPage) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytesPerPage) * state.iterations());
}

void Floor(benchmark::State& state) {
    GlyphPageStream page(static_cast<std::uint64_t>(state.range(0) * kMegabyte));
    for (auto _ : state) ParseOnly(page);
    Report(state, page.Size());
}

void Rewrite(benchmark::State& state) {
    GlyphPage page(static_cast<std::uint64_t>(state.range(0) * kMegabyte));
    for (auto _ : state) base::xps::FixedPageSaxConvertor().Convert(page);
    Report(state, page.m_input.Size());
}

BENCHMARK(Floor)->ArgName("MB")->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Rewrite)->ArgName("MB")->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace bench
