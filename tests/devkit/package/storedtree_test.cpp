#include "devkit/package/storedtree.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <utility>

namespace devkit::package {
namespace {

// Three documents, one of them without pages; the first has more pages than stay in memory.
XpsTree Tree() {
    XpsTree tree{{"/s.fdseq", true, "/job.xml", {}}, "/thumbnail.png"};
    tree.sequence.documents = {{"/1.fdoc", "/1.xml", {}}, {"/2.fdoc", {}, {}}, {"/3.fdoc", {}, {}}};
    for (std::size_t i = 0; i < 3 * common::RecordList<FixedPage>::kInMemory; ++i) {
        const std::string number = std::to_string(i);
        FixedPage page{"/" + number + ".fpage", {}, {}, {}};
        if (i % 3 == 0) page.ticket = "/" + number + ".xml";
        if (i % 5 == 0) page.resources = {"/font", "/image" + number};
        tree.sequence.documents[0].pages.push_back(std::move(page));
    }
    tree.sequence.documents[2].pages.push_back({"/last.fpage", {}, "/last.xml", {}});
    return tree;
}

std::string TextOf(const XpsTree& tree) {
    std::ostringstream text;
    text << tree.sequence.name << tree.sequence.implied << tree.sequence.ticket.value_or("none")
         << tree.thumbnail.value_or("none");
    for (const FixedDocument& document : tree.sequence.documents) {
        text << "\ndocument " << document.name << document.ticket.value_or("none");
        for (const FixedPage& page : document.pages) {
            text << "\npage " << page.name << page.ticket.value_or("none") << page.markup.has_value();
            for (const std::string& resource : page.resources) text << resource;
        }
    }
    return text.str();
}

TEST(StoredTreeTest, ATreeComesBackAsItWas) {
    EXPECT_EQ(TextOf(Tree()), TextOf(StoredTree(Tree()).Load()));
    EXPECT_EQ(TextOf(XpsTree()), TextOf(StoredTree(XpsTree()).Load()));
}

TEST(StoredTreeTest, NewMarkupIsNotKept) {
    XpsTree tree = Tree();
    tree.sequence.documents[0].pages[1].markup = "<new/>";
    EXPECT_EQ(TextOf(Tree()), TextOf(StoredTree(tree).Load()));
}

TEST(StoredTreeTest, KnowsItsTree) {
    EXPECT_TRUE(StoredTree(Tree()).Is(Tree()));
    EXPECT_TRUE(StoredTree(XpsTree()).Is(XpsTree()));
    EXPECT_FALSE(StoredTree(Tree()).Is(XpsTree()));
}

TEST(StoredTreeTest, KnowsATreeThatDiffersInOneThing) {
    using Change = std::function<void(XpsTree&)>;
    const std::vector<std::pair<const char*, Change>> changes{
        {"thumbnail", [](XpsTree& tree) { tree.thumbnail.reset(); }},
        {"sequence", [](XpsTree& tree) { tree.sequence.name = "/t.fdseq"; }},
        {"implied", [](XpsTree& tree) { tree.sequence.implied = false; }},
        {"job ticket", [](XpsTree& tree) { tree.sequence.ticket = "/other.xml"; }},
        {"document", [](XpsTree& tree) { tree.sequence.documents[1].name = "/other.fdoc"; }},
        {"document ticket", [](XpsTree& tree) { tree.sequence.documents[1].ticket = "/other.xml"; }},
        {"no document",
         [](XpsTree& tree) { tree.sequence.documents.erase(++tree.sequence.documents.begin()); }},
        {"page", [](XpsTree& tree) { tree.sequence.documents[0].pages[7].name = "/other.fpage"; }},
        {"page ticket", [](XpsTree& tree) { tree.sequence.documents[0].pages[7].ticket = "/other.xml"; }},
        {"resource", [](XpsTree& tree) { tree.sequence.documents[0].pages[7].resources = {"/other"}; }},
        {"markup", [](XpsTree& tree) { tree.sequence.documents[0].pages[7].markup = "<new/>"; }},
        {"last page", [](XpsTree& tree) { tree.sequence.documents[2].pages[0].ticket.reset(); }},
        {"a page more",
         [](XpsTree& tree) {
             tree.sequence.documents[1].pages.push_back({"/p", {}, {}, {}});
         }},
        {"a page less", [](XpsTree& tree) { tree.sequence.documents[0].pages.pop_back(); }},
        {"a page elsewhere",
         [](XpsTree& tree) {
             auto& pages = tree.sequence.documents[0].pages;
             tree.sequence.documents[1].pages.push_front(pages.back());
             pages.pop_back();
         }},
    };
    const StoredTree stored(Tree());
    for (const auto& [name, change] : changes) {
        XpsTree tree = Tree();
        change(tree);
        EXPECT_FALSE(stored.Is(tree)) << name;
    }
}

}  // namespace
}  // namespace devkit::package
