#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <android/log.h>

#include "host/log/LogFilter.h"
#include "host/log/LogOutput.h"

using quen::host::LogLevel;

namespace {

/** Longest text of a line with its end; longer ones are cut. */
constexpr size_t kTextBytes = 1024;

constexpr LogLevel kLevels[] = {
        LogLevel::Info,     // ANDROID_LOG_UNKNOWN
        LogLevel::Info,     // ANDROID_LOG_DEFAULT
        LogLevel::Debug,    // ANDROID_LOG_VERBOSE
        LogLevel::Debug,    // ANDROID_LOG_DEBUG
        LogLevel::Info,     // ANDROID_LOG_INFO
        LogLevel::Warning,  // ANDROID_LOG_WARN
        LogLevel::Error,    // ANDROID_LOG_ERROR
        LogLevel::Error,    // ANDROID_LOG_FATAL
};

char const* nameOf(char const* tag) {
    return tag == nullptr ? "" : tag;
}

bool isWantedPriority(int priority, char const* tag) {
    bool const known = priority >= ANDROID_LOG_UNKNOWN && priority < ANDROID_LOG_SILENT;
    return known && quen::host::isWanted(nameOf(tag), kLevels[priority]);
}

}  // namespace

int __android_log_is_loggable(int prio, char const* tag, int /*default_prio*/) {
    return isWantedPriority(prio, tag) ? 1 : 0;
}

int __android_log_write(int prio, char const* tag, char const* text) {
    if (!isWantedPriority(prio, tag)) {
        return -EPERM;
    }
    quen::host::outputAndroidLine(nameOf(tag), prio, text == nullptr ? "" : text);
    return 1;
}

int __android_log_vprint(int prio, char const* tag, char const* format, va_list arguments) {
    if (!isWantedPriority(prio, tag)) {
        return -EPERM;
    }
    char text[kTextBytes] = "";
    vsnprintf(text, sizeof(text), format, arguments);
    quen::host::outputAndroidLine(nameOf(tag), prio, text);
    return 1;
}

int __android_log_print(int prio, char const* tag, char const* format, ...) {
    if (!isWantedPriority(prio, tag)) {
        return -EPERM;
    }
    va_list arguments;
    va_start(arguments, format);
    int const outcome = __android_log_vprint(prio, tag, format, arguments);
    va_end(arguments);
    return outcome;
}

void __android_log_assert(char const* condition, char const* tag, char const* format, ...) {
    char text[kTextBytes] = "Unspecified assertion failed";
    if (format != nullptr) {
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(text, sizeof(text), format, arguments);
        va_end(arguments);
    } else if (condition != nullptr) {
        snprintf(text, sizeof(text), "Assertion failed: %s", condition);
    }
    quen::host::outputLastLine(nameOf(tag), ANDROID_LOG_FATAL, text);
    abort();
}
