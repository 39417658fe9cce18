#include "platform/windows.h"

#include <array>
#include <string>

#include "devkit/common/startprocess.h"
#include "providertest.h"

namespace devkit::prntvpt {
namespace {

using common::UniqueHandle;

// What the import probe prints, without its end of line.
[[nodiscard]] std::string RunProbe(const std::wstring& arguments) {
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    EXPECT_TRUE(CreatePipe(&read, &write, &inherit, 0));
    const UniqueHandle readEnd(read);
    UniqueHandle writeEnd(write);

    const std::wstring program = (tests::ProgramFolder() / "importprobe.exe").wstring();
    STARTUPINFOW startup{};
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd.get();
    const UniqueHandle started = common::StartProcess(program, L"\"" + program + L"\" " + arguments, startup);
    writeEnd.reset();

    std::string output;
    std::array<char, 256> block;
    DWORD count = 0;
    while (::ReadFile(readEnd.get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr) &&
           count != 0) {
        output.append(block.data(), count);
    }
    WaitForSingleObject(started.get(), 30'000);
    output.erase(output.find_last_not_of("\r\n") + 1);
    return output;
}

TEST(ImportByName, IsSatisfiedByTheSimulationThatIsLoadedFirst) {
    const std::wstring arguments =
        L"SimPrinter \"" + SimulatedDll().wstring() + L"\" \"" + DeviceFolder("simprinter").wstring() + L"\"";
    EXPECT_EQ("0x00000000 opened 1 closed 1", RunProbe(arguments));
}

TEST(ImportByName, ReachesTheSystemsOwnWhenNoSimulationIsLoaded) {
    EXPECT_EQ("0x80070709", RunProbe(L"\"There is no such printer\""));
}

}  // namespace
}  // namespace devkit::prntvpt
