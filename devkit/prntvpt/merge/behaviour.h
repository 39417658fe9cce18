#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "devkit/printschema/reader.h"

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

enum class BinScope { Job, Document, Page };
enum class FeedStatement { ScoredProperty, Property, Absent };
enum class ImageableArea { Oriented, Portrait, Absent };

// How the device differs from its model.
struct Variants {
    BinScope bins = BinScope::Job;
    bool noScaling = false;
    bool noCopies = false;
    FeedStatement feed = FeedStatement::ScoredProperty;
    ImageableArea imageable = ImageableArea::Oriented;
    bool letterDefault = false;
    unsigned snapshotBytes = 0;
    bool privateSizeNames = false;
};

// How the provider behaves where its documentation leaves room. control.h describes each.
struct Switches {
    PrivateNames privateNames = PrivateNames::Known;
    StrictExtent strictExtent = StrictExtent::Features;
    PrefixStyle prefixes = PrefixStyle::Standard;
    ElementOrder order = ElementOrder::Device;
    Encoding encoding = Encoding::Utf8;
    Layout layout = Layout::None;
    Duplicates duplicates = Duplicates::Refuse;
    MixedValues mixedValues = MixedValues::KeepFirst;
    Orphans orphans = Orphans::Keep;
    Fallback fallback = Fallback::Default;
    OptionProperties optionProperties = OptionProperties::Strip;
    bool dropIsConflict = false;
    ThreadRule threadRule = ThreadRule::Enforce;
    Variants variants;
};

// Sets one switch. std::invalid_argument, one line, when there is no such key or value.
void SetSwitch(Switches& switches, std::string_view key, std::string_view value);

// Every switch as "KEY=VALUE", in a fixed order.
[[nodiscard]] std::vector<std::string> DescribeSwitches(const Switches& switches);

}  // namespace devkit::prntvpt
