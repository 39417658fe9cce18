#include "devkit/filterhost/filecheck.h"

#include <gtest/gtest.h>

#include <fstream>

#include "devkit/common/file.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/program.h"
#include "thrown.h"

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;

class FileCheck : public testing::Test {
  protected:
    void SetUp() override {
        m_folder = FreshFolder("filecheck");
        for (const char* const name : {"a.xps", "b.xps", "filter.dll", "user.xml"}) Make(name);
        m_settings.host.filters = {{"", m_folder / "filter.dll"}};
        m_settings.host.userTicket = m_folder / "user.xml";
        AddJob("a.xps", "out-a.xps");
        AddJob("b.xps", "out-b.xps");
    }
    void Make(const Path& name) const { std::ofstream(m_folder / name) << "x"; }
    void AddJob(const Path& input, const Path& output) {
        m_settings.jobs.push_back({m_folder / input, "", m_folder / output, ""});
    }
    // The one line of the refusal, without the folder; empty when there is none.
    [[nodiscard]] std::string Refusal() const {
        return RefusalOf([&] { CheckFiles(m_settings); });
    }
    template <typename Check>
    [[nodiscard]] std::string RefusalOf(const Check& check) const {
        std::string text = tests::MessageOf<UsageError>(check);
        const std::string folder = common::PathText(m_folder) + "\\";
        if (const std::size_t at = text.find(folder); at != std::string::npos) text.erase(at, folder.size());
        return text;
    }

    Path m_folder;
    RunSettings m_settings;
};

class FileCheckOfAValidation : public FileCheck {
  protected:
    void SetUp() override {
        FileCheck::SetUp();
        m_validation.host = m_settings.host;
        m_validation.documents = {m_folder / "a.xps"};
    }
    [[nodiscard]] std::string Refusal() const {
        return RefusalOf([&] { CheckFiles(m_validation, m_folder / "filterhost.json"); });
    }

    ValidateSettings m_validation;
};

TEST_F(FileCheck, FindsNothingWrongWithFilesThatAreDistinct) {
    m_settings.json = m_folder / "report.json";
    EXPECT_EQ("", Refusal());
    // What a run wrote the last time may be written again.
    for (const char* const name : {"out-a.xps", "out-b.xps", "report.json"}) Make(name);
    EXPECT_EQ("", Refusal());
}

TEST_F(FileCheck, AnOutputMayNotBeAnyInput) {
    m_settings.jobs[0].output = m_folder / "b.xps";
    EXPECT_EQ("the output would replace the input b.xps", Refusal());
}

TEST_F(FileCheck, AnotherSpellingIsNoOtherFile) {
    m_settings.jobs[0].output = m_folder / "." / "B.XPS";
    EXPECT_EQ("the output would replace the input b.xps", Refusal());
    m_settings.jobs[0].output = m_folder / "out" / ".." / "b.xps";
    std::filesystem::create_directory(m_folder / "out");
    EXPECT_EQ("the output would replace the input b.xps", Refusal());
}

TEST_F(FileCheck, AHardLinkIsNoOtherFile) {
    std::filesystem::create_hard_link(m_folder / "b.xps", m_folder / "link.xps");
    m_settings.jobs[0].output = m_folder / "link.xps";
    EXPECT_EQ("the output would replace the input b.xps", Refusal());
}

TEST_F(FileCheck, AnOutputMayNotBeTheUsersTicketOrTheFilter) {
    m_settings.jobs[0].output = m_folder / "user.xml";
    EXPECT_EQ("the output would replace the user's ticket user.xml", Refusal());
    m_settings.jobs[0].output = m_folder / "filter.dll";
    EXPECT_EQ("the output would replace the filter filter.dll", Refusal());
}

TEST_F(FileCheck, AnOutputMayNotBeAFileOfTheDeviceModel) {
    const Path model = m_folder / "model";
    std::filesystem::copy(Path(SOURCE_FOLDER) / "devkit" / "devices" / "longedge", model);
    m_settings.host.device = common::PathText(model);
    EXPECT_EQ("", Refusal());
    m_settings.jobs[0].output = model / "default-ticket.xml";
    EXPECT_EQ("the output would replace the device model's model\\default-ticket.xml", Refusal());
}

