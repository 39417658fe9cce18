#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/logging/exceptions.h"
#include "base/logging/log.h"
#include "base/xml/xmlutility.h"
#include "base/xps/fixedpagevalidator.h"
#include "base/xps/printschema/privateprefix.h"
#include "domtest.h"
#include "mockparts.h"
#include "mockpipeline.h"
#include "ticketmarkup.h"

namespace base::xps {

using platform::ComPtr;
using printschema::ImageableAreaInfo;
using printschema::InputBinData;
using printschema::MediaDimensions;
using printschema::MediaSizeData;
using printschema::MediaSizeOption;
using printschema::PageOrientationData;
using printschema::PrintableMediaSizeData;
using printschema::ScalingData;
using tests::CallRecorder;
using tests::MakeMock;
using tests::Narrow;

using Calls = std::vector<std::string>;

inline constexpr MediaDimensions kA4 = {210000, 297000};
inline constexpr MediaDimensions kA4Rotated = {297000, 210000};
inline constexpr MediaDimensions kA5 = {148000, 210000};
inline constexpr MediaDimensions kSquare = {220000, 220000};

#define FRAMEWORK "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
#define KEYWORDS "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
#define TICKET_HEAD                                                                   \
    R"(<psf:PrintTicket version="1" xmlns:xsd="http://www.w3.org/2001/XMLSchema")"    \
    R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:psf=")" FRAMEWORK \
    R"(" xmlns:psk=")" KEYWORDS R"(">)"
#define TICKET_TAIL "</psf:PrintTicket>"

inline constexpr wchar_t kTicketOfSize[] =
    L"<p:PrintTicket xmlns:p='" FRAMEWORK "' xmlns:k='" KEYWORDS
    "' version='1'><p:Feature name='k:PageMediaSize'><p:Option name='k:%s'>"
    "<p:ScoredProperty name='k:MediaSizeHeight'><p:Value>%d</p:Value></p:ScoredProperty>"
    "<p:ScoredProperty name='k:MediaSizeWidth'><p:Value>%d</p:Value></p:ScoredProperty>"
    "</p:Option></p:Feature></p:PrintTicket>";

// Knows the tickets of the document and of the job by nothing but their media size.
class FakeTicketProvider final : public printschema::PrintTicketProvider {
  public:
    explicit FakeTicketProvider(CallRecorder& calls) : m_calls(calls) {}

    HRESULT GetTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket) override {
        *ppTicket = nullptr;
        const HRESULT hr = m_calls.Enter("GetTicket " + std::to_string(scope));
        if (FAILED(hr)) return hr;
        const MediaDimensions size = sizes.at(scope);
        const std::wstring keyword = MediaSizeData(MediaSizeOption{L"", 0, size}).ToRecord().keyword;
        const std::wstring text = logging::Format(kTicketOfSize, keyword.c_str(), size.height, size.width);
        *ppTicket = xml::LoadDomFromString(text).Detach();
        return S_OK;
    }

    std::map<EPrintTicketScope, MediaDimensions> sizes = {{kPTDocumentScope, kA4}, {kPTJobScope, kA4}};

  private:
    CallRecorder& m_calls;
};

class TicketPart final : public tests::MockPrintTicket {
  public:
    TicketPart(CallRecorder& calls, std::wstring uri, std::string bytes)
        : MockPrintTicket(calls, std::move(uri), std::move(bytes)), m_calls(calls) {}

    HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) override {
        *pUri = nullptr;
        const HRESULT hr = m_calls.Enter("GetUri");
        return FAILED(hr) ? hr : MockPrintTicket::GetUri(pUri);
    }
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override {
        if (!hasNoStream) return MockPrintTicket::GetStream(ppStream);
        *ppStream = nullptr;
        return S_OK;
    }

    bool hasNoStream = false;

  private:
    CallRecorder& m_calls;
};

class Page final : public tests::MockFixedPage {
  public:
    using MockFixedPage::MockFixedPage;

    HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket** ppTicket) override {
        const HRESULT hr = MockFixedPage::GetPrintTicket(ppTicket);
        return hr == E_ELEMENT_NOT_FOUND && succeedsWithoutTicket ? S_OK : hr;
    }
    HRESULT STDMETHODCALLTYPE DeleteResource(const wchar_t* uri) override {
        const HRESULT hr = m_calls.Enter("DeleteResource " + Narrow(uri));
        if (SUCCEEDED(hr)) m_pTicket.Reset();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override {
        if (!hasNoStreams) return MockFixedPage::GetStream(ppStream);
        *ppStream = nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetWriteStream(IPrintWriteStream** ppStream) override {
        if (!hasNoStreams) return MockFixedPage::GetWriteStream(ppStream);
        *ppStream = nullptr;
        return S_OK;
    }

    bool succeedsWithoutTicket = false;
    bool hasNoStreams = false;
};

class FakeImageableArea final : public printschema::ImageableAreaSource {
  public:
    HRESULT GetImageableArea(const MediaSizeOption& mediaSize, ImageableAreaInfo& area) override {
        asked.push_back(mediaSize);
        area.extent = extent;
        return result;
    }

    MediaDimensions extent;
    HRESULT result = S_OK;
    std::vector<MediaSizeOption> asked;
};

inline constexpr char kMarkup[] = R"(<FixedPage Width="816" Height="1056"><Path/></FixedPage>)";
inline constexpr char kTurnedMarkup[] =
    R"(<?xml version="1.0" encoding="utf-8"?><FixedPage Height="816.00" Width="1056.00">)"
    R"(<Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,816.00"><Path></Path></Canvas></FixedPage>)";
