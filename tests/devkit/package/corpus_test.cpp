#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "devkit/common/file.h"
#include "devkit/package/pagedimensions.h"
#include "devkit/package/partname.h"
#include "temporaryfolder.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

// Documents of other producers, some broken on purpose. They are not part of the project: the folder is that
// of the environment variable CORPUS_FOLDER, or "shared/corpus" beside the project.
class CorpusTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const char* pFolder = std::getenv("CORPUS_FOLDER")) {
            m_folder = pFolder;
        } else {
            m_folder = std::filesystem::path(SOURCE_FOLDER) / ".." / "shared" / "corpus";
        }
        if (!std::filesystem::is_directory(m_folder))
            GTEST_SKIP() << "no corpus of documents at " << common::PathText(m_folder);
        for (const auto& each : std::filesystem::recursive_directory_iterator(m_folder)) {
            const std::string extension = NameKey(each.path().extension().string()).substr(1);
            if (extension == ".xps" || extension == ".oxps" || extension == ".dwfx")
                m_files.push_back(each.path());
        }
        std::ranges::sort(m_files);
    }

    // "folder/file.xps"
    static std::string Title(const std::filesystem::path& file) {
        return file.parent_path().filename().string() + "/" + file.filename().string();
    }

    std::filesystem::path m_folder;
    std::vector<std::filesystem::path> m_files;
};

// Every document that may be refused, with the reason; "FILE" stands for the document's own path.
const std::map<std::string, std::string>& Refusals() {
    static const std::map<std::string, std::string> refusals = {
        {"EncryptedPackageWithProperties.xps", "is not a zip archive, FILE"},
        {"violation-opc-M1.10a.xps", "is missing, /Documents/1 (from /FixedDocSeq.fdseq)"},
        {"violation-opc-M1.1b.xps", "is missing, /Documents/1 (from /FixedDocSeq.fdseq)"},
        {"violation-opc-M1.3a.xps", "is missing, /Documents/FixedDoc.fdoc (from /FixedDocSeq.fdseq)"},
        {"violation-opc-M1.6a.xps", "is missing, /Documents/1/FixedDoc (from /FixedDocSeq.fdseq)"},
        {"violation-opc-M1.9a.oxps",
         "is missing, /Documents/1/Pages/1.fpage (from /Documents/1/FixedDoc.fdoc)"},
        {"violation-opc-M4.1a.xps", "the start part is missing, FixedDocSeq2.fdseq"},
        {"violation-opc-M6.2a.xps", "is not a zip archive, FILE"},
        {"violation-opc-M6.8a.xps", "is a broken zip archive (zip archive inconsistent), FILE"},
        {"violation-xps-M1.2a.xps", "is not a zip archive, FILE"},
        {"violation-xps-M2.13a.xps", "has no start part, FILE"},
        {"violation-xps-M2.3a.xps", "the start part is missing, FixedDocSeq.fdseq"},
        {"violation-xps-M2.3b.xps", "has no start part, FILE"},
        {"violation-xps-M2.4b.xps", "has no pages, /FixedDocSeq.fdseq"},
        {"violation-xps-M2.5a.xps",
         "is missing, /Documents/1/Pages/1.fpage (from /Documents/1/FixedDoc.fdoc)"},
        {"violation-xps-M3.2a.xps",
         "is neither a fixed document sequence nor a fixed document, /Documents/1/Pages/1.fpage"},
    };
    return refusals;
}

TEST_F(CorpusTest, EveryDocumentIsReadOrRefusedForTheRightReason) {
    std::ofstream table(std::filesystem::path(SAMPLES_FOLDER) / ".." / "corpus-packages.tsv",
                        std::ios::binary);
    std::size_t refused = 0;
    for (const std::filesystem::path& file : m_files) {
        const auto refusal = Refusals().find(file.filename().string());
        const bool expected = refusal != Refusals().end();
        std::string error = ErrorOf([&] {
            const XpsDocument document = XpsDocument::Open(file);
            std::size_t pages = 0;
            for (const FixedDocument& each : document.sequence.documents) pages += each.pages.size();
            for (const PartInfo& part : document.GetPackage().Parts())
                EXPECT_EQ(part.size, document.ReadPart(part.name).size()) << part.name;
            table << Title(file) << "\tread\t" << pages << "\n";
        });
        if (!error.empty()) table << Title(file) << "\trefused\t" << error << "\n";
        if (const std::size_t at = error.find(common::PathText(file)); at != std::string::npos)
            error.replace(at, common::PathText(file).size(), "FILE");
        EXPECT_EQ(expected ? refusal->second : "", error) << Title(file);
        refused += expected ? 1 : 0;
    }
    EXPECT_LT(refused, m_files.size());
}

TEST_F(CorpusTest, WithoutChangesTheFileIsCopiedByteForByte) {
    for (const std::filesystem::path& file : m_files) {
        if (Refusals().contains(file.filename().string())) continue;
        XpsDocument document = XpsDocument::Open(file);
        EXPECT_EQ(ReadFileBytes(file), SavedBytes(document)) << Title(file);
    }
}

