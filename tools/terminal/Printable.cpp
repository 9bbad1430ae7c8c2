#include "terminal/Printable.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace quen {
namespace {

/** Bytes of the UTF-8 character at a place; 0 when it is a control character, or none. */
size_t characterLength(std::string const& text, size_t at) {
    auto const byteAt = [&](size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0u;
    };
    unsigned const first = byteAt(at);
    if (first < 0x80) {
        return first >= 0x20 && first != 0x7f ? 1 : 0;
    }
    size_t const length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    bool valid = first >= 0xc2 && first <= 0xf4;
    for (size_t i = 1; i < length; ++i) {
        valid = valid && (byteAt(at + i) & 0xc0u) == 0x80;
    }
    bool const isControl = first == 0xc2 && byteAt(at + 1) < 0xa0;
    return valid && !isControl ? length : 0;
}

/** @param keepsEnds whether ends of lines stay */
std::string escaped(std::string const& text, bool keepsEnds) {
    std::string result;
    for (size_t at = 0; at < text.size();) {
        bool const isKeptEnd = keepsEnds && text[at] == '\n';
        size_t const length = isKeptEnd ? 1 : characterLength(text, at);
        if (length == 0) {
            char code[] = "\\xNN";
            std::snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned char>(text[at]));
            result += code;
        }
        result.append(text, at, length);
        at += std::max<size_t>(length, 1);
    }
    return result;
}

}  // namespace

std::string printable(std::string const& text) {
    return escaped(text, false);
}

std::string printableLines(std::string const& text) {
    return escaped(text, true);
}

}  // namespace quen
