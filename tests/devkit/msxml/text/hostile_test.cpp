#include <chrono>
#include <random>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml::tests {
namespace {

constexpr std::string_view kSample =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?><!--top-->"
    "<psf:PrintTicket xmlns:psf=\"urn:f\" xmlns:psk='urn:k' version=\"1\" xmlns=\"urn:d\">"
    "<psf:Feature name=\"psk:A&amp;B\"><psf:Option name=\"psk:\xC3\xA4\xE2\x82\xAC\"/>"
    "<![CDATA[<raw>]]><?target data?><psf:Value xml:space=\"preserve\"> 1 &#x20AC;&lt; "
    "</psf:Value></psf:Feature>"
    "<none xmlns=\"\" a='1' b=\"2\"/></psf:PrintTicket><!--end-->";

HRESULT LoadBytes(const DocumentPtr& pDocument, std::string_view bytes) {
    return LoadObject(pDocument, StreamOf(bytes).Get());
}

// What any load must leave: a document that serialises and loads again to the same, or an empty one with an
// error.
void ExpectSound(const DocumentPtr& pDocument, HRESULT loaded) {
    if (loaded == S_OK) {
        ASSERT_TRUE(RootOf(pDocument));
        const std::wstring xml = XmlOf(pDocument.Get());
        const DocumentPtr pAgain = NewDocument(Maker::Kit);
        ASSERT_EQ(S_OK, LoadText(pAgain, xml)) << xml;
        ASSERT_EQ(xml, XmlOf(pAgain.Get()));
    } else {
        ASSERT_EQ(S_FALSE, loaded);
        ASSERT_TRUE(FAILED(ErrorCode(pDocument)));
        ASSERT_FALSE(RootOf(pDocument));
    }
}

using Hostile = KitDom;

TEST_F(Hostile, TruncatedAtEveryByte) {
    const DocumentPtr pDocument = New();
    ASSERT_EQ(S_OK, LoadBytes(pDocument, kSample));
    const std::size_t lastOfRoot = kSample.find("</psf:PrintTicket>") + 18;
    for (std::size_t size = 0; size < kSample.size(); ++size) {
        const HRESULT result = LoadBytes(pDocument, kSample.substr(0, size));
        EXPECT_EQ(size == lastOfRoot ? S_OK : S_FALSE, result) << size;
        ExpectSound(pDocument, result);
    }
}

TEST_F(Hostile, TruncatedAtEveryByteInUtf16) {
    std::string bytes = "\xFF\xFE";
    for (const char c : std::string_view("<?xml version=\"1.0\"?><a b=\"1\"><c>text</c></a>"))
        bytes.append({c, '\0'});
    const DocumentPtr pDocument = New();
    ASSERT_EQ(S_OK, LoadBytes(pDocument, bytes));
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const HRESULT result = LoadBytes(pDocument, std::string_view(bytes).substr(0, size));
        EXPECT_EQ(S_FALSE, result) << size;
        ExpectSound(pDocument, result);
    }
}

TEST_F(Hostile, EveryByteReplacedByEachOfAFew) {
    const DocumentPtr pDocument = New();
    for (std::size_t i = 0; i < kSample.size(); ++i) {
        for (const char c : {'\0', '\x01', '<', '>', '&', '"', ' ', ':', '\x80', '\xFF'}) {
            std::string bytes(kSample);
            bytes[i] = c;
            ExpectSound(pDocument, LoadBytes(pDocument, bytes));
        }
    }
}

TEST_F(Hostile, RandomMutations) {
    std::mt19937 random(20240611);
    const DocumentPtr pDocument = New();
    int loaded = 0;
    for (int round = 0; round < 4000; ++round) {
        std::string bytes(kSample);
        for (unsigned change = random() % 4 + 1; change != 0; --change) {
            const std::size_t place = random() % bytes.size();
            switch (random() % 4) {
                case 0:
                    bytes[place] = static_cast<char>(random() % 256);
                    break;
                case 1:
                    bytes.erase(place, random() % 8);
                    break;
                case 2:
                    bytes.insert(place, kSample.substr(random() % kSample.size(), random() % 16));
                    break;
                default:
                    bytes.insert(place, 1, "<>&;:'\"/!?[]= x"[random() % 15]);
                    break;
            }
            if (bytes.empty()) bytes = "<";
        }
        const HRESULT result = LoadBytes(pDocument, bytes);
        if (result == S_OK) ++loaded;
        ExpectSound(pDocument, result);
    }
    EXPECT_GT(loaded, 0);
    EXPECT_LT(loaded, 4000);
}

TEST_F(Hostile, ADepthBombFailsAtTheLimit) {
    const DocumentPtr pDocument = New();
    std::string bomb;
    for (int i = 0; i < 1000000; ++i) bomb += "<a>";
    EXPECT_EQ(S_FALSE, LoadBytes(pDocument, bomb));
    EXPECT_EQ(Hresult(XmlElementDepth), ErrorCode(pDocument));
    EXPECT_FALSE(RootOf(pDocument));
}

