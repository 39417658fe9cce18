#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "devkit/filterhost/runevent.h"
#include "devkit/filterhost/settings.h"
#include "devkit/filterhost/ticketprovider.h"
#include "devkit/msxml/com/domregistration.h"
#include "devkit/package/xpsdocument.h"
#include "devkit/pipeline/filtermodule.h"
#include "devkit/pipeline/filterrun.h"

namespace devkit::filterhost {

// Sends documents through a filter, each in a run of its own, and writes what comes out. The thread that
// makes it, runs it and destroys it stands in the multithreaded apartment.
class HostedRun {
  public:
    // Loads the print ticket provider and the filter, in this order. `settings` must outlive the object.
    // Throws UsageError for settings that make no sense, pipeline::FilterError for a DLL that is of no use.
    HostedRun(const HostSettings& settings, const EventSink& sink);
    // The same with a provider that was made for these settings; only the last one made is of any use.
    HostedRun(const HostSettings& settings, std::shared_ptr<TicketProvider> provider, const EventSink& sink);
    ~HostedRun();

    // Runs the filter over one document and tells what happens, Finished excepted; the output appears only
    // when it is whole. False when the run was abandoned: then threads of the filter are left that may still
    // tell, and neither the sink nor this object may go.
    [[nodiscard]] bool Run(const Job& job, const EventSink& sink);

    // Cancels the run that goes on as a user cancels a print job, and every later one; any thread may call.
    void Cancel();

  private:
    // What was measured of the filters is put into `times`.
    [[nodiscard]] bool RunFilter(const std::shared_ptr<package::XpsDocument>& document, const Job& job,
                                 const EventSink& sink, std::optional<RunTimes>& times);
    [[nodiscard]] RunTimes TimesOf(const std::vector<pipeline::RunOutcome>& outcomes) const;
    [[nodiscard]] const pipeline::Bytes& UserTicketOf(const Job& job) const;
    [[nodiscard]] pipeline::RunOptions MakeOptions() const;
    // The texts of tickets are not kept in a run of more than kMaxRecordedPages pages: the report would grow
    // with each.
    [[nodiscard]] bool RecordsTickets(std::size_t pages) const;
    [[nodiscard]] std::vector<pipeline::ChainedFilter> MakeChain(const EventSink& sink,
                                                                 bool recordsTickets) const;

    static constexpr std::size_t kMaxRecordedPages = 2000;

    const HostSettings& m_settings;
    const std::shared_ptr<TicketProvider> m_provider;
    std::vector<std::shared_ptr<pipeline::FilterSource>> m_filters;
    const PrinterHandle m_printer;
    pipeline::Bytes m_userTicket;
    pipeline::Bytes m_deviceCapabilities;  // null when there are none
    std::shared_ptr<void> m_xmlClasses;    // null where the system's own serve

    std::mutex m_lock;
    std::shared_ptr<pipeline::FilterRun> m_run;
    bool m_cancelled = false;
};

// Throws UsageError for what can be told to be wrong before a filter is run. `filterOption` is what names a
// filter where no pipeline configuration does.
void CheckHost(const HostSettings& settings, const char* filterOption);

// What a user's ticket is, read and found to be one. Throws UsageError.
[[nodiscard]] std::string ReadUserTicket(const std::filesystem::path& path);
// The bytes of --device-capabilities. Throws UsageError.
[[nodiscard]] std::string ReadDeviceCapabilities(const std::filesystem::path& path);

}  // namespace devkit::filterhost
