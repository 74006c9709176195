#include <ki/xml/XNodeText.h>

namespace ki::xml {

QString XNodeText::to_string() const {
    return XNode::to_string() + "text:'" + text + "'";
}

}  // namespace ki::xml
