#pragma once
// `$`-placeholder formatting: every message of the program is built here. A `$` is replaced
// by the next argument's text; the argument's own type decides how it prints.

#include <QString>

#include <concepts>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include <glm/vec2.hpp>

class QByteArray;
class QChar;
class QPoint;
class QPointF;
class QRect;
class QRectF;
class QSize;
class QSizeF;
class QStringView;

namespace ki {

/// Writes the text of one object of a class type. The primary template prints `to_string()`;
/// a type without one gets an explicit specialisation next to its declaration.
template <typename T>
void obj_to_stream(std::ostringstream& os, const T& obj);

namespace str {

namespace detail {
void put_float(std::ostringstream& os, float v);
void put_double(std::ostringstream& os, double v);
void put_qstring(std::ostringstream& os, const QString& v);
void put_qstringview(std::ostringstream& os, QStringView v);
void put_qchar(std::ostringstream& os, QChar v);
void put_qbytearray(std::ostringstream& os, const QByteArray& v);
void put_qpoint(std::ostringstream& os, const QPoint& v);
void put_qpointf(std::ostringstream& os, const QPointF& v);
void put_qsize(std::ostringstream& os, const QSize& v);
void put_qsizef(std::ostringstream& os, const QSizeF& v);
void put_qrect(std::ostringstream& os, const QRect& v);
void put_qrectf(std::ostringstream& os, const QRectF& v);

template <typename T>
concept HasToString = requires(const T& t) { t.to_string(); };

template <typename U>
inline constexpr bool is_char_type_v =
    std::is_same_v<U, char> || std::is_same_v<U, signed char> || std::is_same_v<U, char8_t>;

template <typename T>
void put_text(std::ostringstream& os, const T& text) {
    if constexpr (std::is_same_v<std::remove_cvref_t<T>, QString>) put_qstring(os, text);
    else os << text;
}

template <typename T>
void put(std::ostringstream& os, const T& v) {
    using U = std::remove_cvref_t<T>;
    if constexpr (std::is_same_v<U, bool>) {
        os << (v ? "true" : "false");
    } else if constexpr (std::is_same_v<U, float>) {
        put_float(os, v);
    } else if constexpr (std::is_same_v<U, double> || std::is_same_v<U, long double>) {
        put_double(os, static_cast<double>(v));
    } else if constexpr (is_char_type_v<U>) {
        os << static_cast<char>(v);
    } else if constexpr (std::is_same_v<U, unsigned char>) {
        os << static_cast<unsigned>(v);
    } else if constexpr (std::is_integral_v<U>) {
        os << v;
    } else if constexpr (std::is_enum_v<U>) {
        os << static_cast<long long>(v);
    } else if constexpr (std::is_same_v<U, const char*> || std::is_same_v<U, char*>) {
        os << (v ? v : "nullptr");
    } else if constexpr (std::is_array_v<U>) {
        os << v;
    } else if constexpr (std::is_same_v<U, std::string> || std::is_same_v<U, std::string_view>) {
        os << v;
    } else if constexpr (std::is_same_v<U, QString>) {
        put_qstring(os, v);
    } else if constexpr (std::is_same_v<U, QStringView>) {
        put_qstringview(os, v);
    } else if constexpr (std::is_same_v<U, QChar>) {
        put_qchar(os, v);
    } else if constexpr (std::is_same_v<U, QByteArray>) {
        put_qbytearray(os, v);
    } else if constexpr (std::is_same_v<U, QPoint>) {
        put_qpoint(os, v);
    } else if constexpr (std::is_same_v<U, QPointF>) {
        put_qpointf(os, v);
    } else if constexpr (std::is_same_v<U, QSize>) {
        put_qsize(os, v);
    } else if constexpr (std::is_same_v<U, QSizeF>) {
        put_qsizef(os, v);
    } else if constexpr (std::is_same_v<U, QRect>) {
        put_qrect(os, v);
    } else if constexpr (std::is_same_v<U, QRectF>) {
        put_qrectf(os, v);
    } else if constexpr (std::is_same_v<U, glm::vec2>) {
        put_float(os, v.x);
        os << ", ";
        put_float(os, v.y);
    } else if constexpr (std::is_pointer_v<U>) {
        if (v == nullptr) os << "nullptr";
        else put(os, *v);
    } else {
        ki::obj_to_stream(os, v);
    }
}

}  // namespace detail

/// The recursive worker of xprintF: copies `format` up to the next `$`, prints one argument
/// there and goes on with the rest. When the format runs out before the arguments do, the
/// remaining arguments are dropped.
inline void streamIt(std::ostringstream& os, const char* format) { os << format; }

template <typename T, typename... Rest>
void streamIt(std::ostringstream& os, const char* format, const T& value, const Rest&... rest) {
    const char* dollar = std::strchr(format, '$');
    if (dollar == nullptr) {
        os << format;
        return;
    }
    os.write(format, dollar - format);
    detail::put(os, value);
    streamIt(os, dollar + 1, rest...);
}

/// Fills `format`'s `$` placeholders with `args`, after `indent` blanks. A null format gives "".
template <typename... Args>
std::string xprintF(unsigned int indent, const char* format, const Args&... args) {
    if (format == nullptr) return {};
    std::ostringstream os;
    if (indent > 0) os << std::string(indent, ' ');
    streamIt(os, format, args...);
    return os.str();
}

/// xprintF without indentation, as a QString (the UTF-8 result decoded).
template <typename... Args>
QString qprintF(const char* format, const Args&... args) {
    return QString::fromStdString(xprintF(0, format, args...));
}

/// printf-style formatting into a bounded buffer. Formats of 4096 characters or more give "".
std::string sprintF(const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

}  // namespace str

template <typename T>
void obj_to_stream(std::ostringstream& os, const T& obj) {
    if constexpr (str::detail::HasToString<T>) {
        str::detail::put_text(os, obj.to_string());
    } else {
        static_assert(str::detail::HasToString<T>,
                      "no text form: give the type a to_string() or specialise ki::obj_to_stream");
    }
}

}  // namespace ki
