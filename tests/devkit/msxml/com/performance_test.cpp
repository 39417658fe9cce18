#include <chrono>

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

using Clock = std::chrono::steady_clock;

// A ticket with that many features, of ten nodes each.
std::wstring Ticket(int features) {
    std::wstring text = L"<psf:PrintTicket xmlns:psf=\"urn:f\" xmlns:psk=\"urn:k\">";
    for (int i = 0; i < features; ++i) {
        text += L"<psf:Feature name=\"psk:F" + std::to_wstring(i) +
                L"\"><psf:Option name=\"psk:O\"><psf:ScoredProperty name=\"psk:P\"><psf:Value>1</psf:Value>"
                L"</psf:ScoredProperty></psf:Option></psf:Feature>";
    }
    return text + L"</psf:PrintTicket>";
}

// Fetches each child of the root element by its index.
Clock::duration TimeOfWalk(const DocumentPtr& pDocument, long expected) {
    const ListPtr pList = ChildrenOf(RootOf(pDocument).Get());
    const auto start = Clock::now();
    long count = 0;
    for (NodePtr pNode; pList->get_item(count, pNode.Put()) == S_OK;) ++count;
    EXPECT_EQ(expected, count);
    return Clock::now() - start;
}

using Performance = KitDom;

TEST_F(Performance, AWalkByIndexGrowsWithTheLengthOnly) {
    const DocumentPtr pSmall = From(Ticket(1000));
    const DocumentPtr pLarge = From(Ticket(16000));
    // A walk that starts from the first child each time would take 256 times as long. A busy machine may
    // spoil a measurement or two.
    bool isProportional = false;
    for (int attempt = 0; attempt < 10 && !isProportional; ++attempt) {
        const auto few = TimeOfWalk(pSmall, 1000) + std::chrono::microseconds(100);
        isProportional = TimeOfWalk(pLarge, 16000) < 64 * few;
    }
    EXPECT_TRUE(isProportional);
}

TEST_F(Performance, ComparingAllPairsOfAThousandFeaturesTakesSeconds) {
    const DocumentPtr pBase = From(Ticket(1000));
    const DocumentPtr pTarget = From(Ticket(1000));
    const ListPtr pBaseList = ChildrenOf(RootOf(pBase).Get());
    const ListPtr pTargetList = ChildrenOf(RootOf(pTarget).Get());
    const auto start = Clock::now();
    long same = 0;
    for (long t = 0; t < 1000; ++t) {
        NodePtr pTargetNode;
        ASSERT_EQ(S_OK, pTargetList->get_item(t, pTargetNode.Put()));
        for (long b = 0; b < 1000; ++b) {
            NodePtr pBaseNode;
            ASSERT_EQ(S_OK, pBaseList->get_item(b, pBaseNode.Put()));
            if (t != b) continue;
            EXPECT_EQ(TextOf(AttributeOf(pBaseNode.Get(), L"name").Get()),
                      TextOf(AttributeOf(pTargetNode.Get(), L"name").Get()));
            ++same;
        }
    }
    EXPECT_EQ(1000, same);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
}

TEST_F(Performance, ManySelectionsShareOneViewOfTheTree) {
    const DocumentPtr pDocument = From(Ticket(1000));
    BindPrefixes(pDocument, L"xmlns:psf='urn:f'");
    const NodePtr pFeature = Find(pDocument.Get(), L"//psf:Feature[@name = \"psk:F500\"]");
    const auto start = Clock::now();
    for (int i = 0; i < 20000; ++i) {
        NodePtr pOption;
        ASSERT_EQ(S_OK, pFeature->selectSingleNode(Bstr(L"psf:Option").Get(), pOption.Put()));
    }
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
}

TEST_F(Performance, APipelineOfLoadsAndSavesOfALargeTicketTakesSeconds) {
    const DocumentPtr pDocument = From(Ticket(10000));
    const auto start = Clock::now();
    const DocumentPtr pCopy = New();
    ASSERT_EQ(S_OK, LoadObject(pCopy, pDocument.Get()));
    EXPECT_EQ(Saved(pCopy), Saved(pDocument));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace devkit::msxml::tests
