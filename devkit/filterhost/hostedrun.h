#pragma once

#include <filesystem>
#include <memory>

#include "devkit/filterhost/runresult.h"
#include "devkit/filterhost/settings.h"
#include "devkit/filterhost/ticketprovider.h"
#include "devkit/pipeline/filtermodule.h"

namespace devkit::filterhost {

// Sends documents through one filter, each in a run of its own, and writes what comes out.
class HostedRun {
  public:
    // What is given must outlive the object. Throws UsageError when the user's ticket cannot be read.
    HostedRun(const RunSettings& settings, TicketProvider& provider,
              std::shared_ptr<pipeline::FilterSource> filter);

    // Runs the filter over one document; the output appears only when it is whole. All that can go wrong is
    // in the result.
    [[nodiscard]] RunResult Run(const std::filesystem::path& input, const std::filesystem::path& output);

  private:
    void RunFilter(const std::shared_ptr<package::XpsDocument>& document, RunResult& result);
    [[nodiscard]] pipeline::RunOptions MakeOptions() const;
    void LookAtPages(RunResult& result) const;

    const RunSettings& m_settings;
    TicketProvider& m_provider;
    const std::shared_ptr<pipeline::FilterSource> m_filter;
    const PrinterHandle m_printer;
    pipeline::Bytes m_userTicket;
};

}  // namespace devkit::filterhost
