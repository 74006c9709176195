#pragma once
// Numbers rendered for people (grouping, byte sizes, magnitude words, zero-filled fields,
// hex dumps) and small text operations.

#include <QString>

#include <sstream>
#include <string>
#include <vector>

namespace ki::str {

/// Decimal digits of |value| grouped in threes by `separator`, "-" in front when negative.
std::string format_1000(long long value, char separator);
/// The same grouping over a string of digits.
std::string format_str_1000(const std::string& digits, char separator);
/// Below 1000 the number itself; otherwise "2 million" (with_number) or "million".
std::string format_magnitude(unsigned long long n, bool with_number);
/// Decimal units "%2.2f KB" .. "TB". The TB branch divides by 10^9, as it always has.
std::string format_bytes(double bytes);
/// Binary units; the TB branch uses the GB divisor as well.
std::string format_bytes_1024(double bytes);
std::string format_fill_zero(unsigned width, long long value);
std::string format_fill_zero_microseconds(long long value);
std::string format_fill_zero_milliseconds(long long value);
/// Decimal digits padded on the left with `fill` to `width` characters.
std::string format_fill(char fill, unsigned width, long long value);
/// `value` with `decimals` decimals ("%2.<decimals>f"). With `trim_zeros` set, trailing
/// zeros of the fraction and a bare decimal point are dropped ("2.50" -> "2.5", "3.00" -> "3").
std::string format_real(double value, unsigned decimals, bool trim_zeros = false);
/// "[len] = {00 01 .. 08 09}": the first `head` and last `tail` bytes when head + tail < len.
std::string format_array_as_hex(const unsigned char* data, unsigned len, unsigned long long head,
                                unsigned long long tail);

/// First `left` characters and "..." (and the last `right` ones when right >= 0) when the text
/// is longer than that; otherwise the text unchanged.
QString get_elided_text(const QString& text, int left, int right = -1);
std::string replace_tab(const std::string& text);
std::string trim(const std::string& text);
std::string to_lower(const std::string& text);
bool contains(const std::string& text, const std::string& part);
bool contains(const std::string& text, char c);
/// `text` with every occurrence of `part` removed.
std::string remove_part(const std::string& text, const std::string& part);
/// Breaks `text` into lines of at most `width` characters. Breaks at the last blank that fits
/// (the blank is dropped); a word longer than `width` is cut hard. Line feeds in the text
/// always end a line. A width of 0 or less returns the text as one line.
std::vector<std::string> split_lines(const std::string& text, int width);
/// Drops the last `n` characters written to `os` (used to strip a trailing separator).
void remove_last_chars(std::ostringstream& os, unsigned n);
/// Characters written to `os` so far.
long long count_chars(std::ostringstream& os);
std::string to_utf8(const QString& text);

}  // namespace ki::str
