#pragma once

#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum android_LogPriority {
    ANDROID_LOG_UNKNOWN = 0,
    ANDROID_LOG_DEFAULT,
    ANDROID_LOG_VERBOSE,
    ANDROID_LOG_DEBUG,
    ANDROID_LOG_INFO,
    ANDROID_LOG_WARN,
    ANDROID_LOG_ERROR,
    ANDROID_LOG_FATAL,
    ANDROID_LOG_SILENT,
} android_LogPriority;

/** Write one line to the log. Any thread. Return a value above 0 when it was written. */
int __android_log_write(int prio, char const* tag, char const* text);
int __android_log_print(int prio, char const* tag, char const* format, ...)
        __attribute__((format(printf, 3, 4)));
int __android_log_vprint(int prio, char const* tag, char const* format, va_list arguments)
        __attribute__((format(printf, 3, 0)));

/**
 * Returns whether a line of that tag and priority would be written: 1 or 0. Any thread.
 *
 * @param default_prio used on the phone when nothing is set for the tag; the host uses its own
 *        level
 */
int __android_log_is_loggable(int prio, char const* tag, int default_prio);

/**
 * Logs a fatal line and aborts the process.
 *
 * @param condition text that is logged when there is no format; may be null
 * @param format of the line; may be null
 */
void __android_log_assert(char const* condition, char const* tag, char const* format, ...)
        __attribute__((noreturn)) __attribute__((format(printf, 3, 4)));

#ifdef __cplusplus
}
#endif
