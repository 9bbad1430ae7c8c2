#pragma once

#include <android/log.h>

/** A source file defines LOG_TAG before it includes this header. */
#ifndef LOG_TAG
#define LOG_TAG nullptr
#endif

#ifndef LOG_NDEBUG
#define LOG_NDEBUG 1
#endif

#ifndef LOG_PRI
#define LOG_PRI(priority, tag, ...) __android_log_print(priority, tag, __VA_ARGS__)
#endif
#ifndef ALOG
#define ALOG(priority, tag, ...) LOG_PRI(ANDROID_##priority, tag, __VA_ARGS__)
#endif

#ifndef ALOGV
#if LOG_NDEBUG
// Compiled, never run: its arguments stay in use and its format checked.
#define ALOGV(...)                                         \
    do {                                                   \
        if (false) {                                       \
            (void)ALOG(LOG_VERBOSE, LOG_TAG, __VA_ARGS__); \
        }                                                  \
    } while (false)
#else
#define ALOGV(...) ((void)ALOG(LOG_VERBOSE, LOG_TAG, __VA_ARGS__))
#endif
#endif
#ifndef ALOGD
#define ALOGD(...) ((void)ALOG(LOG_DEBUG, LOG_TAG, __VA_ARGS__))
#endif
#ifndef ALOGI
#define ALOGI(...) ((void)ALOG(LOG_INFO, LOG_TAG, __VA_ARGS__))
#endif
#ifndef ALOGW
#define ALOGW(...) ((void)ALOG(LOG_WARN, LOG_TAG, __VA_ARGS__))
#endif
#ifndef ALOGE
#define ALOGE(...) ((void)ALOG(LOG_ERROR, LOG_TAG, __VA_ARGS__))
#endif

#ifndef LOG_ALWAYS_FATAL
#define LOG_ALWAYS_FATAL(...) __android_log_assert(nullptr, LOG_TAG, __VA_ARGS__)
#endif
#ifndef LOG_ALWAYS_FATAL_IF
#define LOG_ALWAYS_FATAL_IF(condition, ...)                         \
    do {                                                            \
        if (__builtin_expect(!!(condition), 0)) {                   \
            __android_log_assert(#condition, LOG_TAG, __VA_ARGS__); \
        }                                                           \
    } while (false)
#endif
