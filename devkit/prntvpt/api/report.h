#pragma once

#include <string>

#include "devkit/prntvpt/api/configuration.h"
#include "devkit/prntvpt/api/handleregistry.h"
#include "devkit/prntvpt/api/providerlog.h"

namespace devkit::prntvpt {

// The JSON of the report that control.h describes. Without a configuration its entry is null.
[[nodiscard]] std::string WriteReport(const Configuration* pConfiguration, const CallLog& log,
                                      const HandleRegistry& handles);

}  // namespace devkit::prntvpt
