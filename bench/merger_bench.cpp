#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

#include "base/xml/xmlmarger.h"
#include "base/xml/xmlutility.h"
#include "base/xps/printschema/printticketstructurecomparator.h"
#include "base/xps/printschema/schemabase.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

// Every step-th of the features of a ticket that has as many as given.
std::wstring Ticket(int features, int step) {
    using namespace base::xps::printschema;
    std::wstring text = L"<psf:PrintTicket version=\"1\" xmlns:psf=\"";
    text += kFrameworkNamespace;
    text += L"\" xmlns:psk=\"";
    text += kKeywordsNamespace;
    text += L"\">";
    for (int i = 0; i < features; i += step) {
        const std::wstring number = std::to_wstring(i);
        text += L"<psf:Feature name=\"psk:Feature";
        text += number;
        text += L"\"><psf:Option name=\"psk:Option\"><psf:ScoredProperty name=\"psk:Size\"><psf:Value>";
        text += number;
        text += L"</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>";
    }
    return text + L"</psf:PrintTicket>";
}

// Puts back every second feature, which validation is taken to have dropped.
void Merger(benchmark::State& state) {
    const int features = static_cast<int>(state.range(0));
    const std::wstring validated = Ticket(features, 2);
    const auto delta = base::xml::LoadDomFromString(Ticket(features, 1));
    const base::xps::printschema::PrintTicketStructureComparator comparator;
    for (auto _ : state) {
        const auto result = base::xml::LoadDomFromString(validated);
        const auto start = Clock::now();
        base::xml::XmlMarger(comparator).Merge(result.Get(), delta.Get());
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
}

BENCHMARK(Merger)
    ->ArgName("features")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond)
    ->UseManualTime();

}  // namespace
}  // namespace bench