// The part's bytes, or why they cannot be had.
std::string BytesOrError(const Package& package, const std::string& name) {
    std::string bytes;
    const std::string error = ErrorOf([&] { bytes = package.Read(name); });
    return error.empty() ? bytes : error;
}

// Gives the document a job ticket, and each page a ticket and its own markup as new.
void Change(XpsDocument& document) {
    document.sequence.ticket = document.AddPart("/new_job.xml", kPrintTicketContentType, "<job/>");
    for (FixedDocument& each : document.sequence.documents) {
        for (FixedPage& page : each.pages) {
            page.markup = document.ReadMarkup(page);
            page.ticket = document.AddPart("/new_page.xml", kPrintTicketContentType, "<page/>");
        }
    }
}

// The tickets that Change replaces, which leave the package.
std::set<std::string> LostTickets(const XpsTree& tree) {
    std::set<std::string> lost;
    if (tree.sequence.ticket) lost.insert(NameKey(*tree.sequence.ticket));
    for (const FixedDocument& each : tree.sequence.documents) {
        for (const FixedPage& page : each.pages) {
            if (page.ticket) lost.insert(NameKey(*page.ticket));
        }
    }
    for (const FixedDocument& each : tree.sequence.documents) {
        if (each.ticket) lost.erase(NameKey(*each.ticket));
    }
    return lost;
}

void ExpectPartsKept(const XpsDocument& before, const Package& after, const std::string& title) {
    const std::set<std::string> lost = LostTickets(before);
    for (const PartInfo& part : before.GetPackage().Parts()) {
        const auto kept = after.Find(part.name);
        ASSERT_EQ(!lost.contains(NameKey(part.name)), kept.has_value()) << title << " " << part.name;
        if (!kept) continue;
        EXPECT_EQ(BytesOrError(before.GetPackage(), part.name), BytesOrError(after, part.name)) << title;
        // Content types that could not be read have become the customary ones, which were taken before.
        EXPECT_EQ(part.contentType, kept->contentType) << title << " " << part.name;
    }
}

void ExpectTreeChanged(const XpsDocument& before, const XpsDocument& after, const std::string& title) {
    EXPECT_EQ("<job/>", after.ReadPart(*after.sequence.ticket)) << title;
    EXPECT_EQ(kPrintTicketContentType, after.GetPackage().Find(*after.sequence.ticket)->contentType) << title;
    ASSERT_EQ(before.sequence.documents.size(), after.sequence.documents.size()) << title;
    for (std::size_t i = 0; i < after.sequence.documents.size(); ++i) {
        const FixedDocument& each = after.sequence.documents[i];
        const FixedDocument& original = before.sequence.documents[i];
        EXPECT_EQ(original.ticket, each.ticket) << title;
        ASSERT_EQ(original.pages.size(), each.pages.size()) << title;
        for (std::size_t j = 0; j < each.pages.size(); ++j) {
            EXPECT_EQ(original.pages[j].name, each.pages[j].name) << title;
            EXPECT_EQ("<page/>", after.ReadPart(*each.pages[j].ticket)) << title;
            EXPECT_EQ(original.pages[j].resources, each.pages[j].resources) << title;
        }
    }
}

TEST_F(CorpusTest, WhatIsNotChangedStaysByteForByte) {
    const std::filesystem::path folder = std::filesystem::path(SAMPLES_FOLDER) / ".." / "corpus-changed";
    std::filesystem::remove_all(folder);
    for (const std::filesystem::path& file : m_files) {
        if (Refusals().contains(file.filename().string())) continue;
        const XpsDocument before = XpsDocument::Open(file);
        XpsDocument changed = XpsDocument::Open(file);
        Change(changed);
        const std::filesystem::path output = folder / file.parent_path().filename() / file.filename();
        std::filesystem::create_directories(output.parent_path());
        changed.Save(output);
        const XpsDocument after = XpsDocument::Open(output);
        ExpectPartsKept(before, after.GetPackage(), Title(file));
        ExpectTreeChanged(before, after, Title(file));
    }
}

TEST_F(CorpusTest, PageSizesAreRead) {
    // A page with a document type declaration, one whose root has an attribute twice, and another
    // declaration.
    std::vector<std::string> without;
    for (const std::filesystem::path& file : m_files) {
        if (Refusals().contains(file.filename().string())) continue;
        const XpsDocument document = XpsDocument::Open(file);
        for (const FixedDocument& each : document.sequence.documents) {
            for (const FixedPage& page : each.pages) {
                if (!ReadPageDimensions(document.ReadMarkup(page)))
                    without.push_back(file.filename().string());
            }
        }
    }
    EXPECT_EQ((std::vector<std::string>{"violation-oxps-M2.71c.oxps", "violation-oxps-M2.74a.oxps",
                                        "violation-xps-M2.71c.xps"}),
              without);
}

}  // namespace
}  // namespace devkit::package
