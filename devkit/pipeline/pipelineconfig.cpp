#include "devkit/pipeline/pipelineconfig.h"

#include <optional>

#include "devkit/common/error.h"
#include "devkit/common/text.h"
#include "devkit/common/xmlreader.h"
#include "platform/filterpipeline.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

// Configurations are written with braces and without them.
std::optional<GUID> ParseGuid(std::string_view text) {
    text = common::Trimmed(text);
    const std::string braced = text.starts_with('{') ? std::string(text) : "{" + std::string(text) + "}";
    GUID guid{};
    if (FAILED(IIDFromString(platform::ToUtf16(braced).c_str(), &guid))) return std::nullopt;
    return guid;
}

class ConfigReader {
  public:
    ConfigReader(std::string_view markup, const std::string& where)
        : m_where(where), m_reader(markup, where, common::XmlLimits()) {}

    [[nodiscard]] std::vector<ConfiguredFilter> Read() {
        if (!m_reader.NextElement() || m_reader.LocalName() != "Filters")
            Fail("is no pipeline configuration");
        while (m_reader.NextElement()) {
            const std::string element = m_reader.LocalName();
            if (element == "Filter") {
                m_filters.push_back(ReadFilter());
            } else if (element == "Input") {
                Last().input = KindOf(__uuidof(IXpsDocumentProvider), __uuidof(IPrintReadStream));
            } else if (element == "Output") {
                Last().output = KindOf(__uuidof(IXpsDocumentConsumer), __uuidof(IPrintWriteStream));
            }
        }
        if (m_filters.empty()) Fail("names no filter");
        return std::move(m_filters);
    }

  private:
    [[noreturn]] void Fail(const std::string& what) const { throw common::Error(what, m_where); }

    ConfiguredFilter& Last() {
        if (m_filters.empty()) Fail("has an " + m_reader.LocalName() + " outside of a filter");
        return m_filters.back();
    }

    ConfiguredFilter ReadFilter() {
        ConfiguredFilter filter;
        filter.dll = m_reader.Attribute("dll").value_or("");
        if (filter.dll.empty()) Fail("has a filter without a dll");
        const auto clsid = ParseGuid(m_reader.Attribute("clsid").value_or(""));
        if (!clsid) Fail("has no class id for " + filter.dll);
        filter.clsid = *clsid;
        filter.name = m_reader.Attribute("name").value_or("");
        if (filter.name.empty()) filter.name = filter.dll;
        return filter;
    }

    DataKind KindOf(REFIID parts, REFIID stream) {
        const std::string text = m_reader.Attribute("guid").value_or("");
        const auto iid = ParseGuid(text);
        if (iid == parts) return DataKind::Xps;
        if (iid == stream) return DataKind::Stream;
        Fail("gives " + Last().name + " an " + m_reader.LocalName() + " that no filter has: " + text);
    }

    const std::string& m_where;
    common::XmlReader m_reader;
    std::vector<ConfiguredFilter> m_filters;
};

}  // namespace

std::vector<ConfiguredFilter> ReadPipelineConfig(std::string_view markup, const std::string& where) {
    return ConfigReader(markup, where).Read();
}

}  // namespace devkit::pipeline
