#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/device/variants.h"

namespace devkit::prntvpt {

// What becomes of names that are not public.
enum class PrivateNames { Known, Strict, All };
enum class StrictExtent { Features, Options };
enum class PrefixStyle { Standard, Mangled, DefaultNamespace, Local, Collide };
enum class ElementOrder { Device, Input, Reversed };
enum class Encoding { Utf8, Utf8WithMark, Utf16LittleEndian };
enum class Layout { None, Pretty, Comments };
enum class Orphans { Keep, Prune };
enum class Fallback { Default, Nearest };
enum class OptionProperties { Strip, KeepPerfect };
enum class ThreadRule { Enforce, Warn, Off };

// How the provider behaves where its documentation leaves room. control.h describes each.
struct Switches {
    PrivateNames privateNames = PrivateNames::Known;
    StrictExtent strictExtent = StrictExtent::Features;
    PrefixStyle prefixes = PrefixStyle::Standard;
    ElementOrder order = ElementOrder::Device;
    Encoding encoding = Encoding::Utf8;
    Layout layout = Layout::None;
    printschema::Duplicates duplicates = printschema::Duplicates::Refuse;
    printschema::MixedValues mixedValues = printschema::MixedValues::KeepFirst;
    Orphans orphans = Orphans::Keep;
    Fallback fallback = Fallback::Default;
    OptionProperties optionProperties = OptionProperties::Strip;
    bool dropIsConflict = false;
    ThreadRule threadRule = ThreadRule::Enforce;
    Variants variants;
};

// Sets one switch. std::invalid_argument, one line, when there is no such key or value.
void SetSwitch(Switches& behaviour, std::string_view key, std::string_view value);

// Every switch as "KEY=VALUE", in a fixed order.
[[nodiscard]] std::vector<std::string> DescribeSwitches(const Switches& behaviour);

}  // namespace devkit::prntvpt
