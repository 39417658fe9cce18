#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "devkit/pipeline/job.h"
#include "devkit/pipeline/runcontext.h"
#include "devkit/pipeline/runobserver.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "programfolder.h"

namespace devkit::pipeline {

// A part of a document that exists in memory only.
[[nodiscard]] InputPart InMemory(std::string name, std::string contentType, std::string bytes);

// Writes the bytes of a part, as a filter does.
void Write(Part& part, std::string_view bytes);
// A part as a filter makes it.
[[nodiscard]] PartPtr Made(PartKind kind, std::string name, std::string_view bytes);

// Two documents of two pages and one: tickets of the job, of the first document and of the first page; the
// first page has a font, an image, a colour profile, a dictionary and a part of an unknown kind.
[[nodiscard]] std::shared_ptr<JobInput> SampleJob();

// testfilter.dll, beside the test program.
[[nodiscard]] inline std::filesystem::path TestFilterPath() {
    return tests::ProgramFolder() / "testfilter.dll";
}

[[nodiscard]] std::string ReadAll(IPrintReadStream* pStream);
[[nodiscard]] std::wstring UriOf(IPartBase* pPart);

// Makes a context with a behaviour.
class PipelineTest : public testing::Test {
  protected:
    // The context of the test's objects; a later behaviour makes a new one.
    [[nodiscard]] const ContextPtr& Context();
    // One that the observer is told by.
    void Watch(std::shared_ptr<RunObserver> observer) {
        m_context = std::make_shared<RunContext>(Behaviour(), std::move(observer));
    }
    void Use(Behaviour behaviour) { m_context = std::make_shared<RunContext>(std::move(behaviour)); }
    [[nodiscard]] std::vector<std::string> Breaches() { return Context()->Breaches().Lines(); }
    // A switch that fails the nth call of the method.
    static Behaviour Failing(std::string method, HRESULT code, std::string argument = {}, unsigned nth = 1);

  private:
    ContextPtr m_context;
};

using Lines = std::vector<std::string>;

// How long a test sleeps whose sleep is measured.
inline constexpr std::chrono::milliseconds kNap{20};

}  // namespace devkit::pipeline
