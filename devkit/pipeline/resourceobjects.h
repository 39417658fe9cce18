#pragma once

#include "platform/windows.h"

#include "devkit/pipeline/partobject.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// The objects of parts that have bytes and no parts of their own.

class PrintTicketObject final : public StreamPartObject<IPartPrintTicket> {
  public:
    using StreamPartObject::StreamPartObject;
};

class ColorProfileObject final : public StreamPartObject<IPartColorProfile> {
  public:
    using StreamPartObject::StreamPartObject;
};

class ResourceDictionaryObject final : public StreamPartObject<IPartResourceDictionary> {
  public:
    using StreamPartObject::StreamPartObject;
};

// A part of a kind that the pipeline has no interface for.
class UnknownPartObject final : public StreamPartObject<IPartBase> {
  public:
    using StreamPartObject::StreamPartObject;
};

class ImageObject final : public StreamPartObject<IPartImage> {
  public:
    using StreamPartObject::StreamPartObject;

    HRESULT STDMETHODCALLTYPE GetImageProperties(BSTR* pContentType) override;
    HRESULT STDMETHODCALLTYPE SetImageContent(const wchar_t* contentType) override;
};

class ThumbnailObject final : public StreamPartObject<IPartThumbnail> {
  public:
    using StreamPartObject::StreamPartObject;

    HRESULT STDMETHODCALLTYPE GetThumbnailProperties(BSTR* pContentType) override;
    HRESULT STDMETHODCALLTYPE SetThumbnailContent(const wchar_t* contentType) override;
};

// The font options tell an obfuscated font from a plain one; setting them also sets the content type, and
// says what becomes of a new font when it is written into a package. A filter reads and writes plain fonts. A
// name without a GUID, which obfuscation needs, is a breach; such a font stays plain.
class FontObject final : public StreamPartObject<IPartFont2> {
  public:
    using StreamPartObject::StreamPartObject;

    HRESULT STDMETHODCALLTYPE GetFontProperties(BSTR* pContentType, EXpsFontOptions* pOptions) override;
    HRESULT STDMETHODCALLTYPE SetFontContent(const wchar_t* contentType) override;
    HRESULT STDMETHODCALLTYPE SetFontOptions(EXpsFontOptions options) override;
    // Always Xps_Restricted_Font_Installable: the kit does not read the font's licence bits.
    HRESULT STDMETHODCALLTYPE GetFontRestriction(EXpsFontRestriction* pRestriction) override;
};

// A new object for the part of such a kind.
[[nodiscard]] platform::ComPtr<IUnknown> MakeResourceObject(const ContextPtr& context, const PartPtr& part);

// The object of a ticket or a thumbnail as GetPrintTicket and GetThumbnail give it: the switch says what is
// answered where there is none.
HRESULT GetResourceObject(const ContextPtr& context, const PartPtr& part, REFIID iid, void** ppObject);
HRESULT GetTicketOf(const ContextPtr& context, const Part& part, IPartPrintTicket** ppPrintTicket);
// Takes the ticket's part as the new ticket of `target`.
HRESULT AttachTicket(RunContext& context, Part& target, IPartPrintTicket* pPrintTicket);

}  // namespace devkit::pipeline
