#include <string>
#include <vector>

#include "devkit/filterhost/commands.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/devicecheck.h"
#include "devkit/filterhost/devicedescription.h"
#include "devkit/filterhost/devicefolder.h"
#include "devkit/prntvpt/device/device.h"

namespace devkit::filterhost {

ExitStatus ExamineDevice(const DeviceSettings& settings) {
    const std::filesystem::path folder = FindDeviceFolder(settings.device);
    if (settings.action == DeviceSettings::Action::Show) {
        try {
            PrintOut(DescribeDevice(folder));
            return Done;
        } catch (const prntvpt::DeviceError& error) {
            PrintProblem(error.what());
            return UnreadableInput;
        }
    }
    const std::vector<std::string> faults = CheckDevice(folder);
    for (const std::string& fault : faults) PrintProblem(fault);
    if (faults.empty()) PrintOut(settings.device + ": nothing is wrong\n");
    return faults.empty() ? Done : UnreadableInput;
}

}  // namespace devkit::filterhost
