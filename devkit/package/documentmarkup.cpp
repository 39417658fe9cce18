#include "devkit/package/documentmarkup.h"

#include <libxml/tree.h>

#include <cstddef>
#include <map>
#include <memory>
#include <new>
#include <sstream>
#include <unordered_map>

#include "devkit/common/error.h"
#include "devkit/common/xmlreader.h"
#include "devkit/common/xmlwriter.h"
#include "devkit/package/partname.h"

namespace devkit::package {

namespace {

using common::View;
using common::XmlText;
using common::XmlTextPtr;

constexpr std::string_view kCompatibility = "http://schemas.openxmlformats.org/markup-compatibility/2006";

// Tells which elements a consumer sees of alternate content (Markup Compatibility, 9.3): the first choice
// whose namespaces it understands, else the fallback.
class AlternateContent {
  public:
    // Whether the element belongs to a branch that is not taken. Call it for every element in turn.
    bool Skips(const common::XmlReader& reader) {
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
    static bool Understands(const common::XmlReader& reader) {
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

DocumentRoot RootOf(common::XmlReader& reader, const std::string& partName) {
    if (reader.NextElement() && IsEither(reader.Namespace(), &Vocabulary::markupNamespace)) {
        if (reader.LocalName() == "FixedDocumentSequence") return DocumentRoot::FixedDocumentSequence;
        if (reader.LocalName() == "FixedDocument") return DocumentRoot::FixedDocument;
    }
    throw common::Error("is neither a fixed document sequence nor a fixed document", partName);
}

// Takes the reference elements out of a tree and puts them back in another order.
class ReferenceRewriter {
  public:
    ReferenceRewriter(std::string_view markup, const std::string& partName)
        : m_partName(partName),
          m_document(common::ParseXml(markup, partName, common::Limits().page, common::Prefixes::Tolerated)),
          m_pRoot(xmlDocGetRootElement(m_document.get())) {
        m_element = View(m_pRoot->name) == "FixedDocument" ? "PageContent" : "DocumentReference";
        Collect(m_pRoot);
        for (const OwnedNode& node : m_nodes) xmlUnlinkNode(node.get());
    }

    void Append(const std::string& part) {
        const auto found = m_byKey.find(NameKey(part));
        if (found != m_byKey.end()) {
            xmlAddChild(m_pRoot, m_nodes[found->second].release());
            m_byKey.erase(found);
            return;
        }
        xmlNode* const pNew = xmlNewChild(m_pRoot, m_pRoot->ns, XmlText(m_element), nullptr);
        xmlNewProp(pNew, XmlText("Source"), XmlText(part.c_str()));
    }

    [[nodiscard]] std::string Markup() const {
        xmlChar* pText = nullptr;
        int size = 0;
        const char* const pEncoding = reinterpret_cast<const char*>(m_document->encoding);
        xmlDocDumpMemoryEnc(m_document.get(), &pText, &size, pEncoding == nullptr ? "utf-8" : pEncoding);
        const XmlTextPtr owner(pText);
        if (pText == nullptr) throw std::bad_alloc();
        return {reinterpret_cast<const char*>(pText), static_cast<std::size_t>(size)};
    }

  private:
    struct NodeFree {
        void operator()(xmlNode* pNode) const noexcept { xmlFreeNode(pNode); }
    };
    using OwnedNode = std::unique_ptr<xmlNode, NodeFree>;

    void Collect(xmlNode* pParent) {
        for (xmlNode* pNode = pParent->children; pNode != nullptr; pNode = pNode->next) {
            if (pNode->type != XML_ELEMENT_NODE) continue;
            if (View(pNode->name) != m_element) {
                Collect(pNode);
                continue;
            }
            const XmlTextPtr source(xmlGetNoNsProp(pNode, XmlText("Source")));
            m_byKey.try_emplace(NameKey(ResolveReference(m_partName, View(source.get()))), m_nodes.size());
            m_nodes.emplace_back(pNode);
        }
    }

    const std::string& m_partName;
    common::XmlDocument m_document;
    xmlNode* m_pRoot;
    const char* m_element = "";
    std::vector<OwnedNode> m_nodes;
    std::unordered_map<std::string, std::size_t> m_byKey;
};

}  // namespace

DocumentMarkup ParseDocumentMarkup(std::string_view markup, const std::string& partName,
                                   const common::XmlLimits& limits) {
    common::XmlReader reader(markup, partName, limits);
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
    common::XmlWriter writer;
    writer.StartElement(isSequence ? "FixedDocumentSequence" : "FixedDocument");
    writer.Attribute("xmlns", VocabularyOf(flavour).markupNamespace);
    for (const std::string& part : parts) {
        writer.StartElement(isSequence ? "DocumentReference" : "PageContent");
        writer.Attribute("Source", part);
        writer.EndElement();
    }
    return writer.Take();
}

std::string WithReferences(std::string_view markup, const std::string& partName,
                           const std::vector<std::string>& parts) {
    ReferenceRewriter rewriter(markup, partName);
    for (const std::string& part : parts) rewriter.Append(part);
    return rewriter.Markup();
}

}  // namespace devkit::package
