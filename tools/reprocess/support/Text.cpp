#include "support/Text.h"

#include <cstdarg>
#include <cstdio>

namespace quen::reprocess {

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

}  // namespace quen::reprocess
