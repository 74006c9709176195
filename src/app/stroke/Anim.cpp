#include "app/stroke/Anim.h"

#include <ki/log/GLog.h>
#include <ki/xml/XFlatDocument.h>
#include <ki/xml/XNode.h>

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QResource>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace morvel {

namespace {

using ki::xml::XFlatDocument;
using ki::xml::XNode;

constexpr QLatin1String ATTR_VIEW_BOX("viewBox");
constexpr QLatin1String ATTR_ID("id");
constexpr QLatin1String ATTR_HREF("href");
constexpr QLatin1String ATTR_CLIP_PATH("clip-path");
constexpr QLatin1String ATTR_D("d");
constexpr QLatin1String ELEMENT_PATH("path");
constexpr QLatin1String ELEMENT_CLIP_PATH("clipPath");
constexpr QLatin1String ELEMENT_USE("use");
constexpr QLatin1String CLIP_URL_PREFIX("url(#");

constexpr int CODE_NULL_DOCUMENT = 20;
constexpr int CODE_BAD_STRUCTURE = 30;
constexpr int CODE_FILE_TOO_LARGE = 40;

ki::GSysResult<Anim> failure(int code, const QString& message) {
    return ki::GSysResult<Anim>::from_error(ki::EC_KIR, code, message);
}

// The builder below reads a document through one of two sources with the same members: an XNode
// tree, or a flat document straight from the file's bytes, which spares the stroke files the
// strings and nodes of a tree. Both list their elements in document order (pre-order).

class TreeSource {
public:
    using Node = const XNode*;
    using Text = QStringView;

    explicit TreeSource(const XNode* root) {
        // Without recursion: documents may nest as deep as they like.
        std::vector<const XNode*> pending{root};
        while (!pending.empty()) {
            const XNode* node = pending.back();
            pending.pop_back();
            order.push_back(node);
            for (auto child = node->children.rbegin(); child != node->children.rend(); ++child)
                pending.push_back(child->get());
        }
    }

    size_t size() const { return order.size(); }
    Node at(size_t index) const { return order[index]; }
    static bool is(Node node, QLatin1String name) { return node->name == name; }
    static bool has(Node node, QLatin1String name) { return find(node, name) != nullptr; }
    /// Empty when missing.
    static Text attribute(Node node, QLatin1String name) {
        const QString* value = find(node, name);
        return value != nullptr ? Text(*value) : Text();
    }
    template <typename Visit>
    void for_each_child(Node node, Visit visit) const {
        for (const auto& child : node->children) visit(child.get());
    }
    static ki::GSysResult<ki::math::Path> path(Text data) {
        // The view is a whole attribute value of the tree, alive for the call: no copy needed.
        return ki::math::Path::from_svg_path_data(QString::fromRawData(data.data(), data.size()));
    }

private:
    static const QString* find(Node node, QLatin1String name) {
        for (const auto& [key, value] : node->attributes)
            if (key == name) return &value;
        return nullptr;
    }

    std::vector<const XNode*> order;
};

class FlatSource {
public:
    using Node = const XFlatDocument::Element*;
    using Text = QLatin1String;

    explicit FlatSource(const XFlatDocument& document) : doc(document), elements(document.elements()) {}

    size_t size() const { return elements.size(); }
    Node at(size_t index) const { return &elements[index]; }
    static bool is(Node node, QLatin1String name) { return node->name == name; }
    bool has(Node node, QLatin1String name) const { return doc.find_attribute(*node, name) != nullptr; }
    Text attribute(Node node, QLatin1String name) const {
        const QLatin1String* value = doc.find_attribute(*node, name);
        return value != nullptr ? *value : Text();
    }
    template <typename Visit>
    void for_each_child(Node node, Visit visit) const {
        for (auto child = size_t(node - elements.data()) + 1; child < node->end; child = elements[child].end)
            visit(&elements[child]);
    }
    static ki::GSysResult<ki::math::Path> path(Text data) { return ki::math::Path::from_svg_path_data(data); }

private:
    const XFlatDocument& doc;
    const std::vector<XFlatDocument::Element>& elements;
};

/// Text keys in insertion order. A character has a few dozen ids, which a linear search finds
/// faster than any hash; a hash index is built only for documents with many more.
template <typename Text, typename Value>
class SmallMap {
public:
    const Value* find(Text key) const {
        if (!index.isEmpty()) {
            const auto found = index.constFind(key);
            return found == index.cend() ? nullptr : &items[*found].second;
        }
        for (const auto& [text, value] : items)
            if (text == key) return &value;
        return nullptr;
    }
    /// The key must not be in the map yet.
    void insert(Text key, Value value) {
        items.emplace_back(key, value);
        if (!index.isEmpty()) {
            index.insert(key, items.size() - 1);
        } else if (items.size() > LINEAR_LIMIT) {
            index.reserve(qsizetype(2 * items.size()));
            for (size_t i = 0; i < items.size(); ++i) index.insert(items[i].first, i);
        }
    }
    size_t size() const { return items.size(); }

private:
    static constexpr size_t LINEAR_LIMIT = 64;
    std::vector<std::pair<Text, Value>> items;
    QHash<Text, size_t> index;
};

template <typename Source>
struct References {
    SmallMap<typename Source::Text, typename Source::Node> outlineById;
    SmallMap<typename Source::Text, typename Source::Text> outlineIdByClipId;
};

/// A number as QString::toFloat reads it: the plain decimals of a viewBox directly (exact, as
/// the division of two exact doubles rounds once), anything else by QString::toFloat itself.
template <typename Text>
float to_float(Text text, bool& ok) {
    constexpr int MAX_EXACT_DIGITS = 15;
    static constexpr double POW10[MAX_EXACT_DIGITS + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                           1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const auto digit = [&text](qsizetype i) { return unsigned(text[i].unicode()) - u'0' <= 9u; };
    qsizetype i = 0;
    const bool negative = !text.isEmpty() && QChar(text[0]) == QLatin1Char('-');
    if (negative) ++i;
    const qsizetype integerStart = i;
    std::uint64_t mantissa = 0;
    for (; i < text.size() && digit(i); ++i) mantissa = mantissa * 10 + (text[i].unicode() - u'0');
    const qsizetype integerDigits = i - integerStart;
    qsizetype fraction = 0;
    if (i < text.size() && QChar(text[i]) == QLatin1Char('.')) {
        const qsizetype fractionStart = ++i;
        for (; i < text.size() && digit(i); ++i) mantissa = mantissa * 10 + (text[i].unicode() - u'0');
        fraction = i - fractionStart;
        if (fraction == 0) i = -1;
    }
    // A leading zero before more digits is left to Qt, which has its own view of it.
    const bool plain = i == text.size() && integerDigits > 0 &&
                       integerDigits + fraction <= MAX_EXACT_DIGITS &&
                       (integerDigits == 1 || QChar(text[integerStart]) != QLatin1Char('0'));
    if (!plain) return text.toString().toFloat(&ok);
    const double magnitude = double(mantissa) / POW10[fraction];
    ok = true;
    return float(negative ? -magnitude : magnitude);
}

/// The root's viewBox, or a zero rectangle (logged) when it is missing or unusable. The values
/// are the parts between runs of ASCII white space and commas, as a split at the regular
/// expression "\s+" after replacing the commas gives them.
template <typename Source>
ki::math::Rect read_view_box(const Source& source, typename Source::Node root) {
    if (!source.has(root, ATTR_VIEW_BOX)) return {};
    const typename Source::Text text = source.attribute(root, ATTR_VIEW_BOX).trimmed();
    const auto blank = [](QChar c) {
        return c == QLatin1Char(' ') || c == QLatin1Char(',') ||
               (c >= QLatin1Char('\t') && c <= QLatin1Char('\r'));
    };
    std::array<typename Source::Text, 4> parts;
    qsizetype count = 0;
    qsizetype start = -1;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !blank(text[i])) {
            if (start < 0) start = i;
        } else if (start >= 0) {
            if (count < 4) parts[count] = text.mid(start, i - start);
            ++count;
            start = -1;
        }
    }
    if (count != 4) {
        ki::pp_warn("Anim::build_from_svg, invalid SVG viewBox '$', expected 4 values", text.toString());
        return {};
    }
    std::array<float, 4> values{};
    bool valid = true;
    for (size_t i = 0; i < 4; ++i) {
        bool converted = false;
        values[i] = to_float(parts[i], converted);
        valid = valid && converted && std::isfinite(values[i]);
    }
    if (!valid || values[2] <= 0.0f || values[3] <= 0.0f) {
        ki::pp_warn("Anim::build_from_svg, invalid SVG viewBox values '$'", text.toString());
        return {};
    }
    return {values[0], values[1], values[2], values[3]};
}

template <typename Source>
QString collect_clip_path(const Source& source, typename Source::Node node, References<Source>& refs) {
    const typename Source::Text id = source.attribute(node, ATTR_ID);
    if (id.isEmpty()) return "clipPath without id";
    typename Source::Node use = nullptr;
    bool several = false;
    source.for_each_child(node, [&](typename Source::Node child) {
        if (!Source::is(child, ELEMENT_USE)) return;
        several = several || use != nullptr;
        use = child;
    });
    if (several) return ki::str::qprintF("clipPath '$' contains multiple use nodes", id.toString());
    if (use == nullptr) return ki::str::qprintF("clipPath '$' contains no use node", id.toString());
    const typename Source::Text href = source.attribute(use, ATTR_HREF);
    if (!href.startsWith(QLatin1Char('#')) || href.size() < 2)
        return ki::str::qprintF("clipPath '$' has invalid href '$'", id.toString(), href.toString());
    if (refs.outlineIdByClipId.find(id) != nullptr)
        return ki::str::qprintF("duplicate clipPath id '$'", id.toString());
    refs.outlineIdByClipId.insert(id, href.mid(1));
    return {};
}

template <typename Source>
QString collect_reference(const Source& source, typename Source::Node node, References<Source>& refs) {
    if (Source::is(node, ELEMENT_CLIP_PATH)) return collect_clip_path(source, node, refs);
    if (!Source::is(node, ELEMENT_PATH)) return {};
    // Centre lines that carry an id are recorded too and take part in the duplicate check.
    const typename Source::Text id = source.attribute(node, ATTR_ID);
    if (id.isEmpty()) return {};
    if (refs.outlineById.find(id) != nullptr)
        return ki::str::qprintF("duplicate outline id '$'", id.toString());
    refs.outlineById.insert(id, node);
    return {};
}

template <typename Source>
QString build_stroke(const Source& source, typename Source::Node node, const References<Source>& refs,
                     std::vector<AnimStroke>& strokes) {
    if (!Source::is(node, ELEMENT_PATH)) return {};
    const typename Source::Text clip = source.attribute(node, ATTR_CLIP_PATH);
    if (clip.isEmpty()) return {};
    if (!clip.startsWith(CLIP_URL_PREFIX) || !clip.endsWith(QLatin1Char(')')))
        return ki::str::qprintF("invalid clip-path '$'", clip.toString());
    const typename Source::Text clipId =
        clip.mid(CLIP_URL_PREFIX.size(), clip.size() - CLIP_URL_PREFIX.size() - 1);
    const typename Source::Text* outlineId = refs.outlineIdByClipId.find(clipId);
    if (outlineId == nullptr) return ki::str::qprintF("clipPath '$' not found", clipId.toString());
    const typename Source::Node* outline = refs.outlineById.find(*outlineId);
    if (outline == nullptr) return ki::str::qprintF("outline path '$' not found", outlineId->toString());

    const typename Source::Text outlineData = source.attribute(*outline, ATTR_D);
    const typename Source::Text animData = source.attribute(node, ATTR_D);
    if (outlineData.isEmpty())
        return ki::str::qprintF("outline path '$' has no d attribute", outlineId->toString());
    if (animData.isEmpty())
        return ki::str::qprintF("animation path for clip '$' has no d attribute", clipId.toString());
    ki::GSysResult<ki::math::Path> outlinePath = Source::path(outlineData);
    if (!outlinePath.ok())
        return ki::str::qprintF("cannot parse outline path '$': $", outlineId->toString(),
                                outlinePath.message);
    ki::GSysResult<ki::math::Path> animPath = Source::path(animData);
    if (!animPath.ok())
        return ki::str::qprintF("cannot parse animation path for clip '$': $", clipId.toString(),
                                animPath.message);
    strokes.push_back(AnimStroke{outlinePath.take(), animPath.take()});
    return {};
}

/// The model of the document whose root is the source's first element. All references are
/// collected in document order before any stroke is built, so a reference fault is reported
/// even when a stroke fault comes earlier in the document.
template <typename Source>
ki::GSysResult<Anim> build(const Source& source) {
    Anim anim;
    anim.viewBox = read_view_box(source, source.at(0));

    References<Source> refs;
    for (size_t i = 0; i < source.size(); ++i) {
        const QString error = collect_reference(source, source.at(i), refs);
        if (!error.isEmpty()) return failure(CODE_BAD_STRUCTURE, error);
    }
    anim.strokes.reserve(refs.outlineIdByClipId.size());
    for (size_t i = 0; i < source.size(); ++i) {
        const QString error = build_stroke(source, source.at(i), refs, anim.strokes);
        if (!error.isEmpty()) return failure(CODE_BAD_STRUCTURE, error);
    }
    if (anim.strokes.empty())
        return failure(CODE_BAD_STRUCTURE, "Anim::build_from_svg, no animation strokes found");
    return ki::GSysResult<Anim>(std::move(anim));
}

/// The refusal of a file that is too large, or the error of a file that cannot be opened.
ki::GSysResult<Anim> refuse_file(const QString& fileName) {
    const QFileInfo info(fileName);
    if (info.isFile() && info.size() > Anim::MAX_FILE_BYTES)
        return failure(
            CODE_FILE_TOO_LARGE,
            ki::str::qprintF("Anim::build_from_file, '$' has $ bytes, a stroke file may have at most $",
                             fileName, info.size(), Anim::MAX_FILE_BYTES));
    const ki::xml::XNodeResult document = ki::xml::XNode::parse_file(fileName);
    // Readable after all, when the file changed since the failed open.
    if (document.ok()) return Anim::build_from_svg(document.value.get());
    ki::GSysResult<Anim> result;
    result.copy_error(document);
    if (result.error == 0) result.set_error(1);
    return result;
}

/// The bytes of a resource, in place unless compressed: QFile would reach them through a file
/// engine and copy them. A folder reads as no bytes, as through QFile. False for any other
/// name and for a missing or too large resource, which QFile then opens or refuses as it does
/// every file.
bool read_resource(const QString& fileName, QByteArray& bytes) {
    if (!fileName.startsWith(QLatin1Char(':'))) return false;
    const QResource resource(fileName);
    if (!resource.isValid() || resource.uncompressedSize() > Anim::MAX_FILE_BYTES) return false;
    bytes = resource.uncompressedData();
    return true;
}

/// The model of a stroke file's bytes: plain XML is read flat, everything else through the
/// full XML reader and its tree. `parsed` tells whether the bytes were a document at all.
ki::GSysResult<Anim> build_from_bytes(QByteArray& bytes, bool& parsed) {
    parsed = true;
    // One per thread, so that its room for elements and attributes serves file after file.
    thread_local XFlatDocument flat;
    if (flat.read(bytes)) {
        ki::GSysResult<Anim> built = build(FlatSource(flat));
        flat.clear();
        return built;
    }

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const ki::xml::XNodeResult document = ki::xml::XNode::parse(buffer);
    if (!document.ok()) {
        parsed = false;
        ki::GSysResult<Anim> result;
        result.copy_error(document);
        // A document without any element comes back with code 0, which would read as success.
        if (result.error == 0) result.set_error(1);
        return result;
    }
    return Anim::build_from_svg(document.value.get());
}

struct Cache {
    std::mutex mutex;
    // Shared and immutable, so a hit is copied out after the lock is released.
    QHash<QString, std::shared_ptr<const Anim>> anims;
};

Cache& cache() {
    static Cache instance;
    return instance;
}

}  // namespace

