// Prints the five settings of tickets in files.
//
//   ticketsettings read FOLDER                of each file of the folder
//   ticketsettings merge FOLDER DEVICE OUT    of the effective tickets of a job whose sequence, document and
//                                             page have the ticket of the file, on a simulated device; OUT
//                                             gets them as NAME.job, NAME.document and NAME.page
//
// For each ticket: "ticket NAME", then the lines of SettingsText, or "unreadable CODE", or "refused CODE" for
// what the merge returns. It stands beside the simulated prntvpt.dll, which is thereby what it imports.

#include "platform/windows.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "base/logging/check.h"
#include "base/logging/exceptions.h"
#include "base/utility/safecoinit.h"
#include "base/xml/xmlutility.h"
#include "base/xps/filterpipeline/defaultprinttickets.h"
#include "base/xps/printschema/printschemahandler.h"
#include "base/xps/printschema/printticketprovider.h"
#include "base/xps/printschema/ticketdocument.h"
#include "callrecorder.h"
#include "devkit/msxml/com/domregistration.h"
#include "devkit/prntvpt/client/simulatedprovider.h"
#include "mockparts.h"
#include "platform/bstr.h"
#include "platform/variant.h"
#include "settingstext.h"

namespace {

namespace fs = std::filesystem;
using base::exception::HresultError;
using base::logging::ThrowIfFailed;
using base::xps::printschema::PrintTicketProvider;
using platform::Bstr;
using platform::ComPtr;

using Dom = ComPtr<IXMLDOMDocument2>;

constexpr LONG kDefaultFamily = 7;

[[nodiscard]] std::vector<fs::path> FilesOf(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& each : fs::directory_iterator(folder)) files.push_back(each.path());
    std::ranges::sort(files);
    return files;
}

[[nodiscard]] std::string BytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void PrintTicket(const std::string& name) { std::printf("ticket %s\n", name.c_str()); }

void PrintCode(const char* what, HRESULT hr) { std::printf("%s %s\n", what, tests::HresultText(hr).c_str()); }

void PrintSettings(IXMLDOMDocument2* pTicket) {
    for (const std::string& line : tests::SettingsText(pTicket)) std::printf("%s\n", line.c_str());
}

[[nodiscard]] Dom Load(const std::string& bytes) {
    ComPtr<IStream> pStream;
    ThrowIfFailed(CreateStreamOnHGlobal(nullptr, TRUE, pStream.Put()));
    ThrowIfFailed(pStream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr));
    ThrowIfFailed(pStream->Seek({}, STREAM_SEEK_SET, nullptr));
    return base::xml::LoadDom(platform::Variant(static_cast<IUnknown*>(pStream.Get())).Get());
}

void ReadFile(const fs::path& file) {
    PrintTicket(file.filename().string());
    try {
        PrintSettings(Load(BytesOf(file)).Get());
    } catch (const HresultError& failure) {
        PrintCode("unreadable", failure.GetHresult());
    }
}

[[nodiscard]] std::string ConfigureDevice(const fs::path& dll, const fs::path& device) {
    devkit::prntvpt::SimulatedProvider provider(dll);
    devkit::prntvpt::ProviderSettings settings;
    settings.device = device;
    settings.printers = {"Printer"};
    provider.Configure(settings);
    return provider.DefaultTicket();
}

// The printer of one job, whose parts all have one ticket.
class Job {
  public:
    Job(const std::string& baseTicket, std::string partTicket) : m_partTicket(std::move(partTicket)) {
        const auto pStream = tests::MakeMock<tests::MockReadStream>(m_calls, baseTicket);
        ThrowIfFailed(m_provider.Open(pStream.Get(), Bstr(L"Printer").Get(), nullptr));
    }

