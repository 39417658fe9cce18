#pragma once

#include <string_view>

namespace devkit::package {

// The two sets of names for the same things: Microsoft's XPS 1.0 and OpenXPS (ECMA-388).
enum class Flavour { MicrosoftXps, OpenXps };

inline constexpr std::string_view kThumbnailRelationship =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail";
inline constexpr std::string_view kPrintTicketContentType = "application/vnd.ms-printing.printticket+xml";
inline constexpr std::string_view kFixedPageContentType = "application/vnd.ms-package.xps-fixedpage+xml";
inline constexpr std::string_view kFixedDocumentContentType =
    "application/vnd.ms-package.xps-fixeddocument+xml";
inline constexpr std::string_view kFixedDocumentSequenceContentType =
    "application/vnd.ms-package.xps-fixeddocumentsequence+xml";

struct Vocabulary {
    std::string_view markupNamespace;
    std::string_view startPart;  // relationship types
    std::string_view printTicket;
    std::string_view requiredResource;
    std::string_view restrictedFont;
};

[[nodiscard]] constexpr Vocabulary VocabularyOf(Flavour flavour) {
    if (flavour == Flavour::OpenXps)
        return {"http://schemas.openxps.org/oxps/v1.0",
                "http://schemas.openxps.org/oxps/v1.0/fixedrepresentation",
                "http://schemas.openxps.org/oxps/v1.0/printticket",
                "http://schemas.openxps.org/oxps/v1.0/required-resource",
                "http://schemas.openxps.org/oxps/v1.0/restricted-font"};
    return {"http://schemas.microsoft.com/xps/2005/06",
            "http://schemas.microsoft.com/xps/2005/06/fixedrepresentation",
            "http://schemas.microsoft.com/xps/2005/06/printticket",
            "http://schemas.microsoft.com/xps/2005/06/required-resource",
            "http://schemas.microsoft.com/xps/2005/06/restricted-font"};
}

// Whether the name is the member's in either set.
[[nodiscard]] constexpr bool IsEither(std::string_view name, std::string_view Vocabulary::*member) {
    return name == VocabularyOf(Flavour::MicrosoftXps).*member ||
           name == VocabularyOf(Flavour::OpenXps).*member;
}

}  // namespace devkit::package
