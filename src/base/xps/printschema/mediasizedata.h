#pragma once

#include "platform/windows.h"

#include <cstdint>

#include "base/xps/printschema/mediasizetable.h"
#include "base/xps/printschema/printablemediasizedata.h"
#include "base/xps/printschema/printschema.h"
#include "base/xps/printschema/printticketfunctionoption.h"
#include "base/xps/printschema/printticketprovider.h"

namespace base::xps::printschema {

// The PageMediaSize feature: a media size option and the sheet's size in micrometres, kept consistent through
// the media size table. The option may be a custom one, and then only the size tells what the sheet is.
class MediaSizeData final : public PrintTicketFunctionOption {
  public:
    // ISOA4.
    MediaSizeData();
    explicit MediaSizeData(const MediaSizeOption& record);

    // A standard size sets the size too, and then the option is the lowest that has this size:
    // NorthAmericaNote becomes NorthAmericaLetter. Any other id is stored and the size stays.
    void SetOptionId(std::int32_t id) override;
    [[nodiscard]] Scope GetScope() const override;
    [[nodiscard]] std::uint32_t FeatureIndexOfScope(Scope scope) const override;
    [[nodiscard]] const SchemaBase& GetFeatureNames() const override;
    [[nodiscard]] const SchemaBase& GetOptionNames() const override;

    // OptionUnknown and all-ones instead of the exceptions for ids that are not set.
    [[nodiscard]] virtual std::int32_t OptionIdOrUnknown() const;
    [[nodiscard]] virtual std::int32_t FeatureIdOrUnknown() const;

    [[nodiscard]] const MediaDimensions& GetSize() const noexcept { return m_size; }
    [[nodiscard]] std::int32_t GetWidth() const noexcept { return m_size.width; }
    [[nodiscard]] std::int32_t GetHeight() const noexcept { return m_size.height; }

    // Takes the option of a known size along. A standard option whose size this is not becomes
    // CustomMediaSize; the size 0 x 0 leaves the option as it is.
    void SetSize(const MediaDimensions& size);

    // A square sheet is portrait.
    [[nodiscard]] bool IsPortrait() const noexcept { return m_size.width <= m_size.height; }
    [[nodiscard]] bool IsLandscape() const noexcept { return !IsPortrait(); }

    // Swaps width and height; the option follows the new size.
    void Rotate();

    void SetFromRecord(const MediaSizeOption& record);
    // The option's record; for a custom or unknown option with this object's size.
    [[nodiscard]] MediaSizeOption ToRecord() const;

    // The sheet to print on: the media size of the first ticket, from the starting scope to the wider ones,
    // that lies in the range; without one the user locale's usual sheet, ISOA4 or NorthAmericaLetter, if that
    // does; else the smallest sheet of the range. A ticket that cannot be had throws HresultError.
    [[nodiscard]] static MediaSizeOption SelectPrintableMediaSize(PrintTicketProvider& provider,
                                                                  const PrintableMediaRange& range,
                                                                  Scope start);

  protected:
    // Reads the size that the option states. std::runtime_error when it states none and is not a standard
    // size.
    void OnRead(const PrintSchemaHandler& handler, const Qname& featureName, IXMLDOMNode* pOption) override;
    // Writes the size into the option, the height first. std::runtime_error when a standard option has
    // another size than its own, HresultError for a failing DOM call; what was written stays.
    void OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, Scope scope) const override;

  private:
    MediaDimensions m_size;
};

}  // namespace base::xps::printschema
