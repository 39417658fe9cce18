#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "devkit/package/file.h"
#include "devkit/package/xpsdocument.h"

namespace devkit::package {
namespace {

TEST(CorpusTest, ReadsEveryDocumentButTheBrokenOnes) {
    const std::filesystem::path folder =
        std::getenv("CORPUS_FOLDER") ? std::getenv("CORPUS_FOLDER") : "Z:\\work\\shared\\corpus";
    std::vector<std::filesystem::path> files;
    for (const auto& each : std::filesystem::recursive_directory_iterator(folder))
        if (each.is_regular_file() && each.path().extension() != ".md") files.push_back(each.path());
    std::ranges::sort(files);
    for (const auto& file : files) {
        std::cout << PathText(file.parent_path().filename() / file.filename()) << '\t';
        try {
            XpsDocument document = XpsDocument::Open(file);
            std::size_t pages = 0;
            for (const auto& each : document.sequence.documents) {
                pages += each.pages.size();
                for (const auto& page : each.pages) static_cast<void>(document.ReadMarkup(page));
            }
            for (const auto& part : document.GetPackage().Parts())
                static_cast<void>(document.ReadPart(part.name));
            std::cout << "read " << document.sequence.documents.size() << "/" << pages;
            for (const auto& f : document.Findings()) std::cout << " [" << f << "]";
            std::cout << '\n';
        } catch (const PackageError& failure) {
            std::cout << "refused: " << failure.what() << '\n';
        }
    }
}

}  // namespace
}  // namespace devkit::package
