#include "devkit/prntvpt/api/delay.h"

#include "platform/windows.h"

#include <string>

namespace devkit::prntvpt {

void Delay(const ActiveFaults& faults) {
    if (const Fault* const pFault = faults.Find(FaultMode::Slow)) {
        Sleep(static_cast<DWORD>(std::stoul(pFault->argument)));
    }
}

}  // namespace devkit::prntvpt
