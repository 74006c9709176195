#include <ki/str/xprintF.h>

#include <QByteArray>
#include <QChar>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QStringView>

#include <cstdarg>
#include <cstdio>

namespace ki::str {

namespace detail {

void put_float(std::ostringstream& os, float v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%2.2f", static_cast<double>(v));
    os << buf;
}

void put_double(std::ostringstream& os, double v) {
    // "%f" of 1e300 needs over 300 characters; size the buffer from the value.
    const int n = std::snprintf(nullptr, 0, "%f", v);
    std::string buf(static_cast<size_t>(n > 0 ? n : 0) + 1, '\0');
    std::snprintf(buf.data(), buf.size(), "%f", v);
    buf.resize(buf.size() - 1);
    os << buf;
}

void put_qstring(std::ostringstream& os, const QString& v) { os << v.toStdString(); }
void put_qstringview(std::ostringstream& os, QStringView v) { os << v.toString().toStdString(); }
void put_qchar(std::ostringstream& os, QChar v) { os << QString(v).toStdString(); }
void put_qbytearray(std::ostringstream& os, const QByteArray& v) { os << v.toStdString(); }
void put_qpoint(std::ostringstream& os, const QPoint& v) { streamIt(os, "$,$", v.x(), v.y()); }
void put_qpointf(std::ostringstream& os, const QPointF& v) { streamIt(os, "$,$", v.x(), v.y()); }
void put_qsize(std::ostringstream& os, const QSize& v) { streamIt(os, "$,$", v.width(), v.height()); }
void put_qsizef(std::ostringstream& os, const QSizeF& v) {
    streamIt(os, "$,$", v.width(), v.height());
}
void put_qrect(std::ostringstream& os, const QRect& v) {
    // Inclusive corners: width and height count both edge pixels.
    streamIt(os, "$,$,$,$", v.left(), v.top(), v.right() - v.left() + 1, v.bottom() - v.top() + 1);
}
void put_qrectf(std::ostringstream& os, const QRectF& v) {
    streamIt(os, "$,$,$,$", v.left(), v.top(), v.width(), v.height());
}

}  // namespace detail

std::string sprintF(const char* format, ...) {
    if (format == nullptr) return "<<<sprintF,nullpointer>>>";
    if (std::strlen(format) >= 4096) return {};
    char buffer[4096 + 64];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return buffer;
}

}  // namespace ki::str
