#include "base/xps/filterpipeline/defaultprinttickets.h"

#include <algorithm>
#include <array>

#include "base/logging/log.h"
#include "base/xml/xmlutility.h"
#include "base/xps/filterpipeline/driverpropertybag.h"
#include "base/xps/printschema/schemabase.h"

namespace base::xps::filterpipeline {
namespace {

// What the tickets of the printer language families differ in; everything else is the template's.
struct Family {
    LONG teskType;
    const wchar_t* jobCompress;
    int threshold;
    int alignementBytes;
    const wchar_t* jobTeskType;
    const wchar_t* jobBitsPerPixel;
};

constexpr LONG kDefaultFamily = 7;
constexpr std::array<Family, 3> kFamilies = {{
    {1, L"krk:Type4", 24641536, 8, L"krk:Type1", L"krk:Bits8"},
    {L'L', L"krk:Type3", 77594624, 256, L"krk:TypeL", L"krk:Bits2"},
    {kDefaultFamily, L"krk:Type2", 52428800, 8, L"krk:Type7", L"krk:Bits8"},
}};

constexpr wchar_t kTemplate[] =
    LR"(<?xml version="1.0" encoding="UTF-8" ?> <psf:PrintTicket xmlns:xsd="%ls" xmlns:xsi="%ls" xmlns:psf="%ls" xmlns:psk="%ls" xmlns:krk="%ls">
  <psf:Feature name="psk:PageScaling">
    <psf:Option name="psk:FitApplicationMediaSizeToPageMediaSize"/>
  </psf:Feature>
  <psf:Feature name="krk:JobIcmMode">
    <psf:Option name="krk:QvAcct"/>
  </psf:Feature>
  <psf:Feature name="krk:JobCompress">
    <psf:Option name="%ls">
      <psf:Property name="krk:Threshold"><psf:Value xsi:type="xsd:integer">%d</psf:Value></psf:Property>
      <psf:Property name="krk:AlignementBytes"><psf:Value xsi:type="xsd:integer">%d</psf:Value></psf:Property>
    </psf:Option>
  </psf:Feature>
  <psf:Feature name="krk:PagePrintableMediaSize">
    <psf:Option name="krk:PrintableMediaSize">
      <psf:Property name="krk:MinWidth"><psf:Value xsi:type="xsd:integer">76200</psf:Value></psf:Property>
      <psf:Property name="krk:MinHeight"><psf:Value xsi:type="xsd:integer">127000</psf:Value></psf:Property>
      <psf:Property name="krk:MaxWidth"><psf:Value xsi:type="xsd:integer">215900</psf:Value></psf:Property>
      <psf:Property name="krk:MaxHeight"><psf:Value xsi:type="xsd:integer">355600</psf:Value></psf:Property>
    </psf:Option>
  </psf:Feature>
  <psf:Feature name="krk:JobRtabContentType">
    <psf:Option name="krk:RtabIndex">
      <psf:Property name="krk:Image"><psf:Value xsi:type="xsd:integer">1</psf:Value></psf:Property>
      <psf:Property name="krk:Text"><psf:Value xsi:type="xsd:integer">1</psf:Value></psf:Property>
      <psf:Property name="krk:Graphics"><psf:Value xsi:type="xsd:integer">1</psf:Value></psf:Property>
    </psf:Option>
  </psf:Feature>
  <psf:Feature name="krk:JobTeskType">
    <psf:Option name="%ls"/>
  </psf:Feature>
  <psf:Feature name="krk:JobTeskVersion">
    <psf:Option name="krk:Version1"/>
  </psf:Feature>
  <psf:Feature name="krk:JobBitsPerPixel">
    <psf:Option name="%ls"/>
  </psf:Feature>
</psf:PrintTicket>
)";

const Family& FamilyOf(LONG teskType) noexcept {
    const auto found = std::ranges::find(kFamilies, teskType, &Family::teskType);
    return found == kFamilies.end() ? FamilyOf(kDefaultFamily) : *found;
}

}  // namespace

std::wstring DefaultPrintTicketText(LONG teskType) {
    const Family& family = FamilyOf(teskType);
    return logging::Format(kTemplate, printschema::kXmlSchemaNamespace,
                           printschema::kXmlSchemaInstanceNamespace, printschema::kFrameworkNamespace,
                           printschema::kKeywordsNamespace, printschema::kPrivateNamespace,
                           family.jobCompress, family.threshold, family.alignementBytes, family.jobTeskType,
                           family.jobBitsPerPixel);
}

platform::ComPtr<IXMLDOMDocument2> CreateDefaultPrintTicket(IPrintPipelinePropertyBag* pPropertyBag) {
    const LONG teskType = DriverPropertyBag(pPropertyBag).ReadInt32(L"KoraTeskType").value_or(kDefaultFamily);
    return xml::LoadDomFromString(DefaultPrintTicketText(teskType));
}

}  // namespace base::xps::filterpipeline
