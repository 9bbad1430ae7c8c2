#include "quenCommon/Log.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace quen {
namespace {

constexpr size_t kLineBytes = 1024;

}  // namespace

void logPrint(char const* tag, LogLevel level, char const* file, int line, char const* function,
              char const* format, ...) {
    char text[kLineBytes];
    int const written =
            snprintf(text, sizeof(text), "%s[%s] %s:%d %s() ", g_logInfoLv[level.number].prefix,
                     tag, get_filename(file), line, function);
    size_t const used = written < 0 ? 0 : static_cast<size_t>(written);
    if (used < sizeof(text)) {
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(text + used, sizeof(text) - used, format, arguments);
        va_end(arguments);
    }
    log_dbg_print(tag, level.number, text);
}

}  // namespace quen