    // Enters the next narrower part; the effective ticket of its scope.
    [[nodiscard]] Dom Enter(EPrintTicketScope scope) {
        switch (scope) {
            case kPTJobScope:
                Set<tests::MockFixedDocumentSequence>(&PrintTicketProvider::SetJobTicket, L"/Sequence");
                break;
            case kPTDocumentScope:
                Set<tests::MockFixedDocument>(&PrintTicketProvider::SetDocumentTicket, L"/Document");
                break;
            default:
                Set<tests::MockFixedPage>(&PrintTicketProvider::SetPageTicket, L"/Page", std::string());
        }
        Dom pTicket;
        ThrowIfFailed(m_provider.GetTicket(scope, pTicket.Put()));
        return pTicket;
    }

  private:
    template <typename Part, typename Setter, typename... Markup>
    void Set(Setter setter, const wchar_t* name, Markup... markup) {
        const auto pTicket = tests::MakeMock<tests::MockPrintTicket>(m_calls, L"/Ticket", m_partTicket);
        const auto pPart =
            tests::MakeMock<Part>(m_calls, name, markup..., ComPtr<IPartPrintTicket>(pTicket.Get()));
        ThrowIfFailed((m_provider.*setter)(pPart.Get(), m_pExtra.Get()));
    }

    tests::CallRecorder m_calls;
    std::string m_partTicket;
    PrintTicketProvider m_provider;
    Dom m_pExtra =
        base::xml::LoadDomFromString(base::xps::filterpipeline::DefaultPrintTicketText(kDefaultFamily));
};

void Save(IXMLDOMDocument2* pTicket, const fs::path& file) {
    ComPtr<IStream> pStream;
    ThrowIfFailed(CreateStreamOnHGlobal(nullptr, TRUE, pStream.Put()));
    ThrowIfFailed(pTicket->save(platform::Variant(static_cast<IUnknown*>(pStream.Get())).Get()));
    std::string bytes;
    ThrowIfFailed(base::xps::printschema::ReadTicketBytes(pStream.Get(), bytes));
    std::ofstream(file, std::ios::binary) << bytes;
}

void MergeFile(const fs::path& file, const std::string& baseTicket, const fs::path& out) {
    struct Part {
        EPrintTicketScope scope;
        const char* extension;
    };
    Job job(baseTicket, BytesOf(file));
    for (const Part& part :
         {Part{kPTJobScope, ".job"}, Part{kPTDocumentScope, ".document"}, Part{kPTPageScope, ".page"}}) {
        const std::string name = file.filename().string() + part.extension;
        PrintTicket(name);
        try {
            const Dom pTicket = job.Enter(part.scope);
            Save(pTicket.Get(), out / name);
            PrintSettings(pTicket.Get());
        } catch (const HresultError& failure) {
            PrintCode("refused", failure.GetHresult());
            return;
        }
    }
}

int Run(const std::vector<fs::path>& arguments) {
    const base::utility::SafeCoInit apartment;
    const devkit::msxml::DomRegistration registration;
    base::xps::printschema::SetPrivatePrefix(L"krk");
    if (arguments.size() == 3 && arguments[1] == "read") {
        for (const fs::path& file : FilesOf(arguments[2])) ReadFile(file);
        return 0;
    }
    if (arguments.size() == 5 && arguments[1] == "merge") {
        const fs::path dll = arguments[0].parent_path() / "prntvpt.dll";
        const std::string baseTicket = ConfigureDevice(dll, arguments[3]);
        for (const fs::path& file : FilesOf(arguments[2])) MergeFile(file, baseTicket, arguments[4]);
        return 0;
    }
    std::fputs("usage: ticketsettings read FOLDER | merge FOLDER DEVICE OUT\n", stderr);
    return 2;
}

}  // namespace

int wmain(int count, wchar_t** pArguments) {
    try {
        std::vector<fs::path> arguments(pArguments, pArguments + count);
        wchar_t program[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        arguments[0] = program;
        return Run(arguments);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "ticketsettings: %s\n", failure.what());
        return 1;
    }
}
