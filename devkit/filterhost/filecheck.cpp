#include "devkit/filterhost/filecheck.h"

#include "platform/windows.h"

#include <map>
#include <string>
#include <system_error>
#include <utility>

#include "devkit/common/file.h"
#include "devkit/filterhost/devicefolder.h"
#include "devkit/filterhost/exitstatus.h"

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;

// The volume and the number of the file or folder on it; empty when there is none.
std::wstring IdOf(const Path& path) {
    const common::FileHandle file(CreateFileW(path.c_str(), 0,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!file.IsOpen() || !GetFileInformationByHandle(file.Get(), &information)) return {};
    return std::to_wstring(information.dwVolumeSerialNumber) + L":" +
           std::to_wstring(information.nFileIndexHigh) + L":" + std::to_wstring(information.nFileIndexLow);
}

// The same for all paths of one file, be it there or not.
std::wstring IdentityOf(const Path& path) {
    if (std::wstring id = IdOf(path); !id.empty()) return id;
    std::wstring name = path.filename().wstring();
    CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
    const Path folder = path.parent_path();
    const std::wstring id = IdOf(folder);
    // A folder that is still to be made can have no other path, as far as anybody knows.
    return (id.empty() ? folder.lexically_normal().wstring() : id) + L"/" + name;
}

class Files {
  public:
    void Read(const HostSettings& host) {
        for (const FilterSettings& filter : host.filters) Read(filter.dll, "the filter");
        Read(host.pipelineConfig, "the pipeline configuration");
        Read(host.userTicket, "the user's ticket");
        Read(host.deviceCapabilities, "the device capabilities");
        for (const auto& entry : std::filesystem::directory_iterator(FindDeviceFolder(host.device)))
            Read(entry.path(), "the device model's");
    }
    // A file that the command reads: "the input", "the user's ticket".
    void Read(const Path& path, const std::string& what) {
        m_files.try_emplace(IdentityOf(path), what + " " + common::PathText(path));
    }
    void Read(const std::optional<Path>& path, const std::string& what) {
        if (path) Read(*path, what);
    }
    // A file that the command writes: "the output", "--json".
    void Write(const Path& path, const std::string& what) {
        const auto [file, isNew] = m_files.try_emplace(IdentityOf(path), what + " " + common::PathText(path));
        if (!isNew) throw UsageError(what + " would replace " + file->second);
    }
    void Write(const std::optional<Path>& path, const std::string& what) {
        if (path) Write(*path, what);
    }

  private:
    std::map<std::wstring, std::string> m_files;
};

}  // namespace

void CheckFiles(const RunSettings& settings) {
    Files files;
    for (const Job& job : settings.jobs) files.Read(job.input, "the input");
    files.Read(settings.host);
    for (const Job& job : settings.jobs) files.Write(job.output, "the output");
    files.Write(settings.json, "--json");
    files.Write(settings.junit, "--junit");
    files.Write(settings.trace, "--trace");
}

void CheckFiles(const ValidateSettings& settings, const std::optional<Path>& configuration) {
    Files files;
    for (const Path& document : settings.documents) files.Read(document, "the document");
    files.Read(settings.host);
    files.Read(configuration, "the configuration");
    files.Write(settings.json, "--json");
    files.Write(settings.junit, "--junit");
    files.Write(settings.report, "--report");
    files.Write(settings.trace, "--trace");
}

void CheckFiles(const FuzzSettings& settings) {
    Files files;
    if (settings.corpus) {
        std::error_code ignored;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(*settings.corpus, ignored))
            files.Read(entry.path(), "the document");
    }
    files.Read(settings.host);
    files.Read(settings.chains, "the list of cases");
    files.Write(settings.json, "--json");
}

}  // namespace devkit::filterhost
