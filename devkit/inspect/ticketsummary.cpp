#include "devkit/inspect/ticketsummary.h"

#include "devkit/common/error.h"
#include "devkit/common/xmlreader.h"

namespace devkit::inspect {

namespace {

using common::XmlReader;

constexpr std::string_view kFramework =
    "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";

// A value that is longer is data, such as a device's own settings.
constexpr std::size_t kLongestValue = 60;

std::string Shortened(std::string value) {
    if (value.size() <= kLongestValue) return value;
    return "(" + std::to_string(value.size()) + " characters)";
}

std::string Trimmed(std::string_view text) {
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t start = text.find_first_not_of(kSpace);
    if (start == std::string_view::npos) return {};
    return std::string(text.substr(start, text.find_last_not_of(kSpace) + 1 - start));
}

// Follows the open features, so that an option finds the names of all that it stands in.
class Summary {
  public:
    void Enter(const common::XmlReader& reader) {
        if (reader.Namespace() != kFramework) return;
        const int depth = reader.Depth();
        while (!m_open.empty() && m_open.back().depth >= depth) m_open.pop_back();
        if (depth <= m_optionDepth) m_optionDepth = 0;
        const std::string element = reader.LocalName();
        const std::string name = reader.Attribute("name").value_or("(unnamed)");
        if (element == "Feature") {
            m_open.push_back({depth, name});
        } else if (element == "Option" && !m_open.empty()) {
            m_settings.push_back({FeaturePath() + " = " + name, {}});
            m_optionDepth = depth;
        } else if (element == "ParameterInit") {
            m_settings.push_back({name + " = " + Shortened(Trimmed(reader.Text())), {}});
        } else if (m_optionDepth > 0) {
            EnterInOption(reader, element, name, depth - m_optionDepth);
        }
    }

    [[nodiscard]] std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const Setting& setting : m_settings)
            texts.push_back(setting.text + (setting.details.empty() ? "" : " (" + setting.details + ")"));
        return texts;
    }

  private:
    struct Feature {
        int depth = 0;
        std::string name;
    };
    struct Setting {
        std::string text;
        std::string details;  // the properties of the option
    };

    void EnterInOption(const common::XmlReader& reader, const std::string& element, const std::string& name,
                       int depth) {
        std::string& details = m_settings.back().details;
        if (depth == 1 && (element == "ScoredProperty" || element == "Property")) {
            const std::string value = Shortened(Trimmed(reader.Text()));
            details += (details.empty() ? "" : ", ") + name + (value.empty() ? "" : " " + value);
        } else if (depth == 2 && element == "ParameterRef") {
            details += " from " + name;
        }
    }

    [[nodiscard]] std::string FeaturePath() const {
        std::string path;
        for (const Feature& feature : m_open) path += (path.empty() ? "" : "/") + feature.name;
        return path;
    }

    std::vector<Feature> m_open;
    int m_optionDepth = 0;  // 0 outside options
    std::vector<Setting> m_settings;
};

}  // namespace

std::vector<std::string> SummarizeTicket(std::string_view ticket, const std::string& partName,
                                         const common::XmlLimits& limits) {
    common::XmlReader reader(ticket, partName, limits);
    if (!reader.NextElement() || reader.LocalName() != "PrintTicket" || reader.Namespace() != kFramework)
        throw common::Error("is no print ticket", partName);
    Summary summary;
    while (reader.NextElement()) summary.Enter(reader);
    return summary.Texts();
}

}  // namespace devkit::inspect
