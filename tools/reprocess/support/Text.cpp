#include "support/Text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace quen::reprocess {
namespace {

/** Bytes of the UTF-8 character at a place; 0 when it is a control character, or none. */
size_t characterLength(std::string const& text, size_t at) {
    auto const byteAt = [&](size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0u;
    };
    unsigned const first = byteAt(at);
    if (first < 0x80) {
        return (first >= 0x20 && first != 0x7f) || first == '\n' ? 1 : 0;
    }
    size_t const length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    bool valid = first >= 0xc2 && first <= 0xf4;
    for (size_t i = 1; i < length; ++i) {
        valid = valid && (byteAt(at + i) & 0xc0u) == 0x80;
    }
    bool const isControl = first == 0xc2 && byteAt(at + 1) < 0xa0;
    return valid && !isControl ? length : 0;
}

}  // namespace

std::string format(char const* pattern, ...) {
    va_list arguments;
    va_start(arguments, pattern);
    va_list again;
    va_copy(again, arguments);
    int const length = std::vsnprintf(nullptr, 0, pattern, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, pattern, again);
    va_end(again);
    return text;
}

std::string bytesText(size_t bytes) {
    if (bytes < 1000) {
        return format("%zu bytes", bytes);
    }
    double const thousands = static_cast<double>(bytes) / 1000;
    return thousands < 1000 ? format("%.1f kB", thousands) : format("%.1f MB", thousands / 1000);
}

std::string printable(std::string const& text) {
    std::string result;
    for (size_t at = 0; at < text.size();) {
        size_t const length = characterLength(text, at);
        if (length == 0) {
            result += format("\\x%02x", static_cast<unsigned char>(text[at]));
        }
        result.append(text, at, length);
        at += std::max<size_t>(length, 1);
    }
    return result;
}

}  // namespace quen::reprocess
