#pragma once

#include "platform/windows.h"

#include <cstdint>

#include "base/xps/printschema/schemabase.h"
#include "platform/prntvpt.h"

namespace base::xps::printschema {

// What part of a job a ticket, or a feature in it, is for.
enum class Scope : std::int32_t {
    None = 0,
    Job = 1,
    Document = 2,
    Page = 3,
};

// By meaning: the platform counts the other way round. std::logic_error for None and for any other value that
// is no scope.
[[nodiscard]] EPrintTicketScope ToPrintTicketScope(Scope scope);

// The one instance of a list, built on first use and never again.
template <typename List>
class KeywordList : public SchemaBase {
  public:
    [[nodiscard]] static const List& Instance() {
        static const List kList;
        return kList;
    }
};

// A feature that a ticket may hold for each scope has its names for the job, the document and the page at the
// indices 0, 1 and 2, the scope minus one; any other feature has one name, at index 0.
class PageMediaSizeFeatureNames final : public KeywordList<PageMediaSizeFeatureNames> {
    friend class KeywordList<PageMediaSizeFeatureNames>;
    PageMediaSizeFeatureNames();
};

// The keywords of the media size table: a media size's id is its index.
class MediaSizeOptionNames final : public KeywordList<MediaSizeOptionNames> {
    friend class KeywordList<MediaSizeOptionNames>;
    MediaSizeOptionNames();
};

class InputBinFeatureNames final : public KeywordList<InputBinFeatureNames> {
    friend class KeywordList<InputBinFeatureNames>;
    InputBinFeatureNames();
};

class InputBinOptionNames final : public KeywordList<InputBinOptionNames> {
    friend class KeywordList<InputBinOptionNames>;
    InputBinOptionNames();
};

class FeedDirectionOptionNames final : public KeywordList<FeedDirectionOptionNames> {
    friend class KeywordList<FeedDirectionOptionNames>;
    FeedDirectionOptionNames();
};

class PageOrientationFeatureNames final : public KeywordList<PageOrientationFeatureNames> {
    friend class KeywordList<PageOrientationFeatureNames>;
    PageOrientationFeatureNames();
};

class PageOrientationOptionNames final : public KeywordList<PageOrientationOptionNames> {
    friend class KeywordList<PageOrientationOptionNames>;
    PageOrientationOptionNames();
};

class PageScalingFeatureNames final : public KeywordList<PageScalingFeatureNames> {
    friend class KeywordList<PageScalingFeatureNames>;
    PageScalingFeatureNames();
};

// The only list of two namespaces: its last option is the maker's own.
class PageScalingOptionNames final : public KeywordList<PageScalingOptionNames> {
    friend class KeywordList<PageScalingOptionNames>;
    PageScalingOptionNames();
};

class PrintableMediaSizeFeatureNames final : public KeywordList<PrintableMediaSizeFeatureNames> {
    friend class KeywordList<PrintableMediaSizeFeatureNames>;
    PrintableMediaSizeFeatureNames();
};

// The options of the printable media size: there is one, and its properties tell the sizes.
class PrintableMediaSizePropertyNames final : public KeywordList<PrintableMediaSizePropertyNames> {
    friend class KeywordList<PrintableMediaSizePropertyNames>;
    PrintableMediaSizePropertyNames();
};

}  // namespace base::xps::printschema