TEST_F(Hostile, AnEntityBombIsRefusedOrNotExpanded) {
    const std::wstring bomb =
        L"<!DOCTYPE a [<!ENTITY e0 \"xxxxxxxxxx\"><!ENTITY e1 \"&e0;&e0;&e0;&e0;&e0;&e0;&e0;&e0;&e0;&e0;\">"
        L"<!ENTITY e2 \"&e1;&e1;&e1;&e1;&e1;&e1;&e1;&e1;&e1;&e1;\"><!ENTITY e3 "
        L"\"&e2;&e2;&e2;&e2;&e2;&e2;&e2;&e2;\">]>"
        L"<a>&e3;</a>";
    const DocumentPtr pDocument = New();
    EXPECT_EQ(S_FALSE, LoadText(pDocument, bomb));
    EXPECT_EQ(Hresult(XmlDtdProhibited), ErrorCode(pDocument));
    VARIANT no;
    VariantInit(&no);
    no.vt = VT_BOOL;
    ASSERT_EQ(S_OK, pDocument->setProperty(Bstr(L"ProhibitDTD").Get(), no));
    EXPECT_EQ(S_FALSE, LoadText(pDocument, bomb));
    EXPECT_EQ(Hresult(XmlEntityUndefined), ErrorCode(pDocument));
}

TEST_F(Hostile, NothingOutsideIsReadForADoctype) {
    const DocumentPtr pDocument = New();
    VARIANT no;
    VariantInit(&no);
    no.vt = VT_BOOL;
    ASSERT_EQ(S_OK, pDocument->setProperty(Bstr(L"ProhibitDTD").Get(), no));
    ASSERT_EQ(S_OK, pDocument->put_resolveExternals(VARIANT_TRUE));
    EXPECT_EQ(S_OK, LoadText(pDocument, L"<!DOCTYPE a SYSTEM \"C:\\windows\\win.ini\"><a/>"));
    EXPECT_EQ(S_FALSE,
              LoadText(pDocument, L"<!DOCTYPE a [<!ENTITY e SYSTEM \"C:\\windows\\win.ini\">]><a>&e;</a>"));
    EXPECT_EQ(S_FALSE,
              LoadText(pDocument, L"<!DOCTYPE a [<!ENTITY % e SYSTEM \"C:\\windows\\win.ini\">%e;]><a/>"));
}

TEST_F(Hostile, ManyDeclarationsStayCheap) {
    std::string text = "<a";
    for (int i = 0; i < 2000; ++i)
        text += " xmlns:p" + std::to_string(i) + "=\"urn:" + std::to_string(i) + "\"";
    text += ">";
    for (int i = 0; i < 20000; ++i) text += "<p0:b/>";
    text += "</a>";
    const DocumentPtr pDocument = New();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(S_OK, LoadBytes(pDocument, text));
    EXPECT_EQ(text + "\r\n", Saved(pDocument));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(Hostile, ARandomSequenceOfEditsKeepsTheTreeSound) {
    std::mt19937 random(7);
    const DocumentPtr documents[] = {From(L"<r/>"), From(L"<p:r xmlns:p=\"urn:p\"/>")};
    std::vector<NodePtr> pool;
    const auto any = [&]() -> NodePtr {
        if (pool.empty() || random() % 8 == 0) return NodePtr(RootOf(documents[random() % 2]).Get());
        return pool[random() % pool.size()];
    };
    for (int step = 0; step < 20000; ++step) {
        for (const DocumentPtr& pEmpty : documents) {
            if (RootOf(pEmpty)) continue;
            ASSERT_EQ(S_OK, LoadText(pEmpty, L"<p:r xmlns:p=\"urn:p\"/>"));
        }
        const DocumentPtr& pDocument = documents[random() % 2];
        const NodePtr pNode = any();
        switch (random() % 9) {
            case 0:
                pool.push_back(
                    MakeNode(pDocument, NODE_ELEMENT, L"p:e", L"urn:" + std::to_wstring(random() % 3)));
                break;
            case 1:
                pool.push_back(MakeNode(pDocument, random() % 2 ? NODE_TEXT : NODE_COMMENT, L""));
                break;
            case 2:
            case 3:
                pNode->appendChild(any().Get(), nullptr);
                break;
            case 4: {
                NodePtr pParent;
                if (pNode->get_parentNode(pParent.Put()) == S_OK) pParent->removeChild(pNode.Get(), nullptr);
                break;
            }
            case 5: {
                const NodePtr pBefore = any();
                pNode->insertBefore(any().Get(), Variant(pBefore.Get()).Get(), nullptr);
                break;
            }
            case 6: {
                NodePtr pClone;
                if (pNode->cloneNode(VARIANT_TRUE, pClone.Put()) == S_OK) pool.push_back(pClone);
                break;
            }
            case 7: {
                ElementPtr pElement;
                if (pNode.QueryTo(pElement) != S_OK) break;
                const std::wstring name = random() % 2 ? L"xmlns:p" : L"p:x";
                const std::wstring value = L"urn:" + std::to_wstring(random() % 3);
                pElement->setAttribute(Bstr(name).Get(), Variant(value).Get());
                break;
            }
            default:
                static_cast<void>(FindNames(pNode.Get(), L"descendant-or-self::*[@*]"));
                break;
        }
        while (pool.size() > 60) pool.erase(pool.begin() + static_cast<long>(random() % pool.size()));
        if (step % 500 == 0) pool.clear();
        if (step % 50 != 0) continue;
        for (const DocumentPtr& pSound : documents) {
            if (!RootOf(pSound)) continue;
            const std::wstring xml = XmlOf(pSound.Get());
            const DocumentPtr pAgain = New();
            ASSERT_EQ(S_OK, pAgain->setProperty(Bstr(L"MaxElementDepth").Get(), Variant(LONG{0}).Get()));
            ASSERT_EQ(S_OK, LoadText(pAgain, xml)) << xml;
        }
        if (Saved(documents[0]).size() + Saved(documents[1]).size() > 100000) {
            for (const DocumentPtr& pLarge : documents) ASSERT_EQ(S_OK, LoadText(pLarge, L"<r/>"));
        }
    }
}

}  // namespace
}  // namespace devkit::msxml::tests
