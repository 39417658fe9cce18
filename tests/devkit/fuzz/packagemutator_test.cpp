#include "devkit/fuzz/packagemutator.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "devkit/fuzz/basedocuments.h"

namespace devkit::fuzz {
namespace {

std::string Names(const Entries& entries) {
    std::string names;
    for (const package::RawEntry& each : entries) names += each.name.substr(0, 40) + ";";
    return names;
}

std::string FirstWord(const std::string& text) { return text.substr(0, text.find(' ')); }

TEST(PackageMutator, KnowsPagesTicketsAndStructure) {
    std::string pages;
    std::string tickets;
    std::string structure;
    const std::vector<BaseDocument> documents = OwnDocuments();
    for (const package::RawEntry& each : documents[0].entries) {
        if (IsPage(each)) pages += each.name + ";";
        if (IsTicket(each)) tickets += each.name + ";";
        if (IsStructure(each)) structure += each.name + ";";
    }
    EXPECT_EQ("1.fpage;2.fpage;", pages);
    EXPECT_EQ("j.xml;d.xml;p.xml;", tickets);
    EXPECT_EQ(
        "[Content_Types].xml;_rels/.rels;s.fdseq;_rels/s.fdseq.rels;d.fdoc;_rels/d.fdoc.rels;_rels/"
        "1.fpage.rels;_rels/"
        "2.fpage.rels;",
        structure);
    // The same where they are of UTF-16.
    for (const package::RawEntry& each : documents[1].entries)
        EXPECT_EQ(each.name == "1.fpage" || each.name == "2.fpage", IsPage(each)) << each.name;
}

TEST(PackageMutator, ChangesWhichPartsThereAre) {
    const Entries before = OwnDocuments()[0].entries;
    std::set<std::string> done;
    for (unsigned seed = 0; seed < 300; ++seed) {
        Random random(seed);
        Entries entries = before;
        const std::string what = FirstWord(MutateParts(entries, random));
        done.insert(what);
        if (what == "dropped") {
            EXPECT_EQ(before.size() - 1, entries.size());
        }
        if (what == "doubled") {
            EXPECT_EQ(before.size() + 1, entries.size());
        }
        if (what == "split") {
            EXPECT_EQ(before.size() + 1, entries.size());
        }
        if (what == "added") {
            EXPECT_LT(before.size(), entries.size());
        }
        if (what == "renamed" || what == "respelt") {
            EXPECT_NE(Names(before), Names(entries));
        }
    }
    EXPECT_EQ((std::set<std::string>{"added", "doubled", "dropped", "emptied", "renamed", "respelt",
                                     "retargeted", "split", "swapped"}),
              done);
}

TEST(PackageMutator, ChangesTheMarkupOfOneEntryAlone) {
    const Entries before = OwnDocuments()[0].entries;
    unsigned changed = 0;
    for (unsigned seed = 0; seed < 100; ++seed) {
        Random random(seed);
        Entries entries = before;
        const std::string what = MutateOne(entries, IsPage, random);
        EXPECT_TRUE(what.ends_with(" in 1.fpage") || what.ends_with(" in 2.fpage")) << what;
        std::size_t differ = 0;
        for (std::size_t i = 0; i < before.size(); ++i) {
            if (before[i].data == entries[i].data) continue;
            ++differ;
            EXPECT_TRUE(IsPage(before[i]));
        }
        EXPECT_GE(1U, differ);
        changed += static_cast<unsigned>(differ);
    }
    EXPECT_LT(80U, changed);
}

TEST(PackageMutator, OfNothingNothingIsMade) {
    Random random(1);
    Entries none;
    EXPECT_EQ("", MutateParts(none, random));
    EXPECT_EQ("", MutateOne(none, IsPage, random));
    EXPECT_EQ("", MutateEntry(none, random));
    std::string archive;
    EXPECT_EQ("", MutateArchive(archive, random));
}

TEST(PackageMutator, LiesAboutEntriesAndDamagesBytes) {
    const Entries before = OwnDocuments()[0].entries;
    const std::string honest = package::BuildZip(before);
    unsigned lies = 0;
    unsigned damages = 0;
    for (unsigned seed = 0; seed < 100; ++seed) {
        Random random(seed);
        Entries entries = before;
        EXPECT_NE("", MutateEntry(entries, random));
        lies += package::BuildZip(entries) != honest ? 1 : 0;
        std::string archive = honest;
        EXPECT_NE("", MutateArchive(archive, random));
        damages += archive != honest ? 1 : 0;
    }
    EXPECT_LT(90U, lies);
    EXPECT_LT(90U, damages);
}

}  // namespace
}  // namespace devkit::fuzz
