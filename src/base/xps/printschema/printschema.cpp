#include "base/xps/printschema/printschema.h"

#include <stdexcept>

#include "base/logging/check.h"
#include "base/xps/printschema/mediasizetable.h"

namespace base::xps::printschema {

EPrintTicketScope ToPrintTicketScope(Scope scope) {
    switch (scope) {
        case Scope::Job:
            return kPTJobScope;
        case Scope::Document:
            return kPTDocumentScope;
        case Scope::Page:
            return kPTPageScope;
        case Scope::None:
            break;
    }
    logging::Throw<std::logic_error>("Scope::None cannot convert to EPrintTicketScope.");
}

using enum SchemaNamespace;

PageMediaSizeFeatureNames::PageMediaSizeFeatureNames() { AddQname(Keywords, L"PageMediaSize"); }

MediaSizeOptionNames::MediaSizeOptionNames() {
    for (const auto& [id, record] : MediaSizeTable::Instance().Records()) {
        if (id != MediaSizeSchema::OptionUnknown) AddQname({Keywords, record->keyword});
    }
}

InputBinFeatureNames::InputBinFeatureNames() {
    AddQname(Keywords, L"JobInputBin");
    AddQname(Keywords, L"DocumentInputBin");
    AddQname(Keywords, L"PageInputBin");
}

InputBinOptionNames::InputBinOptionNames() {
    AddQname(Keywords, L"AutoSelect");
    AddQname(Keywords, L"Manual");
    AddQname(Keywords, L"Cassette");
    AddQname(Keywords, L"Tractor");
    AddQname(Keywords, L"AutoSheetFeeder");
    AddQname(Keywords, L"Tray1");
    AddQname(Keywords, L"Tray2");
    AddQname(Keywords, L"Tray3");
    AddQname(Keywords, L"Tray4");
    AddQname(Keywords, L"Tray5");
}

FeedDirectionOptionNames::FeedDirectionOptionNames() {
    AddQname(Keywords, L"LongEdgeFirst");
    AddQname(Keywords, L"ShortEdgeFirst");
}

PageOrientationFeatureNames::PageOrientationFeatureNames() { AddQname(Keywords, L"PageOrientation"); }

PageOrientationOptionNames::PageOrientationOptionNames() {
    AddQname(Keywords, L"Landscape");
    AddQname(Keywords, L"Portrait");
    AddQname(Keywords, L"ReverseLandscape");
    AddQname(Keywords, L"ReversePortrait");
}

PageScalingFeatureNames::PageScalingFeatureNames() { AddQname(Keywords, L"PageScaling"); }

PageScalingOptionNames::PageScalingOptionNames() {
    AddQname(Keywords, L"Custom");
    AddQname(Keywords, L"CustomSquare");
    AddQname(Keywords, L"FitApplicationBleedSizeToPageImageableSize");
    AddQname(Keywords, L"FitApplicationContentSizeToPageImageableSize");
    AddQname(Keywords, L"FitApplicationMediaSizeToPageImageableSize");
    AddQname(Keywords, L"FitApplicationMediaSizeToPageMediaSize");
    AddQname(Keywords, L"None");
    AddQname(Private, L"FitApplicationImageableSizeToImageableSize");
}

PrintableMediaSizeFeatureNames::PrintableMediaSizeFeatureNames() {
    AddQname(Private, L"JobPrintableMediaSize");
    AddQname(Private, L"DocumentPrintableMediaSize");
    AddQname(Private, L"PagePrintableMediaSize");
}

PrintableMediaSizePropertyNames::PrintableMediaSizePropertyNames() {
    AddQname(Private, L"PrintableMediaSize");
}

}  // namespace base::xps::printschema
