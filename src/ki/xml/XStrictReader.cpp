#include "XStrictReader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

QLatin1String latin1(std::string_view text) {
    return QLatin1String(text.data(), static_cast<qsizetype>(text.size()));
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
    XFlatDocument document;
    return document.read(bytes) ? document.to_tree() : nullptr;
}

bool XStrictReader::read(const QByteArray& bytes, XFlatDocument& document) {
    // Room for the elements and attributes of most stroke files; more grow as needed. Larger
    // reservations leave the allocator's per-thread cache of small blocks and cost more.
    constexpr size_t EXPECTED = 32;
    document.m_elements.reserve(std::max(EXPECTED, document.m_elements.capacity()));
    document.m_attributes.reserve(std::max(EXPECTED, document.m_attributes.capacity()));
    return XStrictReader(bytes, document).read_document();
}

void XStrictReader::skip_spaces() {
    while (p < end && is_space(*p)) ++p;
}

bool XStrictReader::read_document() {
    if (at("<?xml") && !read_declaration()) return false;
    if (!skip_misc() || p + 1 >= end || *p != '<' || !is_name_start(p[1])) return false;

    std::vector<XFlatDocument::Element>& elements = doc.m_elements;
    // Open elements by index, innermost last.
    std::vector<std::uint32_t> open;
    do {
        if (*p != '<') {
            // Only white space between tags: text of any other kind is left to the full reader.
            while (p < end && is_space(*p)) ++p;
            if (p == end || *p != '<') return false;
            continue;
        }
        if (p + 1 >= end) return false;
        if (p[1] == '/') {
            XFlatDocument::Element& element = elements[open.back()];
            if (!read_end_tag(std::string_view(element.name.data(), size_t(element.name.size()))))
                return false;
            element.end = static_cast<std::uint32_t>(elements.size());
            open.pop_back();
        } else if (at("<!--")) {
            if (!read_comment()) return false;
        } else if (is_name_start(p[1])) {
            ++p;
            bool empty = false;
            if (!read_start_tag(empty)) return false;
            const auto added = static_cast<std::uint32_t>(elements.size() - 1);
            if (empty)
                elements.back().end = added + 1;
            else
                open.push_back(added);
        } else {
            return false;
        }
    } while (!open.empty() && p < end);
    return open.empty() && skip_misc() && p == end;
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

bool XStrictReader::read_start_tag(bool& empty) {
    std::string_view name;
    if (!read_name(name)) return false;
    std::vector<XFlatDocument::Attribute>& attributes = doc.m_attributes;
    // Indices are 32 bits wide: a document that needs more is no plain one.
    if (doc.m_elements.size() >= UINT32_MAX || attributes.size() >= UINT32_MAX) return false;
    const auto firstAttribute = static_cast<std::uint32_t>(attributes.size());
    doc.m_elements.push_back({latin1(name), firstAttribute, 0, 0});
    bool namespaceSeen = false;
    while (true) {
        const char* beforeSpaces = p;
        skip_spaces();
        if (p == end) return false;
        if (*p == '>') {
            ++p;
            break;
        }
        if (*p == '/') {
            if (p + 1 >= end || p[1] != '>') return false;
            p += 2;
            empty = true;
            break;
        }
        std::string_view key;
        std::string_view value;
        if (p == beforeSpaces || !read_name(key)) return false;
        skip_spaces();
        if (p == end || *p != '=') return false;
        ++p;
        skip_spaces();
        if (!read_quoted(value)) return false;
        if (key == "xmlns") {
            // QXmlStreamReader reports a namespace declaration apart from the attributes.
            if (namespaceSeen || value != SVG_NAMESPACE) return false;
            namespaceSeen = true;
            continue;
        }
        // A repeated attribute is an error for the full reader to report.
        for (size_t i = firstAttribute; i < attributes.size(); ++i)
            if (attributes[i].name == latin1(key)) return false;
        attributes.push_back({latin1(key), latin1(value)});
    }
    doc.m_elements.back().attributeCount = static_cast<std::uint32_t>(attributes.size()) - firstAttribute;
    return true;
}

bool XStrictReader::read_end_tag(std::string_view open) {
    p += 2;
    std::string_view name;
    if (!read_name(name) || name != open) return false;
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
    const auto* close = static_cast<const char*>(std::memchr(p, quote, static_cast<size_t>(end - p)));
    if (close == nullptr) return false;
    // White space other than blanks is normalised in attribute values, '&' starts a reference
    // and '<' is an error: all left to the full reader.
    const char* c = p;
#if defined(__SSE2__)
    // Sixteen bytes per step, the last step reaching past the value (not past the document)
    // with the bytes after it masked off. As signed bytes, all from 0x80 up are below 0x20 too.
    const auto unusual = [](const char* at) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        __m128i found = _mm_cmplt_epi8(v, _mm_set1_epi8(0x20));
        found = _mm_or_si128(found, _mm_cmpeq_epi8(v, _mm_set1_epi8(0x7f)));
        found = _mm_or_si128(found, _mm_cmpeq_epi8(v, _mm_set1_epi8('<')));
        found = _mm_or_si128(found, _mm_cmpeq_epi8(v, _mm_set1_epi8('&')));
        return unsigned(_mm_movemask_epi8(found));
    };
    for (; close - c >= 16; c += 16)
        if (unusual(c) != 0) return false;
    if (end - c >= 16) {
        if ((unusual(c) & ((1u << (close - c)) - 1u)) != 0) return false;
        c = close;
    }
#endif
    for (; c != close; ++c) {
        const auto b = static_cast<unsigned char>(*c);
        if (b < 0x20 || b > 0x7e || b == '<' || b == '&') return false;
    }
    value = std::string_view(p, static_cast<size_t>(close - p));
    p = close + 1;
    return true;
}

}  // namespace ki::xml
