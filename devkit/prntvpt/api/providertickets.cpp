#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "devkit/printschema/reader.h"
#include "devkit/printschema/ticketcheck.h"
#include "devkit/prntvpt/api/provider.h"
#include "devkit/prntvpt/api/resultfaults.h"
#include "devkit/prntvpt/api/ticketstreams.h"
#include "devkit/prntvpt/merge/capabilities.h"
#include "devkit/prntvpt/merge/serializer.h"
#include "devkit/prntvpt/merge/validation.h"
#include "platform/bstr.h"
#include "platform/utf.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

constexpr HRESULT kNoConflict = static_cast<HRESULT>(S_PT_NO_CONFLICT);
constexpr HRESULT kConflictResolved = static_cast<HRESULT>(S_PT_CONFLICT_RESOLVED);
constexpr HRESULT kBadTicket = static_cast<HRESULT>(E_PRINTTICKET_FORMAT);
constexpr HRESULT kBadDelta = static_cast<HRESULT>(E_DELTA_PRINTTICKET_FORMAT);

// A failure that has a text for the caller.
struct Failure {
    HRESULT code;
    std::string text;
};

// Gives the caller the text of an error, as far as the faults let it.
class ErrorText {
  public:
    ErrorText(BSTR* pError, const ActiveFaults& faults, ProviderCall& call)
        : m_pError(pError), m_faults(faults), m_call(call) {}

    [[nodiscard]] HRESULT Fail(const Failure& failure) const {
        if (!m_faults.Has(FaultMode::TextNullOnError)) Give(failure.text);
        return failure.code;
    }
    [[nodiscard]] HRESULT Succeed(HRESULT code) const {
        if (m_faults.Has(FaultMode::TextOnSuccess)) Give("There is nothing wrong.");
        return code;
    }

  private:
    void Give(const std::string& text) const {
        if (m_pError == nullptr || text.empty()) return;
        *m_pError = platform::Bstr(platform::ToUtf16(text)).Detach();
        m_call.error = text;
    }

    BSTR* m_pError;
    const ActiveFaults& m_faults;
    ProviderCall& m_call;
};

// Throws Failure for what is no ticket; `kind` begins the text.
[[nodiscard]] FrameworkDocument ParseTicket(std::string_view bytes, const Configuration& configuration,
                                            HRESULT code, const char* kind) {
    try {
        return ReadFramework(bytes, Tag::PrintTicket, configuration.behaviour.duplicates,
                             configuration.behaviour.mixedValues);
    } catch (const FormatError& error) {
        throw Failure{code, std::string(kind) + ": " + error.what()};
    }
}

// The same for a ticket that the caller has made or kept. Where a name stands twice in it, the call tells of
// the prefixes that it was written with.
[[nodiscard]] FrameworkDocument ParseOwnTicket(std::string_view bytes, const Configuration& configuration,
                                               const char* kind, ProviderCall& call) {
    try {
        FrameworkDocument document = ParseTicket(bytes, configuration, kBadTicket, kind);
        if (document.hadDuplicates) call.twoPrefixes = FindTwoPrefixes(bytes);
        return document;
    } catch (const Failure&) {
        call.twoPrefixes = FindTwoPrefixes(bytes);
        throw;
    }
}

// The same for the base of a merge, which is often that of the merge before. One of which the call has to
// tell something is read each time.
[[nodiscard]] LastTicket::DocumentPtr ParseBase(std::string bytes, const Configuration& configuration,
                                                ProviderCall& call) {
    if (LastTicket::DocumentPtr pKnown = configuration.pLastBase->Find(bytes)) return pKnown;
    auto pDocument =
        std::make_shared<const FrameworkDocument>(ParseOwnTicket(bytes, configuration, "Base ticket", call));
    if (!pDocument->hadDuplicates) configuration.pLastBase->Keep(std::move(bytes), pDocument);
    return pDocument;
}

void ThrowMergeFault(const ActiveFaults& faults) {
    if (faults.Has(FaultMode::MergeRefuseBase)) {
        throw Failure{kBadTicket, "Base ticket: refused by the simulated provider"};
    }
    if (faults.Has(FaultMode::MergeRefuseDelta)) {
        throw Failure{kBadDelta, "Delta ticket: refused by the simulated provider"};
    }
    if (faults.Has(FaultMode::MergeFail)) throw Failure{E_FAIL, "The simulated provider failed"};
    if (faults.Has(FaultMode::MergeOutOfMemory)) throw Failure{E_OUTOFMEMORY, {}};
}

[[nodiscard]] HRESULT ResultOf(const ActiveFaults& faults, bool conflict) {
    if (faults.Has(FaultMode::PlainSuccess)) return S_OK;
    if (faults.Has(FaultMode::Conflict)) return kConflictResolved;
    if (faults.Has(FaultMode::ConflictSilent)) return kNoConflict;
    return conflict ? kConflictResolved : kNoConflict;
}

// All of a ticket that a caller hands over.
[[nodiscard]] HRESULT ReadTicket(IStream* pStream, std::string& bytes, ProviderCall& call) {
    const StreamTime time(call);
    return ReadToEnd(pStream, kMaxDocumentSize, bytes);
}

