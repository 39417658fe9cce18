#include "devkit/fuzz/environment.h"

#include <array>
#include <string_view>

#include "devkit/common/hresult.h"
#include "devkit/fuzz/hostilevalues.h"
#include "devkit/fuzz/markupmutator.h"

namespace devkit::fuzz {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::array kDevices{"longedge"sv, "shortedge"sv, "asymmetric"sv, "simprinter-us"sv};

constexpr std::array kProviderSwitches{
    "private=strict"sv,      "private=all"sv,        "strict=options"sv,      "duplicates=first"sv,
    "mixed-values=refuse"sv, "orphans=prune"sv,      "fallback=nearest"sv,    "option-props=keep-perfect"sv,
    "drop-is-conflict=1"sv,  "prefixes=mangled"sv,   "prefixes=default-ns"sv, "prefixes=local"sv,
    "prefixes=collide"sv,    "order=input"sv,        "order=reversed"sv,      "encoding=utf8-bom"sv,
    "encoding=utf16le"sv,    "whitespace=pretty"sv,  "whitespace=comments"sv, "bins=document"sv,
    "bins=page"sv,           "no-scaling=1"sv,       "no-copies=1"sv,         "feed=property"sv,
    "feed=absent"sv,         "imageable=portrait"sv, "imageable=absent"sv,    "us=1"sv,
    "snapshot=1"sv,          "snapshot=100000"sv,    "private-size-names=1"sv};

// What goes wrong, and the code that the provider answers then, if it does.
struct ProviderFault {
    std::string_view mode;
    HRESULT code = S_OK;
};
constexpr std::array kFaults{ProviderFault{"open-denied", static_cast<HRESULT>(0x80070005L)},
                             ProviderFault{"open-gone", static_cast<HRESULT>(0x80070709L)},
                             ProviderFault{"open-rpc", static_cast<HRESULT>(0x800706BAL)},
                             ProviderFault{"merge-refuse-base", static_cast<HRESULT>(0x80040003L)},
                             ProviderFault{"merge-refuse-delta", static_cast<HRESULT>(0x80040005L)},
                             ProviderFault{"merge-fail", E_FAIL},
                             ProviderFault{"merge-oom", E_OUTOFMEMORY},
                             ProviderFault{"s-ok"},
                             ProviderFault{"conflict"},
                             ProviderFault{"conflict:PageMediaSize"},
                             ProviderFault{"conflict-silent"},
                             ProviderFault{"conflict-silent:PageMediaSize"},
                             ProviderFault{"out-empty"},
                             ProviderFault{"out-truncated"},
                             ProviderFault{"out-notxml"},
                             ProviderFault{"out-wrongroot"},
                             ProviderFault{"out-duplicate"},
                             ProviderFault{"out-missing:PageMediaSize"},
                             ProviderFault{"out-missing:PageOrientation"},
                             ProviderFault{"out-bad-value"},
                             ProviderFault{"out-rewound"},
                             ProviderFault{"out-shortwrite", STG_E_MEDIUMFULL},
                             ProviderFault{"caps-notimpl", E_NOTIMPL},
                             ProviderFault{"caps-fail", E_FAIL},
                             ProviderFault{"caps-noimageable"},
                             ProviderFault{"caps-zero-extent"},
                             ProviderFault{"bstr-null-on-error"},
                             ProviderFault{"bstr-on-success"}};
constexpr std::array kScopes{":job"sv, ":document"sv, ":page"sv};

// An object that refuses an interface is a part of another kind, and no failing call.
constexpr std::array kCalls{"GetXpsPart"sv,
                            "GetPrintTicket"sv,
                            "SetPrintTicket"sv,
                            "GetStream"sv,
                            "GetWriteStream"sv,
                            "ReadBytes"sv,
                            "WriteBytes"sv,
                            "Seek"sv,
                            "GetUri"sv,
                            "GetProperty"sv,
                            "GetString"sv,
                            "GetInt32"sv,
                            "GetNewEmptyPart"sv,
                            "SendXpsDocument"sv,
                            "SendFixedDocumentSequence"sv,
                            "SendFixedDocument"sv,
                            "SendFixedPage"sv,
                            "CloseSender"sv,
                            "RequestReader"sv,
                            "RequestWriter"sv,
                            "FilterFinished"sv,
                            "RequestShutdown"sv,

                            "GetPagePart"sv,
                            "SetPagePart"sv};
constexpr std::array<HRESULT, 6> kCodes{E_FAIL,    E_OUTOFMEMORY, E_UNEXPECTED,
                                        E_NOTIMPL, E_ABORT,       static_cast<HRESULT>(0x80070005L)};

constexpr std::array kPipelineSwitches{"short-reads=1"sv,       "short-reads=7"sv,
                                       "short-reads=4096"sv,    "short-writes=1"sv,
                                       "short-writes=7"sv,      "end-flag=alone"sv,
                                       "missing-ticket=null"sv, "ambiguous-document=on"sv,
                                       "apartment=single"sv,    "last-release=other-thread"sv,
                                       "reader=unknown"sv,      "reader=null"sv,
                                       "writer=unknown"sv,      "writer=null"sv};
constexpr std::array kAfterCancel{"after-cancel=fail"sv, "after-cancel=end"sv, "after-cancel=continue"sv};

constexpr std::array kBagEntries{"PrinterName"sv,
                                 "PerUserPrintTicket"sv,
                                 "PrinterHandle"sv,
                                 "UserSecurityToken"sv,
                                 "DriverPropertyBag"sv,
                                 "QueuePropertyBag"sv,
                                 "DriverMultiContentType"sv,
                                 "JobPrintTicket"sv,
                                 "PrintDeviceCapabilities"sv,
                                 "ProgressReport"sv};
constexpr std::array kDriverEntries{"KoraNsPrefix"sv, "KoraTeskType"sv, "DriverConfig"sv};

// "TYPE:VALUE" of any type.
std::string HostileValue(Random& random) {
    static constexpr std::array<std::string_view, 5> kInts{"0", "-1", "1", "2147483647", "-2147483648"};
    switch (random.Below(5)) {
        case 0:
            return "int:" + std::string(random.Pick(kInts));
        case 1:
            return "uint:4294967295";
        case 2:
            return random.OneIn(2) ? "bool:true" : "bool:false";
        default:
            return "string:" + HostileText(random);
    }
}

}  // namespace