TEST_F(FileCheck, TheReportMayNotBeAnInputOrAnOutput) {
    m_settings.json = m_folder / "a.xps";
    EXPECT_EQ("--json would replace the input a.xps", Refusal());
    // Neither of them is there yet.
    m_settings.json = m_folder / "OUT-A.xps";
    EXPECT_EQ("--json would replace the output out-a.xps", Refusal());
    m_settings.json = m_folder / "report.json";
    m_settings.junit = m_folder / "REPORT.json";
    EXPECT_TRUE(Refusal().starts_with("--junit would replace --json")) << Refusal();
    m_settings.junit.reset();
    m_settings.trace = m_folder / "Report.json";
    EXPECT_TRUE(Refusal().starts_with("--trace would replace --json")) << Refusal();
}

TEST_F(FileCheck, WhatTheBagIsToHoldMayNotBeReplaced) {
    m_settings.host.deviceCapabilities = m_folder / "device.xml";
    m_settings.json = m_folder / "device.xml";
    EXPECT_EQ("--json would replace the device capabilities device.xml", Refusal());
}

TEST_F(FileCheck, TwoOutputsMayNotBeOneFile) {
    m_settings.jobs[1].output = m_folder / "Out-a.xps";
    EXPECT_EQ("the output would replace the output out-a.xps", Refusal());
}

TEST_F(FileCheckOfAValidation, ReportsOfTheirOwnReplaceNothing) {
    m_validation.json = m_folder / "report.json";
    m_validation.report = m_folder / "report.html";
    EXPECT_EQ("", Refusal());
}

TEST_F(FileCheckOfAValidation, NoReportReplacesWhatIsRead) {
    m_validation.json = m_folder / "A.xps";
    EXPECT_EQ("--json would replace the document a.xps", Refusal());
    m_validation.json = m_folder / "FilterHost.json";
    EXPECT_EQ("--json would replace the configuration filterhost.json", Refusal());
    m_validation.json.reset();
    m_validation.junit = m_folder / "user.xml";
    EXPECT_EQ("--junit would replace the user's ticket user.xml", Refusal());
    m_validation.junit.reset();
    m_validation.report = m_folder / "filter.dll";
    EXPECT_EQ("--report would replace the filter filter.dll", Refusal());
    m_validation.report = m_folder / "page.html";
    m_validation.trace = m_folder / "PAGE.html";
    EXPECT_TRUE(Refusal().starts_with("--trace would replace --report")) << Refusal();
}

TEST_F(FileCheck, TheSummaryOfFuzzingReplacesNothingThatIsRead) {
    FuzzSettings fuzzing;
    fuzzing.host = m_settings.host;
    fuzzing.corpus = m_folder / "corpus";
    std::filesystem::create_directories(m_folder / "corpus" / "of");
    Make("corpus/of/document.xps");
    const auto refusal = [&] { return RefusalOf([&] { CheckFiles(fuzzing); }); };
    fuzzing.json = m_folder / "corpus" / "summary.json";
    EXPECT_EQ("", refusal());
    fuzzing.json = m_folder / "corpus" / "of" / "Document.xps";
    EXPECT_EQ("--json would replace the document corpus\\of\\document.xps", refusal());
    fuzzing.json = m_folder / "filter.dll";
    EXPECT_EQ("--json would replace the filter filter.dll", refusal());
    fuzzing.json = fuzzing.chains = m_folder / "chains.txt";
    Make("chains.txt");
    EXPECT_EQ("--json would replace the list of cases chains.txt", refusal());
}

TEST_F(FileCheck, WithoutAnOutputThereIsNothingToReplace) {
    for (Job& job : m_settings.jobs) job.output.reset();
    EXPECT_EQ("", Refusal());
}

}  // namespace
}  // namespace devkit::filterhost