std::string AnimStroke::to_string() const {
    if (!is_valid()) return "NO_VALID";
    return ki::str::xprintF(0, "pathOutline: contours=$, length=$, pathAnim: contours=$, length=$",
                            pathOutline.contour_count(), pathOutline.get_length(), pathAnim.contour_count(),
                            pathAnim.get_length());
}

ki::GSysResult<Anim> Anim::build_from_svg(const ki::xml::XNode* xmlSvgDocument) {
    if (xmlSvgDocument == nullptr)
        return failure(CODE_NULL_DOCUMENT, "Anim::build_from_svg, xmlSvgDocument is null");
    return build(TreeSource(xmlSvgDocument));
}

ki::GSysResult<Anim> Anim::build_from_file(const QString& fileName) {
    Cache& shared = cache();
    std::shared_ptr<const Anim> cached;
    {
        std::lock_guard<std::mutex> lock(shared.mutex);
        cached = shared.anims.value(fileName);
    }
    if (cached) return ki::GSysResult<Anim>(*cached);

    QByteArray bytes;
    if (!read_resource(fileName, bytes)) {
        // One open serves the size check and the read; asking QFileInfo first costs as much
        // again. Only a regular file is refused for its size, as a device or pipe tells none.
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly) || (file.size() > MAX_FILE_BYTES && QFileInfo(fileName).isFile()))
            return refuse_file(fileName);
        bytes = file.readAll();
    }

    bool parsed = false;
    ki::GSysResult<Anim> built = build_from_bytes(bytes, parsed);
    if (!parsed) return built;
    {
        std::lock_guard<std::mutex> lock(shared.mutex);
        // Another thread may have stored the same name meanwhile; the first entry stays.
        if (!shared.anims.contains(fileName))
            shared.anims.insert(fileName, std::make_shared<const Anim>(built.value));
    }
    return built;
}

void Anim::clear_cache() {
    Cache& shared = cache();
    std::lock_guard<std::mutex> lock(shared.mutex);
    shared.anims.clear();
}

void Anim::dump(unsigned indent) const {
    ki::log::log_string(ki::log::LOG_DEBUG, ki::str::xprintF(indent, "Anim with $ AnimStrokes, viewBox:$",
                                                             strokes.size(), viewBox));
    for (size_t i = 0; i < strokes.size(); ++i)
        ki::log::log_string(ki::log::LOG_DEBUG,
                            ki::str::xprintF(indent + 4, "$ - '$'", i, strokes[i].to_string()));
}

}  // namespace morvel
