#pragma once

#include "platform/windows.h"

#include <cstdint>

#include "base/xps/printschema/printticketfunctionoption.h"

namespace base::xps::printschema {

// The input bin of a job, a document or a page, and the edge of the sheet that its bin feeds first.
class InputBinData : public PrintTicketFunctionOption {
  public:
    static constexpr std::int32_t FeedDirectionUnknown = -1;
    static constexpr std::int32_t LongEdgeFirst = 0;
    static constexpr std::int32_t ShortEdgeFirst = 1;

    // The job's bin, chosen by the printer, fed short edge first.
    InputBinData();

    [[nodiscard]] Scope GetScope() const override;
    [[nodiscard]] std::uint32_t FeatureIndexOfScope(Scope scope) const override;
    [[nodiscard]] const SchemaBase& GetFeatureNames() const override;
    [[nodiscard]] const SchemaBase& GetOptionNames() const override;

    // An index in FeedDirectionOptionNames, or FeedDirectionUnknown.
    [[nodiscard]] std::int32_t GetFeedDirection() const noexcept { return m_feedDirection; }
    void SetFeedDirection(std::int32_t id) noexcept { m_feedDirection = id; }
    [[nodiscard]] bool HasFeedDirection() const noexcept { return m_feedDirection != FeedDirectionUnknown; }

  protected:
    // An option without a feed direction, or with one that the list does not know, leaves it as it was.
    void OnRead(const PrintSchemaHandler& handler, const Qname& featureName, IXMLDOMNode* pOption) override;
    // Writes the feed direction when there is one. HresultError for a failing DOM call.
    void OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, Scope scope) const override;

  private:
    std::int32_t m_feedDirection = ShortEdgeFirst;
};

}  // namespace base::xps::printschema
