#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <unordered_map>

#include "devkit/package/documentmarkup.h"
#include "devkit/package/packageerror.h"
#include "devkit/package/partname.h"
#include "devkit/package/xmltext.h"

namespace devkit::package {

namespace {

struct DocumentFree {
    void operator()(xmlDoc* pDocument) const noexcept { xmlFreeDoc(pDocument); }
};
using DocumentPtr = std::unique_ptr<xmlDoc, DocumentFree>;

// Takes the reference elements out of a tree and puts them back in another order.
class ReferenceRewriter {
  public:
    ReferenceRewriter(std::string_view markup, const std::string& partName)
        : m_partName(partName),
          m_document(xmlReadMemory(markup.data(), static_cast<int>(markup.size()), nullptr, nullptr,
                                   XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING)) {
        m_pRoot = m_document ? xmlDocGetRootElement(m_document.get()) : nullptr;
        if (m_pRoot == nullptr || m_document->intSubset != nullptr)
            throw PackageError("cannot be rewritten", partName);
        m_element = TextOf(m_pRoot->name) == "FixedDocument" ? "PageContent" : "DocumentReference";
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
        if (pText == nullptr) throw PackageError("cannot be rewritten", m_partName);
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
            if (TextOf(pNode->name) != m_element) {
                Collect(pNode);
                continue;
            }
            const XmlTextPtr source(xmlGetNoNsProp(pNode, XmlText("Source")));
            m_byKey.try_emplace(NameKey(ResolveReference(m_partName, TextOf(source.get()))), m_nodes.size());
            m_nodes.emplace_back(pNode);
        }
    }

    const std::string& m_partName;
    DocumentPtr m_document;
    xmlNode* m_pRoot = nullptr;
    const char* m_element = "";
    std::vector<OwnedNode> m_nodes;
    std::unordered_map<std::string, std::size_t> m_byKey;
};

}  // namespace

std::string WithReferences(std::string_view markup, const std::string& partName,
                           const std::vector<std::string>& parts) {
    if (markup.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw PackageError("is too large for markup", partName);
    ReferenceRewriter rewriter(markup, partName);
    for (const std::string& part : parts) rewriter.Append(part);
    return rewriter.Markup();
}

}  // namespace devkit::package
