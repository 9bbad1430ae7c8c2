#pragma once

#include <android/log.h>
#include <mtkcam/log.h>

/**
 * The library's log lines. A source file defines LOG_TAG before it includes this header and logs
 * with QLOGD, QLOGE, QLOGW and QLOGI. A disabled line costs one test: its
 * arguments are not evaluated and its text is not formatted.
 */

namespace quen {

/** A level of the log: its place in `g_logInfoLv` and its letter for `mtkcam_testLog`. */
struct LogLevel {
    int number;
    char letter;
};

inline constexpr LogLevel kLogDebug{0, 'D'};
inline constexpr LogLevel kLogError{1, 'E'};
inline constexpr LogLevel kLogWarning{2, 'W'};
inline constexpr LogLevel kLogInfo{3, 'I'};

/** Whether lines of a tag and level are enabled. Any thread. */
inline bool logEnabled(char const* tag, LogLevel level) {
    return mtkcam_testLog(tag, level.letter) && g_logInfoLv[level.number].enabled;
}

/**
 * Formats one line, cut at 1023 characters, and writes it. Any thread.
 *
 * @param file path of the source file; its base name is printed
 * @param format of the message, as for printf
 */
void logPrint(char const* tag, LogLevel level, char const* file, int line, char const* function,
              char const* format, ...) __attribute__((format(printf, 6, 7)));

}  // namespace quen

#define QLOG(level, ...)                                                                     \
    do {                                                                                     \
        if (::quen::logEnabled(LOG_TAG, level)) {                                            \
            ::quen::logPrint(LOG_TAG, level, __FILE__, __LINE__, __FUNCTION__, __VA_ARGS__); \
        }                                                                                    \
    } while (false)

#define QLOGD(...) QLOG(::quen::kLogDebug, __VA_ARGS__)
#define QLOGE(...) QLOG(::quen::kLogError, __VA_ARGS__)
#define QLOGW(...) QLOG(::quen::kLogWarning, __VA_ARGS__)
#define QLOGI(...) QLOG(::quen::kLogInfo, __VA_ARGS__)

/** Logs a message that begins with "[Fatal]" and aborts the process. */
#define QFATAL(...)                                                                               \
    do {                                                                                          \
        QLOGE(__VA_ARGS__);                                                                       \
        __android_log_assert("1", LOG_TAG, "(%s){#%d:%s}\r\n", __FUNCTION__, __LINE__, __FILE__); \
    } while (false)
