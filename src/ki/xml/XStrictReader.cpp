#include "XStrictReader.h"

namespace ki::xml {

namespace {

constexpr std::string_view SVG_NAMESPACE = "http://www.w3.org/2000/svg";

bool is_space(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool is_name_start(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool is_name_char(char c) {
    return is_name_start(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// Printable ASCII: nothing to decode, normalise or reject.
bool is_plain(char c) {
    return c >= 0x20 && c <= 0x7e;
}

QString latin1(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

bool equals_ignoring_case(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

}  // namespace

std::unique_ptr<XNode> XStrictReader::read(const QByteArray& bytes) {
    return XStrictReader(bytes).read_document();
}

const QString& XStrictReader::intern(std::string_view name) {
    for (const auto& [text, shared] : names)
        if (text == name) return shared;
    return names.emplace_back(name, latin1(name)).second;
}

void XStrictReader::skip_spaces() {
    while (p < end && is_space(*p)) ++p;
}

std::unique_ptr<XNode> XStrictReader::read_document() {
    if (at("<?xml") && !read_declaration()) return nullptr;
    if (!skip_misc() || p + 1 >= end || *p != '<' || !is_name_start(p[1])) return nullptr;

    std::unique_ptr<XNode> root;
    // Open elements, innermost last; owned by `root`'s tree.
    std::vector<XNode*> open;
    do {
        if (*p != '<') {
            // Only white space between tags: text of any other kind is left to the full reader.
            while (p < end && is_space(*p)) ++p;
            if (p == end || *p != '<') return nullptr;
            continue;
        }
        if (p + 1 >= end) return nullptr;
        if (p[1] == '/') {
            if (!read_end_tag(*open.back())) return nullptr;
            open.pop_back();
        } else if (at("<!--")) {
            if (!read_comment()) return nullptr;
        } else if (is_name_start(p[1])) {
            ++p;
            bool empty = false;
            std::unique_ptr<XNode> node = read_start_tag(empty);
            if (!node) return nullptr;
            XNode* added = nullptr;
            if (!root) {
                root = std::move(node);
                added = root.get();
            } else {
                added = open.back()->append_child(std::move(node));
            }
            if (!empty) open.push_back(added);
        } else {
            return nullptr;
        }
    } while (!open.empty() && p < end);
    if (!open.empty() || !skip_misc() || p != end) return nullptr;
    return root;
}

bool XStrictReader::read_declaration() {
    p += 5;
    if (p == end || !is_space(*p)) return false;
    std::string_view version;
    if (!read_pseudo_attribute("version", version) || version != "1.0") return false;
    const char* mark = p;
    std::string_view encoding;
    if (read_pseudo_attribute("encoding", encoding)) {
        if (!equals_ignoring_case(encoding, "utf-8")) return false;
        mark = p;
    }
    p = mark;
    std::string_view standalone;
    if (read_pseudo_attribute("standalone", standalone)) {
        if (standalone != "yes" && standalone != "no") return false;
    } else {
        p = mark;
    }
    skip_spaces();
    if (!at("?>")) return false;
    p += 2;
    return true;
}

bool XStrictReader::read_pseudo_attribute(std::string_view name, std::string_view& value) {
    const char* start = p;
    skip_spaces();
    if (p == start || !at(name)) return false;
    p += name.size();
    skip_spaces();
    if (p == end || *p != '=') return false;
    ++p;
    skip_spaces();
    return read_quoted(value);
}

bool XStrictReader::skip_misc() {
    while (p < end) {
        if (is_space(*p)) {
            ++p;
        } else if (at("<!--")) {
            if (!read_comment()) return false;
        } else {
            return true;
        }
    }
    return true;
}

bool XStrictReader::read_comment() {
    for (p += 4; p + 1 < end; ++p) {
        if (p[0] == '-' && p[1] == '-') {
            // "--" may only end the comment.
            if (p + 2 >= end || p[2] != '>') return false;
            p += 3;
            return true;
        }
        if (!is_plain(*p) && !is_space(*p)) return false;
    }
    return false;
}

std::unique_ptr<XNode> XStrictReader::read_start_tag(bool& empty) {
    std::string_view name;
    if (!read_name(name)) return nullptr;
    auto node = std::make_unique<XNode>(intern(name));
    bool namespaceSeen = false;
    while (true) {
        const char* beforeSpaces = p;
        skip_spaces();
        if (p == end) return nullptr;
        if (*p == '>') {
            ++p;
            return node;
        }
        if (*p == '/') {
            if (p + 1 >= end || p[1] != '>') return nullptr;
            p += 2;
            empty = true;
            return node;
        }
        std::string_view key;
        std::string_view value;
        if (p == beforeSpaces || !read_name(key)) return nullptr;
        skip_spaces();
        if (p == end || *p != '=') return nullptr;
        ++p;
        skip_spaces();
        if (!read_quoted(value)) return nullptr;
        if (key == "xmlns") {
            // QXmlStreamReader reports a namespace declaration apart from the attributes.
            if (namespaceSeen || value != SVG_NAMESPACE) return nullptr;
            namespaceSeen = true;
            continue;
        }
        // A repeated attribute is an error for the full reader to report.
        const QString& keyText = intern(key);
        if (node->has_attrib(keyText)) return nullptr;
        node->attributes.insert(keyText, latin1(value));
    }
}

bool XStrictReader::read_end_tag(const XNode& open) {
    p += 2;
    std::string_view name;
    if (!read_name(name) || open.name != QLatin1String(name.data(), static_cast<qsizetype>(name.size())))
        return false;
    skip_spaces();
    if (p == end || *p != '>') return false;
    ++p;
    return true;
}

bool XStrictReader::read_name(std::string_view& name) {
    if (p == end || !is_name_start(*p)) return false;
    const char* start = p;
    while (p < end && is_name_char(*p)) ++p;
    // A prefix needs namespace processing: the full reader's job.
    if (p < end && *p == ':') return false;
    name = std::string_view(start, static_cast<size_t>(p - start));
    return true;
}

bool XStrictReader::read_quoted(std::string_view& value) {
    if (p == end || (*p != '"' && *p != '\'')) return false;
    const char quote = *p++;
    const char* start = p;
    // White space other than blanks is normalised in attribute values, '&' starts a reference
    // and '<' is an error: all left to the full reader.
    while (p < end && *p != quote) {
        if (!is_plain(*p) || *p == '<' || *p == '&') return false;
        ++p;
    }
    if (p == end) return false;
    value = std::string_view(start, static_cast<size_t>(p - start));
    ++p;
    return true;
}

}  // namespace ki::xml