std::string MutateProvider(Environment& environment, Random& random) {
    if (random.OneIn(4)) {
        environment.device = random.Pick(kDevices);
        return "device " + environment.device;
    }
    std::string text(random.OneIn(2) ? random.Pick(kProviderSwitches) : ""sv);
    if (text.empty()) {
        const ProviderFault& fault = random.Pick(kFaults);
        text = "fault=" + std::string(fault.mode);
        if (FAILED(fault.code)) environment.expectedCodes.push_back(fault.code);
        if (random.OneIn(2)) text += "@" + std::to_string(1 + random.Below(4));
        // Only merges have one.
        const bool isOfMerge = !fault.mode.starts_with("open-") && !fault.mode.starts_with("caps-");
        if (isOfMerge && random.OneIn(3)) text += random.Pick(kScopes);
    }
    environment.providerSwitches.push_back(text);
    return "provider " + text;
}

std::string MutatePipeline(Environment& environment, Random& random) {
    switch (random.Below(4)) {
        case 0:
            environment.pipelineSwitches.emplace_back(random.Pick(kPipelineSwitches));
            break;
        case 1:
            environment.cancelAt = static_cast<unsigned>(1 + random.Below(8));
            environment.pipelineSwitches.emplace_back(random.Pick(kAfterCancel));
            return "cancelled at " + std::to_string(environment.cancelAt);
        default: {
            const HRESULT code = random.Pick(kCodes);
            std::string text =
                "fail=" + std::string(random.Pick(kCalls)) + "@" + std::to_string(1 + random.Below(12));
            if (random.OneIn(3)) text += "+";
            environment.pipelineSwitches.push_back(text + "=" + common::HexOf(code));
            environment.expectedCodes.push_back(code);
        }
    }
    return "pipeline " + environment.pipelineSwitches.back();
}

std::string MutateProperties(Environment& environment, Random& random) {
    // The last one is that of a printer of another name.
    for (const HRESULT code : {DISP_E_TYPEMISMATCH, E_INVALIDARG, static_cast<HRESULT>(0x80070709L)})
        environment.expectedCodes.push_back(code);
    const bool isDriver = random.OneIn(2);
    const std::string name(isDriver ? random.Pick(kDriverEntries) : random.Pick(kBagEntries));
    (isDriver ? environment.driverValues : environment.properties)
        .push_back(name + "=" + HostileValue(random));
    return "another " + name;
}

std::string MutateUserTicket(Environment& environment, Random& random) {
    if (!environment.userTicket) environment.userTicket = UsualTicket();
    return MutateMarkup(*environment.userTicket, random) + " in the user's ticket";
}

std::string UsualTicket() {
    const auto feature = [](const std::string& name, const std::string& option) {
        return "<psf:Feature name=\"psk:" + name + "\"><psf:Option name=\"psk:" + option +
               "\"/></psf:Feature>";
    };
    return "<psf:PrintTicket xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/"
           "printschemaframework\" xmlns:psk=\"http://schemas.microsoft.com/windows/2003/08/printing/"
           "printschemakeywords\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" version=\"1\">" +
           feature("PageMediaSize", "ISOA4") + feature("PageOrientation", "Landscape") +
           feature("JobDuplexAllDocumentsContiguously", "TwoSidedLongEdge") +
           feature("JobInputBin", "AutoSelect") +
           "<psf:ParameterInit name=\"psk:JobCopiesAllDocuments\"><psf:Value "
           "xsi:type=\"xsd:integer\">2</psf:Value></psf:ParameterInit></psf:PrintTicket>";
}

}  // namespace devkit::fuzz
