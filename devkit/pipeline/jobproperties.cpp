#include "devkit/pipeline/jobproperties.h"

#include <utility>

#include "platform/utf.h"
#include "platform/variant.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

// Puts an object that the bag alone then holds.
template <typename Object, typename... Arguments>
platform::ComPtr<Object> PutObject(PropertyBag& bag, const wchar_t* name, Arguments&&... arguments) {
    platform::ComPtr<Object> object = MakeObject<Object>(std::forward<Arguments>(arguments)...);
    bag.Put(name, platform::Variant(static_cast<IUnknown*>(object.Get())).Get());
    return object;
}

void PutTexts(PropertyBag& bag, const JobProperties& properties) {
    const std::pair<const wchar_t*, const std::optional<std::wstring>&> texts[] = {
        {L"PrinterName", properties.printerName},
        {L"PrintOutputFileName", properties.outputFile},
        {L"DriverMultiContentType", properties.contentType}};
    for (const auto& [name, text] : texts) {
        if (text) bag.PutValue(name, *text);
    }
}

void PutStreams(PropertyBag& bag, const ContextPtr& context, const JobProperties& properties) {
    const auto put = [&](const wchar_t* name, const Bytes& bytes, Available available) {
        if (bytes == nullptr) return;
        PutObject<ReadStreamFactory>(bag, name, context, platform::ToUtf8(name), bytes, available);
    };
    put(L"PerUserPrintTicket", properties.userTicket, Available::Always);
    put(L"JobPrintTicket", properties.jobTicket, Available::AfterInitialize);
    put(L"PrintDeviceCapabilities", properties.deviceCapabilities, Available::Always);
}

}  // namespace

ComPtr<ProgressReport> FillBag(PropertyBag& bag, const ContextPtr& context, const JobProperties& properties) {
    PutTexts(bag, properties);
    PutStreams(bag, context, properties);
    if (properties.printerHandle) bag.PutHandle(L"PrinterHandle", *properties.printerHandle);
    if (properties.userToken != nullptr) bag.PutHandle(L"UserSecurityToken", properties.userToken->Get());
    if (properties.jobId) bag.PutValue(L"PrintJobId", *properties.jobId);
    if (properties.driverValues) {
        PutObject<DriverBag>(bag, L"DriverPropertyBag", context, "DriverPropertyBag",
                             *properties.driverValues);
    }
    if (properties.queueValues) {
        PutObject<DriverBag>(bag, L"QueuePropertyBag", context, "QueuePropertyBag", *properties.queueValues);
    }
    if (properties.hasPrintClassFactory) PutObject<PrintClassFactory>(bag, L"PrintClassFactory", context);
    ComPtr<ProgressReport> progress;
    if (properties.hasProgressReport) progress = PutObject<ProgressReport>(bag, L"ProgressReport", context);
    for (const auto& [name, value] : properties.more) bag.PutValue(name, value);
    return progress;
}

}  // namespace devkit::pipeline
