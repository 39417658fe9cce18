#include "endurance.h"

#include "platform/windows.h"

#include <gtest/gtest.h>
#include <psapi.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "devkit/common/processusage.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "heapusage.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

namespace systemtest {

using devkit::pipeline::DocumentInput;
using devkit::pipeline::JobInput;
using devkit::pipeline::MakeObject;
using devkit::pipeline::PageInput;
using devkit::pipeline::PipelineControl;
using devkit::pipeline::RunContext;
using platform::ComPtr;
using tests::HeapUsage;

namespace {

void BuryObjects() {
    constexpr int kMoreThanAreKept = 5000;
    const auto context = std::make_shared<RunContext>();
    for (int i = 0; i < kMoreThanAreKept; ++i) static_cast<void>(MakeObject<PipelineControl>(context));
}

void ReadDocument() {
    ComPtr<ISAXXMLReader> reader;
    ASSERT_EQ(S_OK, CoCreateInstance(platform::CLSID_SaxXmlReader60, nullptr, CLSCTX_INPROC_SERVER,
                                     __uuidof(ISAXXMLReader), reader.PutVoid()));
    ComPtr<IStream> stream;
    ASSERT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()));
    constexpr std::string_view kText = "<a xml:lang=\"en\"/>";
    EXPECT_EQ(S_OK, stream->Write(kText.data(), static_cast<ULONG>(kText.size()), nullptr));
    EXPECT_EQ(S_OK, stream->Seek({}, STREAM_SEEK_SET, nullptr));
    VARIANT input{};
    V_VT(&input) = VT_UNKNOWN;
    V_UNKNOWN(&input) = stream.Get();
    EXPECT_EQ(S_OK, reader->parse(input));
}

double BytesKeptOfADocument() {
    constexpr int kTimes = 64;
    for (int i = 0; i < kTimes; ++i) ReadDocument();
    const std::size_t before = HeapUsage::Now().bytes;
    for (int i = 0; i < kTimes; ++i) ReadDocument();
    return (static_cast<double>(HeapUsage::Now().bytes) - static_cast<double>(before)) / kTimes;
}

}  // namespace

bool IsLong() { return std::getenv("PAGEVALIDATE_LONG") != nullptr; }

JobInput Repeated(const JobInput& job, std::size_t pages, std::function<void(std::size_t)> onPage) {
    JobInput input = job;
    DocumentInput& document = input.documents.front();
    document.makePage = [templates = std::exchange(document.pages, {}),
                         onPage = std::move(onPage)](std::size_t number) {
        if (onPage) onPage(number);
        PageInput page = templates[number % templates.size()];
        // Of one length, because the kit keeps the names of some thousand objects that are gone.
        std::string digits = std::to_string(number);
        digits.insert(0, 6 - digits.size(), '0');
        page.markup.name = "/" + digits + ".fpage";
        return page;
    };
    document.laterPages = pages;
    return input;
}

Holdings Holdings::Now() {
    BuryObjects();
    const HeapUsage heaps = HeapUsage::Now();
    return {heaps.blocks, heaps.bytes, devkit::common::ProcessUsage::Now().handles,
            GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)};
}

void KeepSystemLoaded(HMODULE filter) {
    std::vector<HMODULE> modules(1024);
    DWORD bytes = 0;
    const auto room = static_cast<DWORD>(modules.size() * sizeof(HMODULE));
    ASSERT_TRUE(K32EnumProcessModules(GetCurrentProcess(), modules.data(), room, &bytes));
    ASSERT_LE(bytes, room);
    modules.resize(bytes / sizeof(HMODULE));
    for (const HMODULE module : modules) {
        HMODULE pinned = nullptr;
        if (module == filter) continue;
        EXPECT_TRUE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                       reinterpret_cast<const wchar_t*>(module), &pinned));
    }
}

void ExpectSteady(const std::string& between, const Holdings& before, const Holdings& after,
                  std::size_t documentsRead) {
    constexpr double kTolerance = 0.01;
    constexpr double kKiB = 1024;
    const auto inHeaps = static_cast<double>(before.heapBytes);
    std::printf("%s: %.1f and %.1f KiB in %zu and %zu blocks, %zu and %zu handles\n", between.c_str(),
                inHeaps / kKiB, static_cast<double>(after.heapBytes) / kKiB, before.heapBlocks,
                after.heapBlocks, before.handles, after.handles);
    const double kept = BytesKeptOfADocument();
    std::printf("the system's SAX reader keeps %.0f bytes of each of %zu documents\n", kept, documentsRead);
    EXPECT_NEAR(inHeaps, static_cast<double>(after.heapBytes) - kept * static_cast<double>(documentsRead),
                inHeaps * kTolerance)
        << between;
    EXPECT_GE(before.handles + kHandlesOfTheSystem, after.handles) << between;
    EXPECT_EQ(before.gdiObjects, after.gdiObjects) << between;
}

}  // namespace systemtest
