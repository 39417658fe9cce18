#include "devkit/msxml/processinginstruction.h"

#include "devkit/msxml/domundertest.h"
#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml::tests {
namespace {

using InstructionPtr = ComPtr<IXMLDOMProcessingInstruction>;

class Instruction : public Conformance {};
RUN_FOR_BOTH_MAKERS(Instruction);

TEST_P(Instruction, HasTargetAndData) {
    const DocumentPtr pDocument = From(L"<?p some data?><a/>");
    InstructionPtr pInstruction;
    ASSERT_EQ(ChildAt(pDocument.Get(), 0).QueryTo(pInstruction), S_OK);
    Bstr text;
    ASSERT_EQ(pInstruction->get_target(text.Put()), S_OK);
    EXPECT_EQ(text.View(), L"p");
    ASSERT_EQ(pInstruction->get_data(text.Put()), S_OK);
    EXPECT_EQ(text.View(), L"some data");
    ASSERT_EQ(pInstruction->put_data(Bstr(L"other").Get()), S_OK);
    EXPECT_EQ(XmlOf(pInstruction.Get()), L"<?p other?>");
    EXPECT_EQ(BaseNameOf(pInstruction.Get()), L"p");
    EXPECT_EQ(UriOf(pInstruction.Get()), L"<none>");
}

TEST_P(Instruction, TheDeclarationIsOneWithAttributes) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: only a declaration that was created has attributes";
    const DocumentPtr pDocument = From(L"<?xml version='1.0' encoding='utf-8'?><a/>");
    const NodePtr pDeclaration = ChildAt(pDocument.Get(), 0);
    EXPECT_EQ(NameOf(pDeclaration.Get()), L"xml");
    const MapPtr pMap = AttributesOf(pDeclaration.Get());
    NodePtr pAttribute;
    ASSERT_EQ(pMap->getNamedItem(Bstr(L"version").Get(), pAttribute.Put()), S_OK);
    EXPECT_EQ(ValueOf(pAttribute.Get()), L"1.0");
    ASSERT_EQ(pMap->getNamedItem(Bstr(L"encoding").Get(), pAttribute.Put()), S_OK);
    EXPECT_EQ(ValueOf(pAttribute.Get()), L"utf-8");
    EXPECT_EQ(pMap->getNamedItem(Bstr(L"name").Get(), pAttribute.Put()), S_FALSE);
}

using KitInstruction = KitDom;

TEST_F(KitInstruction, TheDeclarationsDataHasOneForm) {
    const DocumentPtr pDocument = From(L"<?xml  version = '1.0'\tencoding='utf-8'  standalone='no' ?><a/>");
    EXPECT_EQ(ValueOf(ChildAt(pDocument.Get(), 0).Get()),
              L"version=\"1.0\" encoding=\"utf-8\" standalone=\"no\"");
}

TEST_F(KitInstruction, TheDeclarationsAttributesFollowItsData) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>");
    InstructionPtr pDeclaration;
    ASSERT_EQ(ChildAt(pDocument.Get(), 0).QueryTo(pDeclaration), S_OK);
    ASSERT_EQ(pDeclaration->put_data(Bstr(L"version='1.0' standalone='yes'").Get()), S_OK);
    EXPECT_EQ(NamesByNextNode(AttributesOf(pDeclaration.Get())),
              (std::vector<std::wstring>{L"version", L"standalone"}));
    EXPECT_EQ(pDeclaration->put_data(Bstr(L"version='2.0'").Get()), Hresult(XmlBadDeclaration));
    EXPECT_EQ(ValueOf(pDeclaration.Get()), L"version=\"1.0\" standalone=\"yes\"");
}

TEST_F(KitInstruction, TheDeclarationsAttributesAreReadOnly) {
    const DocumentPtr pDocument = From(L"<?xml version=\"1.0\"?><a/>");
    const NodePtr pDeclaration = ChildAt(pDocument.Get(), 0);
    const MapPtr pMap = AttributesOf(pDeclaration.Get());
    EXPECT_EQ(AttributeOf(pDeclaration.Get(), L"version")->put_text(Bstr(L"2.0").Get()), E_FAIL);
    EXPECT_EQ(pMap->setNamedItem(MakeNode(pDocument, NODE_ATTRIBUTE, L"b").Get(), nullptr), E_FAIL);
    EXPECT_EQ(pMap->removeNamedItem(Bstr(L"version").Get(), nullptr), E_FAIL);
    EXPECT_EQ(Saved(pDocument), "<?xml version=\"1.0\"?>\r\n<a/>\r\n");
}

TEST_F(KitInstruction, AMalformedDeclarationIsNotMade) {
    const DocumentPtr pDocument = New();
    for (const wchar_t* data :
         {L"", L"version", L"version=1.0", L"version='1.0", L"version='1.0'encoding='utf-8'",
          L"encoding='utf-8'", L"version='1.0' encoding=''", L"version='1.0' encoding='1'",
          L"version='1.0' encoding='a b'", L"version='1.0' standalone='maybe'",
          L"version='1.0' standalone='yes' encoding='utf-8'", L"version='1.0' other='1'"}) {
        InstructionPtr pNode;
        EXPECT_EQ(pDocument->createProcessingInstruction(Bstr(L"xml").Get(), Bstr(data).Get(), pNode.Put()),
                  Hresult(XmlBadDeclaration))
            << data;
        EXPECT_FALSE(pNode);
    }
}

TEST_F(KitInstruction, ABadTargetIsRefused) {
    const DocumentPtr pDocument = New();
    InstructionPtr pNode;
    EXPECT_EQ(pDocument->createProcessingInstruction(Bstr(L"p:q").Get(), nullptr, pNode.Put()),
              Hresult(XmlBadNameChar));
    EXPECT_EQ(pDocument->createProcessingInstruction(nullptr, nullptr, pNode.Put()), E_FAIL);
}

}  // namespace
}  // namespace devkit::msxml::tests
