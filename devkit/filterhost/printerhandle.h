#pragma once

#include "platform/windows.h"

#include <memory>
#include <string>

namespace devkit::filterhost {

// A handle of the printer, where the system has one of that name.
class PrinterHandle {
  public:
    explicit PrinterHandle(const std::wstring& name);

    // Borrowed; null when the system does not know the printer.
    [[nodiscard]] HANDLE Get() const noexcept { return m_handle.get(); }

  private:
    struct Close {
        void operator()(HANDLE handle) const noexcept;
    };

    std::unique_ptr<void, Close> m_handle;
};

}  // namespace devkit::filterhost
