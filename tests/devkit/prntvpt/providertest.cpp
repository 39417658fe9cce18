#include "providertest.h"

#include <fstream>
#include <iterator>

#include "memorystream.h"
#include "platform/bstr.h"
#include "platform/utf.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

[[nodiscard]] WrittenResult Take(HRESULT hr, const platform::ComPtr<MemoryStream>& output,
                                 const platform::Bstr& error) {
    WrittenResult written{hr, output->Bytes(), std::nullopt};
    if (error.Get() != nullptr) written.error = std::wstring(error.View());
    return written;
}

}  // namespace

std::filesystem::path DeviceFolder(std::string_view name) {
    // With its drive: models are also referred to from folders on another one.
    return std::filesystem::absolute(std::filesystem::path(SOURCE_FOLDER) / "devkit" / "devices" / name);
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path.string();
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string ConfigurationFor(const std::vector<std::string>& switches, std::string_view device) {
    return WriteMessage(ProviderSettings{DeviceFolder(device), {}, switches, true});
}

void ProviderTest::Use(const std::vector<std::string>& switches, std::string_view device) {
    Close();
    std::string error;
    ASSERT_EQ(S_OK, m_provider.Configure(ConfigurationFor(switches, device).c_str(), error)) << error;
    const std::string printer = Report().configuration->printers.front();
    const HRESULT hr = m_provider.OpenProvider(platform::ToUtf16(printer).c_str(), 1, &m_handle);
    ASSERT_EQ(S_OK, hr);
    m_provider.Reset();
}

void ProviderTest::TearDown() {
    Close();
    if (m_expectsBreaches) return;
    EXPECT_EQ(std::vector<std::string>(), Stops());
}

void ProviderTest::Close() {
    if (m_handle == nullptr) return;
    EXPECT_EQ(S_OK, m_provider.CloseProvider(m_handle));
    m_handle = nullptr;
}

WrittenResult ProviderTest::Merge(std::string_view base, std::optional<std::string_view> delta,
                                  EPrintTicketScope scope) {
    const auto baseStream = MemoryStream::Make(std::string(base));
    const auto deltaStream = MemoryStream::Make(std::string(delta.value_or("")));
    const auto output = MemoryStream::Make();
    platform::Bstr error;
    const HRESULT hr = m_provider.MergeAndValidatePrintTicket(
        m_handle, baseStream.Get(), delta ? deltaStream.Get() : nullptr, scope, output.Get(), error.Put());
    return Take(hr, output, error);
}

WrittenResult ProviderTest::MergeWithDefault(std::string_view delta, EPrintTicketScope scope) {
    return Merge(DefaultTicket(), delta, scope);
}

std::string ProviderTest::LineAfter(const std::string& children, const char* local, HRESULT expected,
                                    EPrintTicketScope scope) {
    const WrittenResult merged = MergeWithDefault(tests::Ticket(children), scope);
    EXPECT_EQ(expected, merged.result) << children;
    EXPECT_EQ(std::nullopt, merged.error) << children;
    return tests::Line(merged.bytes, local);
}

WrittenResult ProviderTest::Capabilities(std::optional<std::string_view> ticket) {
    const auto input = MemoryStream::Make(std::string(ticket.value_or("")));
    const auto output = MemoryStream::Make();
    platform::Bstr error;
    const HRESULT hr =
        m_provider.GetPrintCapabilities(m_handle, ticket ? input.Get() : nullptr, output.Get(), error.Put());
    return Take(hr, output, error);
}

std::vector<std::string> ProviderTest::Stops() const {
    std::vector<std::string> stops;
    for (const ProviderBreach& breach : Report().breaches) stops.push_back(breach.stop);
    return stops;
}

}  // namespace devkit::prntvpt