inline constexpr char kOldTicket[] = TICKET_HEAD R"(<psf:Feature name="psk:PageOrientation">)"
                                                 R"(<psf:Option name="psk:Portrait"/></psf:Feature>)"
                                                 R"(<psf:Feature name="psk:JobCollate"/>)" TICKET_TAIL;

// What a page ticket says of the media size, as it is written.
inline std::string MediaFeature(const std::wstring& option, int width, int height) {
    return tests::Bytes(
        tests::Feature(L"psk:PageMediaSize", L"psk:" + option,
                       tests::ScoredProperty(L"psk:MediaSizeHeight", tests::Integer(height)) +
                           tests::ScoredProperty(L"psk:MediaSizeWidth", tests::Integer(width))));
}

inline std::string PlainFeature(const std::wstring& name, const std::wstring& option) {
    return tests::Bytes(tests::Feature(L"psk:" + name, L"psk:" + option));
}

class FixedPageValidatorTest : public tests::DomTest {
  protected:
    FixedPageValidatorTest() {
        m_printable.SetRange({{76200, 127000}, {297000, 420000}});
        SetSize(kA4);
        printschema::SetPrivatePrefix(L"krk");
    }
    ~FixedPageValidatorTest() override { printschema::SetPrivatePrefix(L""); }

    void SetSize(const MediaDimensions& size) { m_mediaSize.SetSize(size); }
    void GiveTicket(std::wstring uri = L"/Documents/1/Pages/1_PT.xml", std::string text = kOldTicket) {
        m_ticket = MakeMock<TicketPart>(m_calls, std::move(uri), std::move(text));
        m_page = MakeMock<Page>(m_calls, L"/p", kMarkup, ComPtr<IPartPrintTicket>(m_ticket.Get()));
    }
    void GiveNoTicket() { m_page = MakeMock<Page>(m_calls, L"/p", kMarkup); }

    [[nodiscard]] FixedPageValidator Validator() {
        FixedPageValidator validator(m_provider, m_consumer.Get(), m_page.Get(), m_feedDirection, m_mediaSize,
                                     m_orientation, m_scaling, m_printable);
        validator.SetImageableArea(m_pImageableArea);
        return validator;
    }
    void Validate() { Validator().Validate(); }
    // The next page, of the given size and without a ticket.
    void ValidateNext(const MediaDimensions& size) {
        m_consumer->Clear();
        GiveNoTicket();
        SetSize(size);
        Validate();
    }

    [[nodiscard]] bool IsTurned() const { return m_page->Written() != nullptr; }
    [[nodiscard]] bool HasNewTicket() const { return !m_consumer->NewParts().empty(); }

    // The new ticket's text behind its declaration.
    [[nodiscard]] std::string NewTicket() const {
        if (!HasNewTicket()) return "no new ticket";
        EXPECT_EQ(1, m_consumer->NewParts().back()->Closes());
        std::string text = m_consumer->NewParts().back()->Bytes();
        text.erase(0, text.find("<psf:"));
        text.erase(text.find_last_not_of("\r\n") + 1);
        return text;
    }

    // The calls but those of reading and writing whose number is the reader's or the DOM's own; in the name
    // of the new part its number is replaced.
    [[nodiscard]] Calls Steps() const {
        Calls steps;
        for (std::string call : m_calls.Calls()) {
            if (call.starts_with("ReadBytes") || call.starts_with("WriteBytes")) continue;
            if (const auto number = call.find("pagevalidator_"); number != std::string::npos) {
                const std::size_t start = number + std::string_view("pagevalidator_").size();
                call.replace(start, call.find('_', start) - start, 1, 'N');
            }
            steps.push_back(call);
        }
        return steps;
    }

    CallRecorder m_calls;
    FakeTicketProvider m_provider{m_calls};
    ComPtr<tests::MockDocumentConsumer> m_consumer = MakeMock<tests::MockDocumentConsumer>(m_calls);
    ComPtr<TicketPart> m_ticket;
    ComPtr<Page> m_page = MakeMock<Page>(m_calls, L"/p", kMarkup);
    InputBinData m_feedDirection;
    MediaSizeData m_mediaSize;
    PageOrientationData m_orientation;
    ScalingData m_scaling;
    PrintableMediaSizeData m_printable;
    FakeImageableArea* m_pImageableArea = nullptr;
};

}  // namespace base::xps
