#pragma once

#include "platform/windows.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "devkit/pipeline/job.h"
#include "devkit/pipeline/part.h"
#include "platform/comptr.h"

namespace devkit::pipeline {

// What a filter is given: a part, or an object that the filter before it made. Neither of them is the end.
struct GivenPart {
    PartPtr part;
    platform::ComPtr<IUnknown> foreign;

    [[nodiscard]] bool IsEnd() const noexcept { return part == nullptr && !foreign; }
};

// Where the parts come from that a filter is given.
class PartSource {
  public:
    virtual ~PartSource() = default;
    // The next part, waiting for it where need be; the end as often as it is asked for. Nothing when the job
    // is cut off.
    [[nodiscard]] virtual std::optional<GivenPart> Next() = 0;
};

// The parts of a document in the pipeline's order: the XPS document, the sequence, then each document
// followed by its pages.
class JobParts final : public PartSource {
  public:
    explicit JobParts(std::shared_ptr<const JobInput> job) : m_job(std::move(job)) {}
    [[nodiscard]] std::optional<GivenPart> Next() override;

  private:
    [[nodiscard]] PartPtr NextPart();

    const std::shared_ptr<const JobInput> m_job;
    unsigned m_next = 1;
    std::size_t m_document = 0;
    std::size_t m_page = 0;
    bool m_inDocument = false;
};

// Hands parts from one filter to the next as they are sent, few at a time: who sends waits for room. Each
// part arrives as one of its own, with what the first filter made of it, so that the two threads share
// nothing but bytes. Any thread may call.
class PartChannel final : public PartSource {
  public:
    explicit PartChannel(std::size_t room = 4) : m_room(room) {}

    // Waits for room. What nobody wants any more is dropped.
    void Put(const PartPtr& part);
    void Put(platform::ComPtr<IUnknown> foreign);
    // Nothing follows; what is under way still arrives.
    void Close();
    // Cuts off who waits at either end; what is under way is dropped.
    void Abandon();

    [[nodiscard]] std::optional<GivenPart> Next() override;

  private:
    void Put(GivenPart given);
    [[nodiscard]] PartPtr HandOn(const PartPtr& part);

    const std::size_t m_room;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<GivenPart> m_waiting;
    bool m_closed = false;
    bool m_abandoned = false;
    // A part that a filter made may hang on several pages; it stays one.
    std::mutex m_handedLock;
    std::map<PartPtr, PartPtr> m_handed;
};

}  // namespace devkit::pipeline
