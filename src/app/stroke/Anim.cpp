#include "app/stroke/Anim.h"

#include <ki/algo/Visitor.h>
#include <ki/log/GLog.h>
#include <ki/xml/XNode.h>

#include <QFileInfo>
#include <QHash>
#include <QStringList>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <mutex>

#include "app/stroke/AdapterXNodeConst.h"

namespace morvel {

namespace {

using ki::xml::XNode;

// Built once: a name written as a literal at each lookup would be converted on every call.
const QString ATTR_VIEW_BOX = QStringLiteral("viewBox");
const QString ATTR_ID = QStringLiteral("id");
const QString ATTR_HREF = QStringLiteral("href");
const QString ATTR_CLIP_PATH = QStringLiteral("clip-path");
const QString ATTR_D = QStringLiteral("d");
constexpr QLatin1String ELEMENT_PATH("path");
constexpr QLatin1String ELEMENT_CLIP_PATH("clipPath");
constexpr QLatin1String ELEMENT_USE("use");

constexpr int CODE_NULL_DOCUMENT = 20;
constexpr int CODE_BAD_STRUCTURE = 30;
constexpr int CODE_FILE_TOO_LARGE = 40;

ki::GSysResult<Anim> failure(int code, const QString& message) {
    return ki::GSysResult<Anim>::from_error(ki::EC_KIR, code, message);
}

/// Visits every node in document order until `visit` returns an error text; returns the first
/// one, or an empty text when the whole tree passed.
QString first_error_of_walk(const XNode* root, const std::function<QString(const XNode*)>& visit) {
    QString error;
    ki::algo::tree::Visitor<AdapterXNodeConst, const XNode*, ki::algo::tree::PRE_ORDER> visitor;
    visitor.set_callback([&](const XNode* node) {
        error = visit(node);
        if (!error.isEmpty()) visitor.stop();
    });
    visitor.walk_dfs(root);
    return error;
}

/// The parts between runs of ASCII white space, as a split at the regular expression "\s+"
/// gives them, without running one.
QStringList split_at_blanks(const QString& text) {
    const auto blank = [](QChar c) {
        return c == QLatin1Char(' ') || (c >= QLatin1Char('\t') && c <= QLatin1Char('\r'));
    };
    QStringList parts;
    qsizetype start = -1;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !blank(text[i])) {
            if (start < 0) start = i;
        } else if (start >= 0) {
            parts << text.mid(start, i - start);
            start = -1;
        }
    }
    return parts;
}

/// The root's viewBox, or a zero rectangle (logged) when it is missing or unusable.
ki::math::Rect read_view_box(const XNode* root) {
    if (!root->has_attrib(ATTR_VIEW_BOX)) return {};
    const QString text = root->get_attrib_string(ATTR_VIEW_BOX).trimmed();
    const QStringList parts = split_at_blanks(QString(text).replace(',', ' '));
    if (parts.size() != 4) {
        ki::pp_warn("Anim::build_from_svg, invalid SVG viewBox '$', expected 4 values", text);
        return {};
    }
    std::array<float, 4> values{};
    bool valid = true;
    for (qsizetype i = 0; i < 4; ++i) {
        bool converted = false;
        values[i] = parts[i].toFloat(&converted);
        valid = valid && converted && std::isfinite(values[i]);
    }
    if (!valid || values[2] <= 0.0f || values[3] <= 0.0f) {
        ki::pp_warn("Anim::build_from_svg, invalid SVG viewBox values '$'", text);
        return {};
    }
    return {values[0], values[1], values[2], values[3]};
}

struct References {
    QHash<QString, const XNode*> outlineById;
    QHash<QString, QString> outlineIdByClipId;
};

QString collect_clip_path(const XNode* node, References& refs) {
    const QString id = node->get_attrib_string(ATTR_ID);
    if (id.isEmpty()) return "clipPath without id";
    const XNode* use = nullptr;
    for (const auto& child : node->children) {
        if (child->name != ELEMENT_USE) continue;
        if (use != nullptr) return ki::str::qprintF("clipPath '$' contains multiple use nodes", id);
        use = child.get();
    }
    if (use == nullptr) return ki::str::qprintF("clipPath '$' contains no use node", id);
    const QString href = use->get_attrib_string(ATTR_HREF);
    if (!href.startsWith('#') || href.size() < 2)
        return ki::str::qprintF("clipPath '$' has invalid href '$'", id, href);
    if (refs.outlineIdByClipId.contains(id)) return ki::str::qprintF("duplicate clipPath id '$'", id);
    refs.outlineIdByClipId.insert(id, href.mid(1));
    return {};
}

