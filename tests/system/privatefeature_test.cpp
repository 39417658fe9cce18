#include "filtertest.h"

namespace systemtest {
namespace {

using devkit::package::XpsDocument;
using devkit::prntvpt::ProviderCall;

class PrivateFeatureTest : public FilterTest {
  protected:
    // The sample with a job ticket that holds a private feature and a setting that the device refuses.
    static std::shared_ptr<const devkit::pipeline::JobInput> InputWithTicket(const std::string& features) {
        XpsDocument document = XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / "sample.xps");
        const std::string ticket =
            R"(<psf:PrintTicket xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework")"
            R"( xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords")"
            R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema")"
            R"( xmlns:acme="http://schemas.example.com/acme/v1" version="1">)" +
            features + "</psf:PrintTicket>";
        document.sequence.ticket =
            document.AddPart("/Metadata/private.xml", devkit::package::kPrintTicketContentType, ticket);
        return devkit::pipeline::MakeJobInput(std::make_shared<const XpsDocument>(std::move(document)));
    }

    // What the provider was given as the base of its first merge at the scope.
    static std::string FirstBase(const char* scope) {
        for (const ProviderCall& call : Provider().Report().calls) {
            if (call.function == "PTMergeAndValidatePrintTicket" && call.scope == scope) {
                return call.base.value_or("");
            }
        }
        return "";
    }
};

TEST_F(PrivateFeatureTest, APrivateFeatureThatValidationDroppedIsInTheNextBase) {
    Configure({"private=strict"});
    const auto outcome =
        Run(Options(),
            InputWithTicket(
                R"(<psf:Feature name="acme:JobStamp"><psf:Option name="acme:Secret"/></psf:Feature>)"));
    EXPECT_EQ(S_OK, outcome.result);
    ExpectNothingLeft(outcome);

    const std::string base = FirstBase("document");
    EXPECT_NE(std::string::npos, base.find("acme:JobStamp")) << base;
    EXPECT_NE(std::string::npos, base.find("acme:Secret"));
    EXPECT_NE(std::string::npos, base.find("http://schemas.example.com/acme/v1"));
    EXPECT_NE(std::string::npos, base.find("krk:JobTeskType"));
}

TEST_F(PrivateFeatureTest, WhatValidationChangedKeepsTheValidatedValue) {
    Configure({"private=strict", "order=device"});
    // The device's copies end at 999.
    const auto outcome =
        Run(Options(),
            InputWithTicket(
                R"(<psf:ParameterInit name="psk:JobCopiesAllDocuments"><psf:Value xsi:type="xsd:integer">)"
                R"(5000</psf:Value></psf:ParameterInit>)"));
    EXPECT_EQ(S_OK, outcome.result);
    const std::string base = FirstBase("document");
    EXPECT_NE(std::string::npos, base.find(">999<")) << base;
    EXPECT_EQ(std::string::npos, base.find(">5000<"));
}

TEST_F(PrivateFeatureTest, EveryProviderCallIsMadeUnderTheUsersToken) {
    Configure();
    const auto outcome = Run(Options());
    EXPECT_EQ(S_OK, outcome.result);
    const auto report = Provider().Report();
    ASSERT_FALSE(report.calls.empty());
    for (const ProviderCall& call : report.calls) {
        EXPECT_TRUE(call.impersonating || call.function == "PTCloseProvider") << call.function;
    }
}

}  // namespace
}  // namespace systemtest
