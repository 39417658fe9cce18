#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "devkit/common/limits.h"

namespace devkit::package {

// The content types of a package: a default for each file name extension and overrides for single parts,
// neither minding letter case (OPC, 7.2.3).
class ContentTypes {
  public:
    // What XPS producers declare, for a package whose own content types cannot be read.
    [[nodiscard]] static ContentTypes Customary();
    // Throws common::Error when the markup cannot be read.
    [[nodiscard]] static ContentTypes Parse(std::string_view markup, const common::XmlLimits& limits);

    // Without parameters; empty when none is declared.
    [[nodiscard]] std::string Of(std::string_view partName) const;
    // Declares the type of one part, by an override unless the default says the same. Whether anything had to
    // change.
    bool Declare(std::string_view partName, std::string_view contentType);
    // Drops the override of a part. Whether there was one.
    bool Forget(std::string_view partName);
    // UTF-8, defaults first, each kind in the order in which it was declared.
    [[nodiscard]] std::string Markup() const;

  private:
    struct Declaration {
        std::string name;  // an extension or a part name, as written
        std::string type;
    };
    // Declarations in order, found by key; of two with one key the first counts.
    struct Table {
        std::vector<Declaration> declarations;
        std::unordered_map<std::string, std::size_t> byKey;
    };

    static const Declaration* Find(const Table& table, const std::string& key);
    static void Put(Table& table, const std::string& key, Declaration declaration);

    Table m_defaults;
    Table m_overrides;
};

}  // namespace devkit::package
