#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace devkit::package {

// Why a package cannot be read or written, as one line: "WHAT, WHERE", WHERE being a part, an entry or a
// file.
class PackageError : public std::runtime_error {
  public:
    PackageError(std::string_view what, std::string_view where);
};

// The storage fails, not what it holds: nothing that can be passed over.
class StorageError : public PackageError {
  public:
    using PackageError::PackageError;
};

}  // namespace devkit::package
