#pragma once

#include "platform/windows.h"

#include <memory>
#include <optional>
#include <string>

#include "devkit/pipeline/pipelinecontrol.h"
#include "devkit/pipeline/propertybags.h"
#include "devkit/pipeline/streams.h"
#include "devkit/pipeline/usertoken.h"
#include "platform/comptr.h"

namespace devkit::pipeline {

// The properties of a job's bag. What is null or absent is not in the bag.
struct JobProperties {
    std::optional<std::wstring> printerName = L"SimPrinter";
    Bytes userTicket;  // "PerUserPrintTicket"
    // "UserSecurityToken"; the filter is expected not to close it.
    std::shared_ptr<const UserToken> userToken = std::make_shared<const UserToken>();
    // "PrinterHandle", borrowed. A null handle is put into the bag as such: a printer that does not exist.
    std::optional<HANDLE> printerHandle = nullptr;
    std::optional<DriverValues> driverValues = DriverValues();  // "DriverPropertyBag"
    std::optional<DriverValues> queueValues;                    // "QueuePropertyBag"
    std::optional<ULONG> jobId = 1;                             // "PrintJobId"
    std::optional<std::wstring> outputFile;                     // "PrintOutputFileName"
    std::optional<std::wstring> contentType;  // "DriverMultiContentType": "XPS" or "OpenXPS"
    Bytes jobTicket;                          // "JobPrintTicket", which waits for the job
    Bytes deviceCapabilities;                 // "PrintDeviceCapabilities"
    bool hasProgressReport = true;            // "ProgressReport"
    bool hasPrintClassFactory = true;         // "PrintClassFactory"
    PropertyValues more;                      // under names of their own, or instead of any of the others
};

// Puts the properties into the bag. Gives the report that counts progress, null when the job has none.
[[nodiscard]] platform::ComPtr<ProgressReport> FillBag(PropertyBag& bag, const ContextPtr& context,
                                                       const JobProperties& properties);

}  // namespace devkit::pipeline
