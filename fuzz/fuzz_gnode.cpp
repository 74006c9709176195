// The text of a settings node as the store keeps it. The input is the decoded stream, so the
// mutations reach the node reader instead of dying in the Base64 decoder; the raw input is
// also tried as text once. A node that is read must write back to the very same text.
#include <ki/log/LogConfig.h>
#include <ki/store/BuiltinTypes.h>
#include <ki/store/GNode.h>
#include <ki/store/Matrix4.h>

#include "fuzz_support.h"

namespace {

void read_every_attribute(const ki::store::GNode& node, int depth) {
    for (const auto& [key, value] : node.attributes.get_values()) {
        (void)node.get<int>(key, 0);
        (void)node.get<QString>(key, {});
        (void)ki::store::GAttributes::value_to_string(value);
        // The records a window node carries, as the windows read them back.
        (void)node.attributes.get_pod<ki::log::LogConfig>(key, {});
        (void)node.attributes.get_pod<ki::store::Matrix4>(key, {});
    }
    if (depth < 4)
        for (const auto& [name, child] : node.children) read_every_attribute(child, depth + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool ready = [] {
        ki::store::register_builtin_types();
        return fuzz::quiet_log();
    }();
    (void)ready;
    const QByteArray stream = fuzz::bytes(data, size);
    (void)ki::store::GNode::from_qstring(QString::fromLatin1(stream));

    const QString text = QString::fromLatin1(stream.toBase64());
    ki::GSysResult<ki::store::GNode> read = ki::store::GNode::from_qstring(text);
    if (!read.ok()) {
        fuzz::require(read.value.is_empty(), "a refused text gives an empty node");
        return 0;
    }
    const ki::store::GNode& node = read.value;
    read_every_attribute(node, 0);
    (void)node.get_md5_string(8);
    node.show(0);

    const QString written = ki::store::GNode::to_qstring(node);
    fuzz::require(!written.isEmpty(), "a node that was read can be written");
    const ki::GSysResult<ki::store::GNode> again = ki::store::GNode::from_qstring(written);
    fuzz::require(again.ok(), "what the store writes it reads back");
    fuzz::require(ki::store::GNode::to_qstring(again.value) == written, "a node writes the same text twice");
    return 0;
}
