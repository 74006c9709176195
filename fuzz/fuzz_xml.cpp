// Any bytes as an XML document: either a tree whose links hold together, or a refusal that
// leaves no tree behind.
#include <ki/algo/Visitor.h>
#include <ki/xml/XNode.h>
#include <ki/xml/XNodeText.h>


#include "fuzz_support.h"

namespace {

struct Children {
    static std::size_t child_count(const ki::xml::XNode* node) { return node->children.size(); }
    static const ki::xml::XNode* child_at(const ki::xml::XNode* node, std::size_t index) {
        return node->children[index].get();
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = fuzz::quiet_log();
    (void)quiet;
    const ki::xml::XNodeResult parsed = fuzz::parse_xml(data, size);
    if (!parsed.ok()) {
        fuzz::require(parsed.value == nullptr, "a failed parse leaves no tree");
        fuzz::require(parsed.has_message(), "a failed parse says why");
        return 0;
    }
    const ki::xml::XNode* root = parsed.value.get();
    fuzz::require(root->parent == nullptr, "the root has no parent");
    fuzz::require(!root->name.isEmpty(), "the root is an element");
    ki::algo::tree::Visitor<Children, const ki::xml::XNode*> visitor([](const ki::xml::XNode* node) {
        for (const auto& child : node->children) fuzz::require(child->parent == node, "child links back");
        const bool isText = dynamic_cast<const ki::xml::XNodeText*>(node) != nullptr;
        fuzz::require(!isText || (node->children.empty() && node->attributes.empty()),
                      "a text node is a leaf without attributes");
        fuzz::require(isText || !node->name.isEmpty(), "an element has a name");
        // A repeated attribute keeps its first value only, so every name appears once.
        for (const auto& [key, value] : node->attributes)
            fuzz::require(node->get_attrib_string(key, QStringLiteral("\x01")) == value,
                          "attribute names unique");
        (void)node->to_string();
    });
    visitor.walk_dfs(root);
    root->dump(0);
    return 0;
}
