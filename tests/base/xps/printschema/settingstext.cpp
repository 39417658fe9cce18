#include "settingstext.h"

#include <exception>
#include <initializer_list>

#include "base/logging/exceptions.h"
#include "base/xps/printschema/inputbindata.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/pageorientationdata.h"
#include "base/xps/printschema/printablemediasizedata.h"
#include "base/xps/printschema/scalingdata.h"
#include "callrecorder.h"

namespace tests {
namespace {

using namespace base::xps::printschema;

[[nodiscard]] std::string Names(const PrintTicketFunctionOption& data) {
    return " " + Narrow(data.GetFeatureName().localName.c_str()) + " " +
           Narrow(data.GetOptionName().localName.c_str());
}

[[nodiscard]] std::string Numbers(std::initializer_list<std::int32_t> numbers) {
    std::string text;
    for (const std::int32_t number : numbers) text += " " + std::to_string(number);
    return text;
}

[[nodiscard]] std::string Values(const ScalingData& data) {
    return Numbers(
        {data.GetOffset().width, data.GetOffset().height, data.GetScale().width, data.GetScale().height});
}

[[nodiscard]] std::string Values(const InputBinData& data) {
    const auto direction = static_cast<std::uint32_t>(data.GetFeedDirection());
    return " " + Narrow(FeedDirectionOptionNames::Instance().GetQname(direction).localName.c_str());
}

[[nodiscard]] std::string Values(const MediaSizeData& data) {
    return Numbers({data.GetWidth(), data.GetHeight()});
}

[[nodiscard]] std::string Values(const PageOrientationData&) { return {}; }

[[nodiscard]] std::string Values(const PrintableMediaSizeData& data) {
    const PrintableMediaRange& range = data.GetRange();
    return Numbers({range.minimum.width, range.minimum.height, range.maximum.width, range.maximum.height});
}

// The message without the place that it names and the line break at its end.
[[nodiscard]] std::string Message(const std::exception& failure) {
    std::string text = failure.what();
    const std::size_t place = text.find(") : ");
    if (place != std::string::npos) text.erase(0, place + 4);
    return text.substr(0, text.find('\n'));
}

template <typename Data>
[[nodiscard]] std::string Read(IXMLDOMDocument2* pTicket) {
    try {
        Data data;
        data.Read(pTicket);
        return Names(data) + Values(data);
    } catch (const base::exception::HresultError& failure) {
        return " error " + HresultText(failure.GetHresult());
    } catch (const std::exception& failure) {
        return " error " + Message(failure);
    }
}

}  // namespace

std::vector<std::string> SettingsText(IXMLDOMDocument2* pTicket) {
    return {"scaling" + Read<ScalingData>(pTicket), "bin" + Read<InputBinData>(pTicket),
            "media" + Read<MediaSizeData>(pTicket), "orientation" + Read<PageOrientationData>(pTicket),
            "printable" + Read<PrintableMediaSizeData>(pTicket)};
}

}  // namespace tests