[[nodiscard]] HRESULT WriteResult(IStream* pStream, const std::string& bytes, const ActiveFaults& faults,
                                  ProviderCall& call) {
    const StreamTime time(call);
    if (faults.Has(FaultMode::OutShortWrite)) {
        const HRESULT hr = WriteAll(pStream, std::string_view(bytes).substr(0, bytes.size() / 2));
        return FAILED(hr) ? hr : STG_E_MEDIUMFULL;
    }
    const HRESULT hr = WriteAll(pStream, bytes);
    if (FAILED(hr) || !faults.Has(FaultMode::OutRewound)) return hr;
    return pStream->Seek({}, STREAM_SEEK_SET, nullptr);
}

[[nodiscard]] std::vector<PrefixBinding> Prefixes(const FrameworkDocument& base,
                                                  const FrameworkDocument& delta) {
    std::vector<PrefixBinding> prefixes = base.prefixes;
    for (const PrefixBinding& binding : delta.prefixes) {
        const bool isKnown = std::any_of(prefixes.begin(), prefixes.end(), [&](const PrefixBinding& known) {
            return known.prefix == binding.prefix;
        });
        if (!isKnown) prefixes.push_back(binding);
    }
    return prefixes;
}

}  // namespace

HRESULT Provider::Merge(const Configuration& configuration, IStream* pBase, IStream* pDelta,
                        EPrintTicketScope scope, IStream* pResult, BSTR* pError, ProviderCall& call) {
    const ActiveFaults faults = configuration.pFaults->Strike(FaultTarget::Merge, scope);
    faults.Delay();
    const ErrorText error(pError, faults, call);
    std::string baseBytes;
    std::string deltaBytes;
    HRESULT hr = ReadTicket(pBase, baseBytes, call);
    if (FAILED(hr)) return hr;
    if (configuration.recordTickets) call.base = DocumentText(baseBytes);
    hr = pDelta == nullptr ? S_OK : ReadTicket(pDelta, deltaBytes, call);
    if (FAILED(hr)) return hr;
    if (configuration.recordTickets && pDelta != nullptr) call.delta = DocumentText(deltaBytes);
    LastTicket::DocumentPtr pBaseTicket;
    FrameworkDocument delta;
    try {
        ThrowMergeFault(faults);
        pBaseTicket = ParseBase(std::move(baseBytes), configuration, call);
        if (pDelta != nullptr) delta = ParseTicket(deltaBytes, configuration, kBadDelta, "Delta ticket");
    } catch (const Failure& failure) {
        return error.Fail(failure);
    }
    const std::vector<PrefixBinding> prefixes = Prefixes(*pBaseTicket, delta);
    ValidatedTicket validated =
        MergeAndValidate(configuration.device, configuration.behaviour, pBaseTicket->root,
                         pDelta == nullptr ? nullptr : &delta.root, scope);
    for (std::string& note : validated.notes) m_log.Note(std::move(note));
    SpoilTicket(faults, configuration.device, validated.ticket);
    std::string bytes =
        Serialize(validated.ticket, configuration.behaviour, {configuration.device.privateUris, prefixes});
    SpoilBytes(faults, bytes);
    if (configuration.recordTickets) call.output = DocumentText(bytes);
    call.facts = FactsOf(validated.ticket);
    hr = WriteResult(pResult, bytes, faults, call);
    return FAILED(hr) ? hr : error.Succeed(ResultOf(faults, validated.conflict));
}

HRESULT Provider::WriteCapabilities(const Configuration& configuration, IStream* pTicket,
                                    IStream* pCapabilities, BSTR* pError, ProviderCall& call) {
    const ActiveFaults faults = configuration.pFaults->Strike(FaultTarget::Capabilities);
    faults.Delay();
    const ErrorText error(pError, faults, call);
    if (faults.Has(FaultMode::CapabilitiesNotImplemented)) return E_NOTIMPL;
    std::string ticketBytes;
    HRESULT hr = pTicket == nullptr ? S_OK : ReadTicket(pTicket, ticketBytes, call);
    if (FAILED(hr)) return hr;
    if (configuration.recordTickets && pTicket != nullptr) call.base = DocumentText(ticketBytes);
    FrameworkDocument ticket;
    try {
        if (faults.Has(FaultMode::CapabilitiesFail)) throw Failure{E_FAIL, "The simulated provider failed"};
        if (pTicket != nullptr) ticket = ParseOwnTicket(ticketBytes, configuration, "Print ticket", call);
    } catch (const Failure& failure) {
        return error.Fail(failure);
    }
    const Device& device = configuration.device;
    const Element& selected = pTicket == nullptr ? device.defaultTicket : ticket.root;
    const ValidatedTicket validated =
        MergeAndValidate(device, configuration.behaviour, selected, nullptr, kPTJobScope);
    Element capabilities = CapabilitiesFor(device, configuration.behaviour, validated.ticket);
    SpoilCapabilities(faults, capabilities);
    const std::string bytes =
        Serialize(capabilities, configuration.behaviour, {device.privateUris, ticket.prefixes});
    if (configuration.recordTickets) call.output = DocumentText(bytes);
    {
        const StreamTime time(call);
        hr = WriteAll(pCapabilities, bytes);
    }
    return FAILED(hr) ? hr : error.Succeed(S_OK);
}

}  // namespace devkit::prntvpt
