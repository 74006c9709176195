#pragma once
// A document of the plain XML the program's own files are written in, held flat: its elements
// in document order, names and attribute values as views into the bytes it was read from. It
// spares a reader that only looks the document up the nodes and strings of an XNode tree.

#include <ki/xml/XNode.h>

#include <QByteArray>
#include <QLatin1String>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ki::xml {

class XFlatDocument {
public:
    struct Attribute {
        QLatin1String name;
        QLatin1String value;
    };
    struct Element {
        QLatin1String name;
        std::uint32_t firstAttribute = 0;
        std::uint32_t attributeCount = 0;
        /// The index after the last element inside this one: its children start at the next
        /// index, and a child's own end leads to its next sibling.
        std::uint32_t end = 0;
    };

    /// Reads `bytes`, which the document keeps (shared, not copied). Returns false, leaving an
    /// empty document, when they lie outside the plain subset (see XStrictReader): then
    /// XNode::parse is the reader that decides.
    bool read(const QByteArray& bytes);
    /// Empties the document and lets go of the bytes. The room for elements and attributes
    /// stays for the next read unless it grew large.
    void clear();

    /// Empty until a read succeeded; the root is element 0.
    bool empty() const { return m_elements.empty(); }
    const std::vector<Element>& elements() const { return m_elements; }
    std::span<const Attribute> attributes(const Element& element) const {
        return {m_attributes.data() + element.firstAttribute, element.attributeCount};
    }
    /// The value of the attribute written exactly as `name`, or null.
    const QLatin1String* find_attribute(const Element& element, QLatin1String name) const {
        for (const Attribute& attribute : attributes(element))
            if (attribute.name == name) return &attribute.value;
        return nullptr;
    }

    /// The same document as the tree XNode::parse builds.
    std::unique_ptr<XNode> to_tree() const;

private:
    friend class XStrictReader;

    QByteArray m_bytes;
    std::vector<Element> m_elements;
    std::vector<Attribute> m_attributes;
};

}  // namespace ki::xml
