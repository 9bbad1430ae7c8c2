#include "support/Numbers.h"

#include <cerrno>
#include <cstdlib>

namespace quen::reprocess {

std::optional<uint64_t> parseWhole(std::string const& text, int64_t least, uint64_t most) {
    bool const negative = !text.empty() && text.front() == '-';
    char const* const digits = text.c_str() + (negative ? 1 : 0);
    if (*digits < '0' || *digits > '9') {
        return std::nullopt;
    }
    bool const hexadecimal = digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    char* end = nullptr;
    errno = 0;
    uint64_t const magnitude = std::strtoull(digits, &end, hexadecimal ? 16 : 10);
    bool const whole = errno == 0 && end == text.c_str() + text.size();
    uint64_t const largest = negative ? uint64_t{0} - static_cast<uint64_t>(least) : most;
    if (!whole || magnitude > largest) {
        return std::nullopt;
    }
    return negative ? uint64_t{0} - magnitude : magnitude;
}

}  // namespace quen::reprocess
