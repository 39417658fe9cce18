#include "platform/windows.h"

#include <benchmark/benchmark.h>
#include <psapi.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "base/xps/fixedpagesaxconvertor.h"
#include "bench/glyphpage.h"
#include "closingline.h"
#include "devkit/msxml/com/domregistration.h"

namespace {

// Peaks never fall, so each measurement of memory is a process of its own:
// bench_pagevalidate --memory floor|rewrite MEGABYTES
int MeasureMemory(std::string_view what, std::uint64_t megabytes) {
    bench::GlyphPage page(megabytes * 1024 * 1024);
    what == "floor" ? bench::ParseOnly(page.input) : base::xps::FixedPageSaxConvertor().Convert(page);

    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    if (!GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters))) return 1;
    std::printf("%llu %llu\n", static_cast<unsigned long long>(counters.PeakWorkingSetSize / 1024),
                static_cast<unsigned long long>(counters.PeakPagefileUsage / 1024));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const tests::ClosingLine closingLine;
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return 1;
    if (argc == 4 && std::string_view(argv[1]) == "--memory") {
        return MeasureMemory(argv[2], std::strtoull(argv[3], nullptr, 10));
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    {
        std::optional<devkit::msxml::DomRegistration> dom;
        if (!devkit::msxml::SystemDomConforms()) dom.emplace();
        if (benchmark::RunSpecifiedBenchmarks() == 0) return 1;
    }
    benchmark::Shutdown();
    CoUninitialize();
    return closingLine.Print(0);
}
