#include <ki/str/format.h>
#include <ki/str/xprintF.h>

#include <algorithm>
#include <cctype>
#include <cmath>

namespace ki::str {

std::string format_str_1000(const std::string& digits, char separator) {
    std::string out;
    const size_t n = digits.size();
    out.reserve(n + n / 3);
    for (size_t i = 0; i < n; ++i) {
        if (i > 0 && (n - i) % 3 == 0) out.push_back(separator);
        out.push_back(digits[i]);
    }
    return out;
}

std::string format_1000(long long value, char separator) {
    // Negate in unsigned arithmetic so that the smallest long long has a magnitude too.
    const unsigned long long magnitude =
        value < 0 ? 0ULL - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
    const std::string grouped = format_str_1000(std::to_string(magnitude), separator);
    return value < 0 ? "-" + grouped : grouped;
}

std::string format_magnitude(unsigned long long n, bool with_number) {
    if (n < 1000) return std::to_string(n);
    static const char* const words[] = {"thousand", "million", "billion", "trillion", "quadrillion",
                                        "quintillion"};
    unsigned k = 0;
    unsigned long long power = 1;
    while (k < 6 && n / power >= 1000) {
        power *= 1000;
        ++k;
    }
    const std::string word = words[k - 1];
    return with_number ? std::to_string(n / power) + " " + word : word;
}

std::string format_bytes(double bytes) {
    if (bytes > 1e12) return sprintF("%2.2f TB", bytes / 1e9);
    if (bytes > 1e9) return sprintF("%2.2f GB", bytes / 1e9);
    if (bytes > 1e6) return sprintF("%2.2f MB", bytes / 1e6);
    return sprintF("%2.2f KB", bytes / 1e3);
}

std::string format_bytes_1024(double bytes) {
    if (bytes > std::ldexp(1.0, 40)) return sprintF("%2.2f TB", std::ldexp(bytes, -30));
    if (bytes > std::ldexp(1.0, 30)) return sprintF("%2.2f GB", std::ldexp(bytes, -30));
    if (bytes > std::ldexp(1.0, 20)) return sprintF("%2.2f MB", std::ldexp(bytes, -20));
    return sprintF("%2.2f KB", std::ldexp(bytes, -10));
}

std::string format_fill_zero(unsigned width, long long value) {
    const std::string fmt = xprintF(0, "%0$lld", width);
    return sprintF(fmt.c_str(), value);
}

std::string format_fill_zero_microseconds(long long value) { return format_fill_zero(6, value); }
std::string format_fill_zero_milliseconds(long long value) { return format_fill_zero(3, value); }

std::string format_fill(char fill, unsigned width, long long value) {
    std::string digits = std::to_string(value);
    if (digits.size() < width) digits.insert(0, width - digits.size(), fill);
    return digits;
}

std::string format_real(double value, unsigned decimals, bool trim_zeros) {
    const std::string fmt = xprintF(0, "%2.$f", decimals);
    std::string out = sprintF(fmt.c_str(), value);
    if (trim_zeros && out.find('.') != std::string::npos) {
        while (!out.empty() && out.back() == '0') out.pop_back();
        if (!out.empty() && out.back() == '.') out.pop_back();
    }
    return out;
}

std::string format_array_as_hex(const unsigned char* data, unsigned len, unsigned long long head,
                                unsigned long long tail) {
    std::ostringstream os;
    os << "[" << format_str_1000(std::to_string(len), '.') << "] = {";
    const bool shorten = head + tail < len;
    for (unsigned i = 0; data != nullptr && i < len; ++i) {
        if (shorten && i >= head && i < len - tail) {
            if (i == head) os << " .. ";
            continue;
        }
        os << sprintF("%02X", data[i]);
        if (i + 1 < len) os << ' ';
    }
    os << "}";
    return os.str();
}

QString get_elided_text(const QString& text, int left, int right) {
    left = std::max(left, 0);
    if (right < 0) {
        if (text.size() > left) return text.left(left) + "...";
        return text;
    }
    if (text.size() > left + right) return text.left(left) + "..." + text.right(right);
    return text;
}

std::string replace_tab(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        if (c == '\t') out += "    ";
        else out.push_back(c);
    }
    return out;
}

std::string trim(const std::string& text) {
    const auto is_space = [](unsigned char c) { return std::isspace(c) != 0; };
    auto begin = std::find_if_not(text.begin(), text.end(), is_space);
    auto end = std::find_if_not(text.rbegin(), text.rend(), is_space).base();
    return begin < end ? std::string(begin, end) : std::string();
}

std::string to_lower(const std::string& text) {
    std::string out = text;
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
bool contains(const std::string& text, char c) { return text.find(c) != std::string::npos; }

std::string remove_part(const std::string& text, const std::string& part) {
    if (part.empty()) return text;
    std::string out;
    size_t pos = 0;
    for (size_t hit; (hit = text.find(part, pos)) != std::string::npos; pos = hit + part.size()) {
        out.append(text, pos, hit - pos);
    }
    out.append(text, pos, std::string::npos);
    return out;
}

std::vector<std::string> split_lines(const std::string& text, int width) {
    std::vector<std::string> lines;
    if (width <= 0) {
        lines.push_back(text);
        return lines;
    }
    const size_t w = static_cast<size_t>(width);
    size_t start = 0;
    while (start <= text.size()) {
        const size_t nl = text.find('\n', start);
        std::string para = text.substr(start, nl == std::string::npos ? std::string::npos : nl - start);
        while (para.size() > w) {
            size_t cut = para.rfind(' ', w);
            if (cut == std::string::npos || cut == 0) {
                lines.push_back(para.substr(0, w));
                para.erase(0, w);
            } else {
                lines.push_back(para.substr(0, cut));
                para.erase(0, cut + 1);
            }
        }
        lines.push_back(para);
        if (nl == std::string::npos) break;
        start = nl + 1;
    }
    return lines;
}

void remove_last_chars(std::ostringstream& os, unsigned n) {
    std::string s = os.str();
    s.resize(s.size() > n ? s.size() - n : 0);
    os.str(s);
    os.seekp(0, std::ios_base::end);
}

long long count_chars(std::ostringstream& os) { return static_cast<long long>(os.str().size()); }

std::string to_utf8(const QString& text) { return text.toStdString(); }

}  // namespace ki::str
