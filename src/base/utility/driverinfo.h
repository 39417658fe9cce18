#pragma once

#include "platform/windows.h"

#include <winspool.h>

#include <cstddef>
#include <memory>
#include <string>

namespace base::utility {

// The installation record of a printer's driver, read from the spooler once, and the folder that the driver's
// data file lies in.
class DriverInfo {
  public:
    // The handle is borrowed for the call. std::runtime_error when the spooler gives no record.
    explicit DriverInfo(HANDLE printer);
    DriverInfo(const DriverInfo&) = delete;
    DriverInfo& operator=(const DriverInfo&) = delete;

    // The record and its strings live as long as the object.
    [[nodiscard]] const DRIVER_INFO_3W& Record() const noexcept {
        return *reinterpret_cast<const DRIVER_INFO_3W*>(m_record.get());
    }
    // Without a separator at its end. A data file given as a bare name is its own folder.
    [[nodiscard]] const std::wstring& DriverDirectory() const noexcept { return m_driverDirectory; }

  private:
    std::unique_ptr<std::byte[]> m_record;
    std::wstring m_driverDirectory;
};

}  // namespace base::utility
