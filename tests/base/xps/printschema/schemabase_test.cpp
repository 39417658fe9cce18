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
    EXPECT_EQ(SchemaNamespace::Framework, name.space);
    EXPECT_EQ(L"", name.localName);
}

TEST(Qname, IsEqualWhenBothMembersAre) {
    const Qname name = {SchemaNamespace::Keywords, L"Tray1"};
    const Qname copy = name;
    EXPECT_EQ(name, copy);
    EXPECT_NE((Qname{SchemaNamespace::Private, L"Tray1"}), name);
    EXPECT_NE((Qname{SchemaNamespace::Keywords, L"tray1"}), name);
}

TEST(SchemaBase, GetNamespacesOnAListBuiltWithNoAddQnameThrowsALogicError) {
    EXPECT_EQ(
        "base/xps/printschema/schemabase.cpp(LINE) : "
        "namespaces should be initialized in constructor through AddQname().\n",
        Thrown<std::logic_error>([] { static_cast<void>(EmptyList().GetNamespaces()); }));
}

TEST(SchemaBase, AListWithoutNamesHasNone) {
    const EmptyList list;
    EXPECT_TRUE(list.GetQnames().empty());
    EXPECT_EQ(SchemaBase::kNotFound, list.IndexOf(SchemaNamespace::Keywords, L"Same"));
    EXPECT_THROW(static_cast<void>(list.GetQname(0)), std::invalid_argument);
}

TEST(SchemaBase, NamesKeepTheirOrderAndNamespacesAreSorted) {
    const MixedList list;
    const std::vector<Qname> names = {{SchemaNamespace::Private, L"Same"},
                                      {SchemaNamespace::Keywords, L"Same"},
                                      {SchemaNamespace::Keywords, L"Same"},
                                      {SchemaNamespace::Keywords, L""}};
    EXPECT_EQ(names, list.GetQnames());
    EXPECT_EQ((std::set<SchemaNamespace>{SchemaNamespace::Keywords, SchemaNamespace::Private}),
              list.GetNamespaces());
}

TEST(SchemaBase, TheFirstIndexOfANameInItsNamespaceIsFound) {
    const MixedList list;
    EXPECT_EQ(1U, list.IndexOf({SchemaNamespace::Keywords, L"Same"}));
    EXPECT_EQ(0U, list.IndexOf({SchemaNamespace::Private, L"Same"}));
    EXPECT_EQ(1U, list.IndexOf(SchemaNamespace::Keywords, std::wstring(L"Same")));
    EXPECT_EQ(3U, list.IndexOf(SchemaNamespace::Keywords, L""));
    EXPECT_EQ(0xFFFFFFFFU, list.IndexOf(SchemaNamespace::Framework, L"Same"));
}

TEST(SchemaBase, ATextEndsAtItsFirstNullCharacter) {
    EXPECT_EQ(1U, MixedList().IndexOf(SchemaNamespace::Keywords, std::wstring(L"Same\0more", 9)));
}

TEST(SchemaBase, AnIndexBehindTheLastThrows) {
    EXPECT_EQ("base/xps/printschema/schemabase.cpp(LINE) : The index you specified is out of range.\n",
              Thrown<std::invalid_argument>([] { static_cast<void>(MixedList().GetQname(4)); }));
}

TEST(SchemaBase, ANullNameThrows) {
    const wchar_t* const pName = nullptr;
    EXPECT_EQ("base/xps/printschema/schemabase.cpp(LINE) : pName is null.\n",
              Thrown<std::invalid_argument>(
                  [&] { static_cast<void>(MixedList().IndexOf(SchemaNamespace::Keywords, pName)); }));
    EXPECT_EQ("base/xps/printschema/schemabase.cpp(LINE) : pTarget is null.\n",
              Thrown<std::invalid_argument>(
                  [&] { static_cast<void>(EmptyList().Search(SchemaNamespace::Keywords, pName)); }));
}

}  // namespace
