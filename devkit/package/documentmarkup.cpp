#include "devkit/package/documentmarkup.h"

#include <cstddef>
#include <map>
#include <sstream>

#include "devkit/package/packageerror.h"
#include "devkit/package/xmlreader.h"
#include "devkit/package/xmltext.h"

namespace devkit::package {

namespace {

constexpr std::string_view kCompatibility = "http://schemas.openxmlformats.org/markup-compatibility/2006";

// Tells which elements a consumer sees of alternate content (Markup Compatibility, 9.3): the first choice
// whose namespaces it understands, else the fallback.
class AlternateContent {
  public:
    // Whether the element belongs to a branch that is not taken. Call it for every element in turn.
    bool Skips(const XmlReader& reader) {
        const int depth = reader.Depth();
        if (m_skippedDepth >= 0 && depth > m_skippedDepth) return true;
        m_skippedDepth = -1;
        if (reader.Namespace() != kCompatibility) return false;
        const std::string name = reader.LocalName();
        if (name == "AlternateContent") {
            m_taken[depth] = false;
        } else if (name == "Choice" || name == "Fallback") {
            bool& taken = m_taken[depth - 1];
            const bool takes = !taken && (name == "Fallback" || Understands(reader));
            taken = taken || takes;
            if (!takes) m_skippedDepth = depth;
        }
        return true;
    }

  private:
    static bool Understands(const XmlReader& reader) {
        std::istringstream prefixes(reader.Attribute("Requires").value_or(""));
        std::string prefix;
        bool any = false;
        while (prefixes >> prefix) {
            any = true;
            if (!IsEither(reader.NamespaceOf(prefix), &Vocabulary::markupNamespace)) return false;
        }
        return any;
    }

    int m_skippedDepth = -1;
    std::map<int, bool> m_taken;  // by the depth of the alternate content
};

DocumentRoot RootOf(XmlReader& reader, const std::string& partName) {
    if (reader.NextElement() && IsEither(reader.Namespace(), &Vocabulary::markupNamespace)) {
        if (reader.LocalName() == "FixedDocumentSequence") return DocumentRoot::FixedDocumentSequence;
        if (reader.LocalName() == "FixedDocument") return DocumentRoot::FixedDocument;
    }
    throw PackageError("is neither a fixed document sequence nor a fixed document", partName);
}

}  // namespace

DocumentMarkup ParseDocumentMarkup(std::string_view markup, const std::string& partName,
                                   const Limits& limits) {
    XmlReader reader(markup, partName, limits);
    DocumentMarkup parsed;
    parsed.root = RootOf(reader, partName);
    const char* const pElement =
        parsed.root == DocumentRoot::FixedDocumentSequence ? "DocumentReference" : "PageContent";
    AlternateContent alternate;
    while (reader.NextElement()) {
        if (alternate.Skips(reader) || reader.LocalName() != pElement) continue;
        if (!IsEither(reader.Namespace(), &Vocabulary::markupNamespace)) continue;
        parsed.references.push_back(reader.Attribute("Source").value_or(""));
    }
    return parsed;
}

std::string NewDocumentMarkup(Flavour flavour, DocumentRoot root, const std::vector<std::string>& parts) {
    const bool isSequence = root == DocumentRoot::FixedDocumentSequence;
    const std::string name = isSequence ? "FixedDocumentSequence" : "FixedDocument";
    std::string markup = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<" + name + " xmlns=\"";
    markup += VocabularyOf(flavour).markupNamespace;
    markup += "\">";
    for (const std::string& part : parts) {
        markup += isSequence ? "<DocumentReference" : "<PageContent";
        markup += " Source=\"" + EscapedAttribute(part) + "\"/>";
    }
    return markup + "</" + name + ">";
}

}  // namespace devkit::package
