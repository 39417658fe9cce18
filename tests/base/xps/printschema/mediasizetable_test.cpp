#include "base/xps/printschema/mediasizetable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "thrown.h"

namespace {

using base::xps::printschema::MediaDimensions;
using base::xps::printschema::MediaSizeOption;
using base::xps::printschema::MediaSizeRow;
using base::xps::printschema::MediaSizeSchema;
using base::xps::printschema::MediaSizeTable;

// FNV-1a, 64 bits, over the lines "ID KEYWORD WIDTHxHEIGHT\n" of all records by ascending id.
std::uint64_t DigestOf(const MediaSizeTable& table) {
    std::uint64_t digest = 0xcbf29ce484222325u;
    for (const auto& [id, record] : table.Records()) {
        std::string line = std::to_string(id) + ' ';
        for (const wchar_t character : record->keyword) line += static_cast<char>(character);
        line += ' ' + std::to_string(record->size.width) + 'x' + std::to_string(record->size.height) + '\n';
        for (const char character : line) {
            digest = (digest ^ static_cast<unsigned char>(character)) * 0x100000001b3u;
        }
    }
    return digest;
}

// The ids that share the size of the given one, ascending.
std::vector<std::int32_t> IdsOfSize(const MediaDimensions& size) {
    std::vector<std::int32_t> ids;
    for (const auto& [id, record] : MediaSizeTable::Instance().Records()) {
        if (record->size == size) ids.push_back(id);
    }
    return ids;
}

TEST(MediaSizeTableTest, HasARowForEveryIdFromTheUnknownSizeOn) {
    const auto& records = MediaSizeTable::Instance().Records();
    ASSERT_EQ(173u, records.size());
    std::int32_t expected = -1;
    for (const auto& [id, record] : records) {
        EXPECT_EQ(expected++, id);
        EXPECT_EQ(id, record->id);
    }
}

TEST(MediaSizeTableTest, HasTheListedKeywordsAndSizesRowByRow) {
    EXPECT_EQ(0x705ba62edaca1129u, DigestOf(MediaSizeTable::Instance()));
}

TEST(MediaSizeTableTest, NamesItsRowsByTheBareKeyword) {
    const MediaSizeTable& table = MediaSizeTable::Instance();
    EXPECT_EQ((MediaSizeOption{L"OptionUnknown", -1, {-1, -1}}), *table.ById(MediaSizeSchema::OptionUnknown));
    EXPECT_EQ((MediaSizeOption{L"CustomMediaSize", 0, {0, 0}}),
              *table.ById(MediaSizeSchema::CustomMediaSize));
    EXPECT_EQ((MediaSizeOption{L"PSCustomMediaSize", 1, {0, 0}}),
              *table.ById(MediaSizeSchema::PSCustomMediaSize));
    EXPECT_EQ((MediaSizeOption{L"ISOA4", 9, {210000, 297000}}), *table.ById(MediaSizeSchema::ISOA4));
    EXPECT_EQ((MediaSizeOption{L"NorthAmericaLetter", 94, {215900, 279400}}),
              *table.ById(MediaSizeSchema::NorthAmericaLetter));
    EXPECT_EQ((MediaSizeOption{L"NorthAmericaMonarchEnvelope", 98, {98425, 177800}}), *table.ById(98));
    EXPECT_EQ((MediaSizeOption{L"Roll04Inch", 143, {101600, 0}}), *table.ById(143));
    EXPECT_EQ((MediaSizeOption{L"CreditCard", 171, {54000, 86000}}), *table.ById(171));
}

TEST(MediaSizeTableTest, HasNoKeywordTwice) {
    std::vector<std::wstring> keywords;
    for (const auto& [id, record] : MediaSizeTable::Instance().Records()) keywords.push_back(record->keyword);
    std::ranges::sort(keywords);
    EXPECT_EQ(keywords.end(), std::ranges::adjacent_find(keywords));
}

TEST(MediaSizeTableTest, AnIdThatIsNotThereYieldsTheUnknownSize) {
    const MediaSizeTable& table = MediaSizeTable::Instance();
    for (const std::int32_t id : {172, 173, -2, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(MediaSizeSchema::OptionUnknown, table.ById(id)->id) << id;
    }
}

TEST(MediaSizeTableTest, ASizeThatIsNotThereYieldsTheUnknownSize) {
    const MediaSizeTable& table = MediaSizeTable::Instance();
    for (const MediaDimensions& size :
         {MediaDimensions{100, 100}, MediaDimensions{210000, 297001}, MediaDimensions{0, 297000}}) {
        EXPECT_EQ(MediaSizeSchema::OptionUnknown, table.BySize(size)->id);
    }
    EXPECT_EQ(MediaSizeSchema::OptionUnknown, table.BySize({-1, -1})->id);
}

TEST(MediaSizeTableTest, ASharedSizeResolvesToTheLowestId) {
    const std::vector<std::vector<std::int32_t>> shared = {
        {0, 1},    {25, 26},  {36, 37, 120}, {38, 39, 141}, {40, 41}, {42, 43, 159},
        {48, 133}, {49, 134}, {79, 111},     {90, 115},     {94, 99}, {126, 128}};
    const MediaSizeTable& table = MediaSizeTable::Instance();
    std::vector<std::int32_t> seen;
    for (const std::vector<std::int32_t>& ids : shared) {
        const MediaDimensions size = table.ById(ids.front())->size;
        EXPECT_EQ(ids, IdsOfSize(size));
        EXPECT_EQ(ids.front(), table.BySize(size)->id);
        seen.insert(seen.end(), ids.begin(), ids.end());
    }
    for (const auto& [id, record] : table.Records()) {
        if (std::ranges::find(seen, id) != seen.end()) continue;
        EXPECT_EQ(id, table.BySize(record->size)->id);
    }
}

TEST(MediaSizeTableTest, IdsFrom2To172AreStandardSizes) {
    EXPECT_FALSE(MediaSizeTable::IsStandardSize(MediaSizeSchema::OptionUnknown));
    EXPECT_FALSE(MediaSizeTable::IsStandardSize(MediaSizeSchema::CustomMediaSize));
    EXPECT_FALSE(MediaSizeTable::IsStandardSize(MediaSizeSchema::PSCustomMediaSize));
    EXPECT_TRUE(MediaSizeTable::IsStandardSize(2));
    EXPECT_TRUE(MediaSizeTable::IsStandardSize(171));
    EXPECT_TRUE(MediaSizeTable::IsStandardSize(172));
    EXPECT_FALSE(MediaSizeTable::IsStandardSize(173));
}

TEST(MediaSizeTableTest, LookupsShareTheirRecords) {
    const MediaSizeTable& table = MediaSizeTable::Instance();
    EXPECT_EQ(&MediaSizeTable::Instance(), &table);
    EXPECT_EQ(table.ById(9).get(), table.BySize({210000, 297000}).get());
}

TEST(MediaSizeTableTest, ARowWithoutThePrefixOfTheListIsRefused) {
    const MediaSizeRow rows[] = {{-1, L"MediaSizeSchema::OptionUnknown", {-1, -1}}, {2, L"ISOA0", {1, 2}}};
    EXPECT_EQ("base/xps/printschema/mediasizetable.cpp(LINE) : Encounterd unexpect state.\n",
              tests::Thrown<std::logic_error>([&] { const MediaSizeTable table(rows); }));
}

TEST(MediaSizeOptionTest, IsTheSameWhenAllOfItIs) {
    const MediaSizeOption option = {L"ISOA4", 9, {1, 2}};
    EXPECT_EQ((MediaSizeOption{L"ISOA4", 9, {1, 2}}), option);
    EXPECT_NE((MediaSizeOption{L"ISOA5", 9, {1, 2}}), option);
    EXPECT_NE((MediaSizeOption{L"ISOA4", 8, {1, 2}}), option);
    EXPECT_NE((MediaSizeOption{L"ISOA4", 9, {1, 3}}), option);
}

}  // namespace
