#include "devkit/pipeline/pipelineconfig.h"

#include <gtest/gtest.h>

#include "devkit/common/error.h"
#include "thrown.h"

namespace devkit::pipeline {
namespace {

constexpr const char* kClass = "{8A9F4692-E8BA-4533-B859-E56B1EA16586}";
constexpr CLSID kClassId = {0x8a9f4692, 0xe8ba, 0x4533, {0xb8, 0x59, 0xe5, 0x6b, 0x1e, 0xa1, 0x65, 0x86}};

std::vector<ConfiguredFilter> Read(const std::string& filters) {
    return ReadPipelineConfig("<?xml version=\"1.0\" encoding=\"utf-8\"?><Filters>" + filters + "</Filters>",
                              "config.xml");
}

std::string ConfigRefusal(const std::string& markup) {
    return tests::MessageOf<common::Error>(
        [&] { static_cast<void>(ReadPipelineConfig(markup, "config.xml")); });
}

std::string Filter(const std::string& inside) {
    return "<Filters><Filter dll='a.dll' clsid='" + std::string(kClass) + "'>" + inside +
           "</Filter></Filters>";
}

TEST(PipelineConfig, NamesTheFiltersInOrderWithWhatTheyReadAndWrite) {
    const auto filters = Read(
        "<!-- two --><Filter dll=\"one.dll\" clsid=\"{8A9F4692-E8BA-4533-B859-E56B1EA16586}\" name=\"First\">"
        "<Input guid=\"{b8cf8530-5562-47c4-ab67-b1f69ecf961e}\" comment=\"IID_IXpsDocumentProvider\"/>"
        "<Output guid=\"{4368d8a2-4181-4a9f-b295-3d9a38bb9ba0}\" "
        "comment=\"IID_IXpsDocumentConsumer\"/></Filter>"
        "<Filter dll=\"two.dll\" clsid=\"8a9f4692-e8ba-4533-b859-e56b1ea16586\">"
        "<Input guid=\"{4d47a67c-66cc-4430-850e-daf466fe5bc4}\"/>"
        "<Output guid=\"65BB7F1B-371E-4571-8AC7-912F510C1A38\"/></Filter>");
    ASSERT_EQ(2U, filters.size());
    EXPECT_EQ("First", filters[0].name);
    EXPECT_EQ("one.dll", filters[0].dll);
    EXPECT_EQ(kClassId, filters[0].clsid);
    EXPECT_EQ(DataKind::Xps, filters[0].input);
    EXPECT_EQ(DataKind::Xps, filters[0].output);
    EXPECT_EQ("two.dll", filters[1].name);
    EXPECT_EQ(kClassId, filters[1].clsid);
    EXPECT_EQ(DataKind::Stream, filters[1].input);
    EXPECT_EQ(DataKind::Stream, filters[1].output);
}

TEST(PipelineConfig, WhatIsNoneIsRefusedWithAReason) {
    EXPECT_EQ("is no pipeline configuration, config.xml", ConfigRefusal("<Other/>"));
    EXPECT_EQ("is not well-formed XML (line 1: The markup ends inside the element Filters), config.xml",
              ConfigRefusal("<Filters>"));
    EXPECT_EQ("names no filter, config.xml", ConfigRefusal("<Filters/>"));
    EXPECT_EQ("has a filter without a dll, config.xml",
              ConfigRefusal("<Filters><Filter clsid='x'/></Filters>"));
    EXPECT_EQ("has no class id for a.dll, config.xml",
              ConfigRefusal("<Filters><Filter dll='a.dll' clsid='x'/></Filters>"));
    EXPECT_EQ("has an Input outside of a filter, config.xml",
              ConfigRefusal("<Filters><Input guid=''/></Filters>"));
    EXPECT_EQ("gives a.dll an Output that no filter has: {b8cf8530-5562-47c4-ab67-b1f69ecf961e}, config.xml",
              ConfigRefusal(Filter("<Output guid='{b8cf8530-5562-47c4-ab67-b1f69ecf961e}'/>")));
    EXPECT_EQ("gives a.dll an Input that no filter has: , config.xml", ConfigRefusal(Filter("<Input/>")));
}

}  // namespace
}  // namespace devkit::pipeline
