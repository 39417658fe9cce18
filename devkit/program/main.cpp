#include "platform/windows.h"

#include <exception>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "devkit/filterhost/commandline.h"
#include "devkit/filterhost/commands.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/fuzzworker.h"
#include "devkit/filterhost/interrupt.h"
#include "devkit/filterhost/worker.h"
#include "devkit/validate/probes.h"
#include "devkit/validate/validatecommand.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

class MultithreadedApartment {
  public:
    MultithreadedApartment() : m_hr(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    MultithreadedApartment(const MultithreadedApartment&) = delete;
    MultithreadedApartment& operator=(const MultithreadedApartment&) = delete;
    ~MultithreadedApartment() {
        if (SUCCEEDED(m_hr)) CoUninitialize();
    }

  private:
    HRESULT m_hr;
};

struct Execute {
    int operator()(const RunSettings& settings) const {
        const MultithreadedApartment apartment;
        return Run(settings);
    }
    int operator()(const ValidateSettings& settings) const {
        const MultithreadedApartment apartment;
        return validate::Validate(settings);
    }
    int operator()(const ListSettings& settings) const { return validate::List(settings); }
    int operator()(const FuzzSettings& settings) const {
        const MultithreadedApartment apartment;
        return Fuzz(settings);
    }
    int operator()(const InspectSettings& settings) const { return Inspect(settings); }
    int operator()(const DiffSettings& settings) const { return Diff(settings); }
    int operator()(const DeviceSettings& settings) const { return ExamineDevice(settings); }
    int operator()(const Answer& answer) const {
        PrintOut(answer.text);
        return Done;
    }
};

int Main(const std::vector<std::string>& arguments) {
    try {
        if (arguments.size() == 3 && arguments[0] == kWorkCommand)
            Work(arguments[1], arguments[2], validate::AllProbes());
        if (arguments.size() == 3 && arguments[0] == kFuzzWorkCommand) FuzzWork(arguments[1], arguments[2]);
        EndOnInterrupt();
        return std::visit(Execute(), ParseCommandLine(arguments));
    } catch (const UsageError& error) {
        PrintProblem(error.what());
        return WrongUsage;
    } catch (const std::exception& error) {
        PrintProblem(error.what());
        return FilterFailed;
    }
}

}  // namespace
}  // namespace devkit::filterhost

int wmain(int argc, wchar_t** argv) {
    devkit::filterhost::PrepareConsole();
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) arguments.push_back(platform::ToUtf8(argv[i]));
    return devkit::filterhost::Main(arguments);
}
