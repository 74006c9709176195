#pragma once
// A run of character data inside an element.

#include <ki/xml/XNode.h>

namespace ki::xml {

/// One run of character data exactly as the reader delivered it (entities resolved, not
/// trimmed). It has no name, no attributes and no children.
class XNodeText : public XNode {
public:
    XNodeText() = default;
    explicit XNodeText(const QString& text) : text(text) {}

    /// The element form (empty for a text node) followed by "text:'<text>'".
    QString to_string() const override;

    QString text;
};

}  // namespace ki::xml
