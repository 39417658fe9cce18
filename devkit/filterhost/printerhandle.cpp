#include "devkit/filterhost/printerhandle.h"

#include "platform/windows.h"

#include <winspool.h>

namespace devkit::filterhost {

PrinterHandle::PrinterHandle(const std::wstring& name) {
    std::wstring writable = name;
    HANDLE handle = nullptr;
    if (OpenPrinterW(writable.data(), &handle, nullptr)) m_handle.reset(handle);
}

void PrinterHandle::Close::operator()(HANDLE handle) const noexcept { ClosePrinter(handle); }

}  // namespace devkit::filterhost
