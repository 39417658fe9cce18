#include "base/utility/driverinfo.h"

#include <stdexcept>

#include "base/logging/check.h"
#include "base/utility/stringutility.h"

namespace base::utility {
namespace {

constexpr DWORD kLevel = 3;
constexpr const char* kFailed = "GetPrinterDriver was failed.";

}  // namespace

DriverInfo::DriverInfo(HANDLE printer) {
    DWORD needed = 0;
    // Fails by design: the call only tells the size.
    GetPrinterDriverW(printer, nullptr, kLevel, nullptr, 0, &needed);
    if (needed == 0) logging::Throw<std::runtime_error>(kFailed);

    // The array form of new aligns the block for any record that fits into it.
    m_record = std::make_unique<std::byte[]>(needed);
    if (!GetPrinterDriverW(printer, nullptr, kLevel, reinterpret_cast<BYTE*>(m_record.get()), needed,
                           &needed)) {
        logging::Throw<std::runtime_error>(kFailed);
    }
    if (const wchar_t* pDataFile = Record().pDataFile) m_driverDirectory = DirectoryOf(pDataFile);
}

}  // namespace base::utility