QString collect_reference(const XNode* node, References& refs) {
    if (node->name == ELEMENT_CLIP_PATH) return collect_clip_path(node, refs);
    if (node->name != ELEMENT_PATH) return {};
    // Centre lines that carry an id are recorded too and take part in the duplicate check.
    const QString id = node->get_attrib_string(ATTR_ID);
    if (id.isEmpty()) return {};
    if (refs.outlineById.contains(id)) return ki::str::qprintF("duplicate outline id '$'", id);
    refs.outlineById.insert(id, node);
    return {};
}

QString build_stroke(const XNode* node, const References& refs, std::vector<AnimStroke>& strokes) {
    if (node->name != ELEMENT_PATH) return {};
    const QString clip = node->get_attrib_string(ATTR_CLIP_PATH);
    if (clip.isEmpty()) return {};
    static const QString prefix = "url(#";
    if (!clip.startsWith(prefix) || !clip.endsWith(')'))
        return ki::str::qprintF("invalid clip-path '$'", clip);
    const QString clipId = clip.mid(prefix.size(), clip.size() - prefix.size() - 1);
    const auto outlineId = refs.outlineIdByClipId.constFind(clipId);
    if (outlineId == refs.outlineIdByClipId.cend()) return ki::str::qprintF("clipPath '$' not found", clipId);
    const XNode* outline = refs.outlineById.value(*outlineId, nullptr);
    if (outline == nullptr) return ki::str::qprintF("outline path '$' not found", *outlineId);

    const QString outlineData = outline->get_attrib_string(ATTR_D);
    const QString animData = node->get_attrib_string(ATTR_D);
    if (outlineData.isEmpty()) return ki::str::qprintF("outline path '$' has no d attribute", *outlineId);
    if (animData.isEmpty()) return ki::str::qprintF("animation path for clip '$' has no d attribute", clipId);
    ki::GSysResult<ki::math::Path> outlinePath = ki::math::Path::from_svg_path_data(outlineData);
    if (!outlinePath.ok())
        return ki::str::qprintF("cannot parse outline path '$': $", *outlineId, outlinePath.message);
    ki::GSysResult<ki::math::Path> animPath = ki::math::Path::from_svg_path_data(animData);
    if (!animPath.ok())
        return ki::str::qprintF("cannot parse animation path for clip '$': $", clipId, animPath.message);
    strokes.push_back(AnimStroke{outlinePath.take(), animPath.take()});
    return {};
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

    Anim anim;
    anim.viewBox = read_view_box(xmlSvgDocument);

    References refs;
    QString error =
        first_error_of_walk(xmlSvgDocument, [&](const XNode* node) { return collect_reference(node, refs); });
    if (!error.isEmpty()) return failure(CODE_BAD_STRUCTURE, error);

    error = first_error_of_walk(xmlSvgDocument,
                                [&](const XNode* node) { return build_stroke(node, refs, anim.strokes); });
    if (!error.isEmpty()) return failure(CODE_BAD_STRUCTURE, error);
    if (anim.strokes.empty())
        return failure(CODE_BAD_STRUCTURE, "Anim::build_from_svg, no animation strokes found");
    return ki::GSysResult<Anim>(std::move(anim));
}

ki::GSysResult<Anim> Anim::build_from_file(const QString& fileName) {
    Cache& shared = cache();
    std::shared_ptr<const Anim> cached;
    {
        std::lock_guard<std::mutex> lock(shared.mutex);
        cached = shared.anims.value(fileName);
    }
    if (cached) return ki::GSysResult<Anim>(*cached);

    const QFileInfo info(fileName);
    if (info.isFile() && info.size() > MAX_FILE_BYTES)
        return failure(
            CODE_FILE_TOO_LARGE,
            ki::str::qprintF("Anim::build_from_file, '$' has $ bytes, a stroke file may have at most $",
                             fileName, info.size(), MAX_FILE_BYTES));

    const ki::xml::XNodeResult document = ki::xml::XNode::parse_file(fileName);
    if (!document.ok()) {
        ki::GSysResult<Anim> result;
        result.copy_error(document);
        // A document without any element comes back with code 0, which would read as success.
        if (result.error == 0) result.set_error(1);
        return result;
    }

    ki::GSysResult<Anim> built = build_from_svg(document.value.get());
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
