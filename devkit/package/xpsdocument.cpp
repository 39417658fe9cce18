#include "devkit/package/xpsdocument.h"

#include <utility>

#include "devkit/package/documentreader.h"
#include "devkit/package/treewriter.h"

namespace devkit::package {

XpsDocument XpsDocument::Open(const std::filesystem::path& file, const common::Limits& limits) {
    return Open(Package::Open(file, limits));
}

XpsDocument XpsDocument::Open(Package package) {
    XpsDocument document(std::move(package));
    DocumentReader reader(document.m_package);
    static_cast<XpsTree&>(document) = reader.Read();
    document.m_before = StoredTree(document);
    document.m_flavour = reader.GetFlavour();
    document.m_findings = reader.Findings();
    return document;
}

std::string XpsDocument::ReadMarkup(const FixedPage& page) const {
    return page.markup ? page.markup->Read() : m_package.Read(page.name);
}

std::string XpsDocument::AddPart(std::string_view wantedName, std::string_view contentType,
                                 common::Content bytes) {
    return m_package.Add(wantedName, contentType, std::move(bytes));
}

void XpsDocument::Save(const std::filesystem::path& file) & {
    ApplyTree();
    m_package.Save(file);
}

void XpsDocument::Save(common::ByteSink& sink) & {
    ApplyTree();
    m_package.Save(sink);
}

void XpsDocument::Save(const std::filesystem::path& file) && { TakePackage().Save(file); }
void XpsDocument::Save(common::ByteSink& sink) && { TakePackage().Save(sink); }

bool XpsDocument::WriteTree() {
    if (m_before.Is(*this)) return false;
    TreeWriter(m_package, m_flavour).Apply(m_before.Load(), *this);
    return true;
}

void XpsDocument::ApplyTree() {
    if (WriteTree()) m_before = StoredTree(*this);
}

Package&& XpsDocument::TakePackage() {
    WriteTree();
    static_cast<XpsTree&>(*this) = {};
    m_before = {};
    return std::move(m_package);
}

}  // namespace devkit::package
