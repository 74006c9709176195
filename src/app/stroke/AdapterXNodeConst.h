#pragma once
// Lets the tree visitor walk a read-only XML document.

#include <ki/xml/XNode.h>

#include <cstddef>

namespace morvel {

/// The children of a `const XNode*` for `ki::algo::tree::Visitor`: its element and text
/// children in document order.
struct AdapterXNodeConst {
    static std::size_t child_count(const ki::xml::XNode* node) { return node->children.size(); }
    static const ki::xml::XNode* child_at(const ki::xml::XNode* node, std::size_t index) {
        return node->children[index].get();
    }
};

}  // namespace morvel
