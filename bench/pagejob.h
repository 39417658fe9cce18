#pragma once

#include "platform/windows.h"

#include <string>

#include "base/xps/printschema/usertoken.h"
#include "mockparts.h"
#include "mockpipeline.h"
#include "mockproperties.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

namespace bench {

// The print tickets of the pages of a job.
enum class PageTickets {
    None,
    Same,   // each page has one, with the text of the page before
    Other,  // each page has one, with another text than the page before
};

// A job of pages that need nothing done to them, between mocks of the pipeline. The platform's print ticket
// provider costs nothing (platformprovider.cpp). A job is run once, by one of the two functions; both give
// the seconds that it took, or throw.
class PageJob {
  public:
    PageJob(int pages, PageTickets tickets);

    // Through the filter, from StartOperation to its end.
    double RunFilter();

    // What no filter that merges tickets can leave out: each page taken and sent, and for one with a ticket
    // that ticket loaded, a stream on the wider ticket and one on this, the platform asked and its result
    // loaded.
    double RunBare();

  private:
    void Carry(IFixedPage* pPage, IXMLDOMDocument2* pWider);

    int m_pageCount;
    tests::CallRecorder m_calls;
    tests::OwnedHandle m_user = tests::MakeUserToken();
    platform::ComPtr<tests::MockDocumentProvider> m_reader;
    platform::ComPtr<tests::MockDocumentConsumer> m_writer;
};

}  // namespace bench
