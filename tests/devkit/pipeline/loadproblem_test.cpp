#include "devkit/pipeline/loadproblem.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using Path = std::filesystem::path;

Path Beside(const char* name) { return TestFilterPath().replace_filename(name); }

// A file of the test's own; gone with it.
class OwnFile {
  public:
    OwnFile(const char* name, const std::string& bytes)
        : m_path(std::filesystem::temp_directory_path() / name) {
        std::ofstream(m_path, std::ios::binary) << bytes;
    }
    OwnFile(const OwnFile&) = delete;
    ~OwnFile() { std::filesystem::remove(m_path); }
    [[nodiscard]] const Path& Get() const { return m_path; }

  private:
    Path m_path;
};

std::string BytesOf(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(LoadProblem, NamesTheDllThatIsMissing) {
    EXPECT_EQ("needs testmissing.dll, which is missing",
              LoadProblem(Beside("testneedy.dll"), ERROR_MOD_NOT_FOUND));
}

TEST(LoadProblem, FindsADllThatIsMissingFurtherDown) {
    // A DLL whose only import is the needy one.
    std::string bytes = BytesOf(Beside("testneedy.dll"));
    const std::size_t name = bytes.find("testmissing.dll");
    ASSERT_NE(std::string::npos, name);
    bytes.replace(name, 15, std::string("testneedy.dll\0\0", 15));
    const Path copy = Beside("testneedier.dll");
    std::ofstream(copy, std::ios::binary) << bytes;
    EXPECT_EQ("needs testneedy.dll, which needs testmissing.dll, which is missing",
              LoadProblem(copy, ERROR_MOD_NOT_FOUND));
    std::filesystem::remove(copy);
}

TEST(LoadProblem, TellsOtherMachines) {
    std::string bytes = BytesOf(TestFilterPath());
    IMAGE_DOS_HEADER dos{};
    ASSERT_GT(bytes.size(), sizeof(dos));
    std::memcpy(&dos, bytes.data(), sizeof(dos));
    WORD* const pMachine = reinterpret_cast<WORD*>(bytes.data() + dos.e_lfanew + sizeof(DWORD));
    const bool is64Bit = *pMachine == IMAGE_FILE_MACHINE_AMD64;
    *pMachine = IMAGE_FILE_MACHINE_ARM64;
    EXPECT_EQ(is64Bit ? "is for 64 bit ARM, this program for 64 bit x86"
                      : "is for 64 bit ARM, this program for 32 bit x86",
              LoadProblem(OwnFile("other.dll", bytes).Get(), ERROR_BAD_EXE_FORMAT));
}

TEST(LoadProblem, TellsWhatIsNoDll) {
    EXPECT_EQ("is no DLL", LoadProblem(OwnFile("text.dll", "text").Get(), ERROR_BAD_EXE_FORMAT));
    EXPECT_EQ("is no DLL", LoadProblem(OwnFile("empty.dll", "").Get(), ERROR_BAD_EXE_FORMAT));
    const std::string bytes = BytesOf(TestFilterPath());
    for (const std::size_t size : {64U, 200U, 300U, 500U}) {
        EXPECT_EQ("is no DLL",
                  LoadProblem(OwnFile("cut.dll", bytes.substr(0, size)).Get(), ERROR_BAD_EXE_FORMAT))
            << size;
    }
    wchar_t program[MAX_PATH] = L"";
    ASSERT_NE(0U, GetModuleFileNameW(nullptr, program, MAX_PATH));
    EXPECT_EQ("is a program and no DLL", LoadProblem(program, ERROR_BAD_EXE_FORMAT));
}

TEST(LoadProblem, FallsBackOnTheSystemsCode) {
    EXPECT_EQ("cannot be loaded: 0x80070005 E_ACCESSDENIED",
              LoadProblem(TestFilterPath(), ERROR_ACCESS_DENIED));
    EXPECT_EQ("does not want to be loaded: its DllMain answers FALSE",
              LoadProblem(TestFilterPath(), ERROR_DLL_INIT_FAILED));
    EXPECT_EQ("needs a function that a DLL on this system does not have",
              LoadProblem(TestFilterPath(), ERROR_PROC_NOT_FOUND));
}

TEST(LoadProblem, OfAFileThatIsNotThereSaysSo) {
    EXPECT_TRUE(LoadProblem(Beside("nowhere.dll"), ERROR_MOD_NOT_FOUND)
                    .starts_with("cannot be loaded: cannot be opened"))
        << LoadProblem(Beside("nowhere.dll"), ERROR_MOD_NOT_FOUND);
}

}  // namespace
}  // namespace devkit::pipeline
