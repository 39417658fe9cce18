#include "devkit/pipeline/jobinput.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace devkit::pipeline {
namespace {

using package::XpsDocument;

TEST(JobInput, HasTheTreeOfTheDocument) {
    const auto document = std::make_shared<XpsDocument>(
        XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / "sample.xps"));
    const auto job = MakeJobInput(document);
    ASSERT_TRUE(job->thumbnail && job->ticket);
    EXPECT_EQ(job->thumbnail->name, *document->thumbnail);
    EXPECT_EQ(job->sequence.name, document->sequence.name);
    EXPECT_EQ(job->ticket->name, *document->sequence.ticket);
    EXPECT_EQ(job->ticket->contentType, "application/vnd.ms-printing.printticket+xml");
    EXPECT_EQ(*job->ticket->read(), document->ReadPart(job->ticket->name));
    ASSERT_EQ(job->documents.size(), document->sequence.documents.size());
    for (std::size_t i = 0; i < job->documents.size(); ++i) {
        const package::FixedDocument& expected = document->sequence.documents[i];
        EXPECT_EQ(job->documents[i].markup.name, expected.name);
        EXPECT_EQ(job->documents[i].ticket.has_value(), expected.ticket.has_value());
        ASSERT_EQ(job->documents[i].pages.size(), expected.pages.size());
        for (std::size_t j = 0; j < expected.pages.size(); ++j) {
            const PageInput& page = job->documents[i].pages[j];
            EXPECT_EQ(page.markup.name, expected.pages[j].name);
            EXPECT_EQ(*page.markup.read(), document->ReadMarkup(expected.pages[j]));
            EXPECT_EQ(page.ticket.has_value(), expected.pages[j].ticket.has_value());
            ASSERT_EQ(page.resources.size(), expected.pages[j].resources.size());
        }
    }
}

TEST(JobInput, KeepsTheDocumentAlive) {
    std::shared_ptr<const JobInput> job;
    {
        const auto document = std::make_shared<XpsDocument>(
            XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / "minimal.xps"));
        job = MakeJobInput(document);
    }
    EXPECT_NE(job->documents[0].pages[0].markup.read()->find("FixedPage"), std::string::npos);
}

}  // namespace
}  // namespace devkit::pipeline
