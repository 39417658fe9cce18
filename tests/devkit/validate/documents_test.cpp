#include "devkit/validate/documents.h"

#include <gtest/gtest.h>

#include <set>

#include "temporaryfolder.h"
#include "temporaryplace.h"

namespace devkit::validate {
namespace {

using Names = std::set<std::string>;

TEST(BatteryFolder, WhatAnEndedProcessLeftGoesWithTheNext) {
    const tests::TemporaryFolder place;
    for (const char* const name : {"filterhost-1-1", "filterhost-2-1", "filterhost-results"}) {
        std::filesystem::create_directory(place / name);
        tests::WriteFileBytes(place / name / "short.xps", "x");
    }
    // Its process is still there.
    tests::WriteFileBytes(place / "filterhost-2-1.tmp", "");
    const Names others{"filterhost-2-1", "filterhost-2-1.tmp", "filterhost-results"};
    {
        const tests::TemporaryPlace there(place / "");
        const TemporaryFolder folder;
        tests::WriteFileBytes(folder.Path() / "a", "x");
        Names all = others;
        const std::string name = common::PathText(folder.Path().filename());
        all.insert({name, name + ".tmp"});
        EXPECT_EQ(all, place.Names());
    }
    EXPECT_EQ(others, place.Names());
}

}  // namespace
}  // namespace devkit::validate
