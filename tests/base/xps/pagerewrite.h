#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/xps/fixedpagecontenthandler.h"
#include "base/xps/fixedpagesaxconvertor.h"
#include "base/xps/memorystreams.h"

namespace base::xps {

// A page in memory, rewritten as the filter rewrites it: turned by 270 degrees unless a test says otherwise.
class MemoryPage : public FixedPageSource {
  public:
    explicit MemoryPage(std::string markup, float angle = 270, float scale = 1)
        : input(std::move(markup)), m_angle(angle), m_scale(scale) {}

    void Validate() override { FixedPageSaxConvertor().Convert(*this); }
    platform::ComPtr<IPrintReadStream> GetPageReadStream() override {
        return platform::ComPtr<IPrintReadStream>(&input);
    }
    platform::ComPtr<IPrintWriteStream> GetPageWriteStream() override {
        return platform::ComPtr<IPrintWriteStream>(&output);
    }
    platform::ComPtr<ISAXContentHandler> CreateContentHandler(std::ostream& sink) override {
        return platform::ComPtr<ISAXContentHandler>::Adopt(
            new FixedPageContentHandler(sink, m_angle, m_scale));
    }

    MemoryReadStream input;
    MemoryWriteStream output;

  private:
    float m_angle;
    float m_scale;
};

inline constexpr std::string_view kDeclaration = R"(<?xml version="1.0" encoding="utf-8"?>)";

// The new markup without its declaration, which is checked here once for all.
inline std::string Rewritten(std::string markup, float angle = 270, float scale = 1) {
    MemoryPage page(std::move(markup), angle, scale);
    FixedPageSaxConvertor().Convert(page);
    EXPECT_EQ(1, page.output.closes);
    EXPECT_EQ(0u, page.input.position);
    EXPECT_EQ(1u, page.input.References());
    EXPECT_EQ(1u, page.output.References());
    EXPECT_TRUE(page.output.content.starts_with(kDeclaration));
    return page.output.content.substr(std::min(kDeclaration.size(), page.output.content.size()));
}

// What stands inside the Canvas when the markup stands inside a page without further attributes.
inline std::string RewrittenContent(const std::string& content) {
    constexpr std::string_view kHead =
        R"(<FixedPage Height="816.00" Width="1056.00"><Canvas RenderTransform="0.00,-1.00,1.00,0.00,0.00,816.00">)";
    constexpr std::string_view kTail = "</Canvas></FixedPage>";
    const std::string page = Rewritten(R"(<FixedPage Width="816" Height="1056">)" + content + "</FixedPage>");
    EXPECT_TRUE(page.starts_with(kHead)) << page;
    EXPECT_TRUE(page.ends_with(kTail)) << page;
    if (page.size() < kHead.size() + kTail.size()) return page;
    return page.substr(kHead.size(), page.size() - kHead.size() - kTail.size());
}

}  // namespace base::xps
