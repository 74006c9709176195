#include <ki/xml/XFlatDocument.h>

#include <utility>

#include "XStrictReader.h"

namespace ki::xml {

bool XFlatDocument::read(const QByteArray& bytes) {
    clear();
    m_bytes = bytes;
    if (XStrictReader::read(m_bytes, *this)) return true;
    clear();
    return false;
}

void XFlatDocument::clear() {
    // A hostile document may have needed megabytes: those are not kept.
    constexpr size_t KEPT = 1024;
    m_bytes.clear();
    if (m_elements.capacity() > KEPT || m_attributes.capacity() > KEPT) {
        m_elements = {};
        m_attributes = {};
    }
    m_elements.clear();
    m_attributes.clear();
}

std::unique_ptr<XNode> XFlatDocument::to_tree() const {
    // The same QString for every occurrence of a name, so repeated element and attribute names
    // share one allocation.
    std::vector<std::pair<QLatin1String, QString>> names;
    const auto intern = [&names](QLatin1String name) -> const QString& {
        for (const auto& [text, shared] : names)
            if (text == name) return shared;
        return names.emplace_back(name, QString(name)).second;
    };
    std::unique_ptr<XNode> root;
    // The elements whose subtree is still being filled, innermost last, with their ends.
    std::vector<std::pair<XNode*, std::uint32_t>> open;
    for (std::uint32_t i = 0; i < m_elements.size(); ++i) {
        const Element& element = m_elements[i];
        while (!open.empty() && open.back().second <= i) open.pop_back();
        auto node = std::make_unique<XNode>(intern(element.name));
        node->attributes.reserve(element.attributeCount);
        for (const Attribute& attribute : attributes(element))
            node->attributes.insert(intern(attribute.name), QString(attribute.value));
        XNode* added = nullptr;
        if (open.empty()) {
            root = std::move(node);
            added = root.get();
        } else {
            added = open.back().first->append_child(std::move(node));
        }
        open.emplace_back(added, element.end);
    }
    return root;
}

}  // namespace ki::xml
