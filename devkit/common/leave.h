#pragma once

namespace devkit::common {

// Ends the process at once with the status, whatever its threads are doing: nothing is destroyed, no DLL is
// told and no buffer written. Returns to nobody.
[[noreturn]] void LeaveProcess(unsigned status) noexcept;

}  // namespace devkit::common
