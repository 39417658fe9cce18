#include "base/xps/printschema/schemabase.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "thrown.h"

namespace {

using base::xps::printschema::Qname;
using base::xps::printschema::SchemaBase;
using base::xps::printschema::SchemaNamespace;
using tests::Thrown;

class EmptyList : public SchemaBase {
  public:
    using SchemaBase::Search;
};

class MixedList : public SchemaBase {
  public:
    MixedList() {
        AddQname(SchemaNamespace::Private, L"Same");
        AddQname({SchemaNamespace::Keywords, L"Same"});
        AddQname(SchemaNamespace::Keywords, L"Same");
        AddQname(SchemaNamespace::Keywords, L"");
    }
};

TEST(Qname, IsOfTheFrameworkAndWithoutANameByDefault) {
    const Qname name;
    EXPECT_EQ(name.space, SchemaNamespace::Framework);
    EXPECT_EQ(name.localName, L"");
}

TEST(Qname, IsEqualWhenBothMembersAre) {
    const Qname name = {SchemaNamespace::Keywords, L"Tray1"};
    const Qname copy = name;
    EXPECT_EQ(copy, name);
    EXPECT_NE(name, (Qname{SchemaNamespace::Private, L"Tray1"}));
    EXPECT_NE(name, (Qname{SchemaNamespace::Keywords, L"tray1"}));
}

TEST(SchemaBase, GetNamespacesOnAListBuiltWithNoAddQnameThrowsALogicError) {
    EXPECT_EQ(Thrown<std::logic_error>([] { static_cast<void>(EmptyList().GetNamespaces()); }),
              "base/xps/printschema/schemabase.cpp(LINE) : "
              "namespaces should be initialized in constructor through AddQname().\n");
}

TEST(SchemaBase, AListWithoutNamesHasNone) {
    const EmptyList list;
    EXPECT_TRUE(list.GetQnames().empty());
    EXPECT_EQ(list.IndexOf(SchemaNamespace::Keywords, L"Same"), SchemaBase::NotFound);
    EXPECT_THROW(static_cast<void>(list.GetQname(0)), std::invalid_argument);
}

TEST(SchemaBase, NamesKeepTheirOrderAndNamespacesAreSorted) {
    const MixedList list;
    const std::vector<Qname> names = {{SchemaNamespace::Private, L"Same"},
                                      {SchemaNamespace::Keywords, L"Same"},
                                      {SchemaNamespace::Keywords, L"Same"},
                                      {SchemaNamespace::Keywords, L""}};
    EXPECT_EQ(list.GetQnames(), names);
    EXPECT_EQ(list.GetNamespaces(),
              (std::set<SchemaNamespace>{SchemaNamespace::Keywords, SchemaNamespace::Private}));
}

TEST(SchemaBase, TheFirstIndexOfANameInItsNamespaceIsFound) {
    const MixedList list;
    EXPECT_EQ(list.IndexOf({SchemaNamespace::Keywords, L"Same"}), 1U);
    EXPECT_EQ(list.IndexOf({SchemaNamespace::Private, L"Same"}), 0U);
    EXPECT_EQ(list.IndexOf(SchemaNamespace::Keywords, std::wstring(L"Same")), 1U);
    EXPECT_EQ(list.IndexOf(SchemaNamespace::Keywords, L""), 3U);
    EXPECT_EQ(list.IndexOf(SchemaNamespace::Framework, L"Same"), 0xFFFFFFFFU);
}

TEST(SchemaBase, ATextEndsAtItsFirstNullCharacter) {
    EXPECT_EQ(MixedList().IndexOf(SchemaNamespace::Keywords, std::wstring(L"Same\0more", 9)), 1U);
}

TEST(SchemaBase, AnIndexBehindTheLastThrows) {
    EXPECT_EQ(Thrown<std::invalid_argument>([] { static_cast<void>(MixedList().GetQname(4)); }),
              "base/xps/printschema/schemabase.cpp(LINE) : The index you specified is out of range.\n");
}

TEST(SchemaBase, ANullNameThrows) {
    const wchar_t* const pName = nullptr;
    EXPECT_EQ(Thrown<std::invalid_argument>(
                  [&] { static_cast<void>(MixedList().IndexOf(SchemaNamespace::Keywords, pName)); }),
              "base/xps/printschema/schemabase.cpp(LINE) : pName is null.\n");
    EXPECT_EQ(Thrown<std::invalid_argument>(
                  [&] { static_cast<void>(EmptyList().Search(SchemaNamespace::Keywords, pName)); }),
              "base/xps/printschema/schemabase.cpp(LINE) : pTarget is null.\n");
}

}  // namespace
