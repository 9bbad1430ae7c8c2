#include "host/log/LogOutput.h"

#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <android/log.h>

#include "host/base/Mutex.h"
#include "host/log/LogControl.h"

namespace quen::host {
namespace {

constexpr char kPriorityLetters[] = "??VDIWEF";  // by ANDROID_LOG_*
constexpr char kCameraLetters[] = "DEWI";        // by the camera's level

std::atomic<LogSink*> gSink{nullptr};
SharedMutex gSinkLock;  // shared while the sink is called, exclusive to replace it

template <size_t N>
char letterOf(char const (&letters)[N], int index) {
    return index >= 0 && static_cast<size_t>(index) < N - 1 ? letters[index] : '?';
}

size_t lengthWithoutLineEnd(char const* text) {
    size_t length = strlen(text);
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r')) {
        --length;
    }
    return length;
}

void writeWhole(char const* bytes, size_t count) {
    while (count > 0) {
        ssize_t const written = write(STDERR_FILENO, bytes, count);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;  // nowhere left to report it
        }
        bytes += written;
        count -= static_cast<size_t>(written);
    }
}

void writeToStandardError(char letter, char const* tag, char const* text) {
    int const error = errno;
    timeval now = {};
    gettimeofday(&now, nullptr);
    tm local = {};
    localtime_r(&now.tv_sec, &local);

    char line[kOutputLineBytes];
    int const head =
            snprintf(line, sizeof(line) / 2, "%02d:%02d:%02d.%03d %5d %c %s: ", local.tm_hour,
                     local.tm_min, local.tm_sec, static_cast<int>(now.tv_usec / 1000),
                     static_cast<int>(gettid()), letter, tag);
    size_t used = std::min(static_cast<size_t>(std::max(head, 0)), sizeof(line) / 2 - 1);
    size_t const length = std::min(lengthWithoutLineEnd(text), sizeof(line) - used - 1);
    memcpy(line + used, text, length);
    used += length;
    line[used++] = '\n';
    writeWhole(line, used);
    errno = error;
}

/** Calls `use` with the sink, which is not replaced meanwhile. False without a sink. */
template <typename Use>
bool withSink(Use use) {
    if (gSink.load(std::memory_order_relaxed) == nullptr) {
        return false;
    }
    ReaderLock const lock(gSinkLock);
    LogSink* const sink = gSink.load(std::memory_order_relaxed);
    if (sink == nullptr) {
        return false;
    }
    use(*sink);
    return true;
}

}  // namespace

void LogSink::writeAndroid(char const* /*tag*/, int /*priority*/, char const* /*text*/) {}

LogSink* setLogSink(LogSink* sink) {
    WriterLock const lock(gSinkLock);
    return gSink.exchange(sink, std::memory_order_relaxed);
}

void printCameraLine(char const* tag, int level, char const* text) {
    writeToStandardError(letterOf(kCameraLetters, level), tag, text);
}

void printAndroidLine(char const* tag, int priority, char const* text) {
    writeToStandardError(letterOf(kPriorityLetters, priority), tag, text);
}

void outputCameraLine(char const* tag, int level, char const* text) {
    if (!withSink([&](LogSink& sink) { sink.write(tag, level, text); })) {
        printCameraLine(tag, level, text);
    }
}

void outputAndroidLine(char const* tag, int priority, char const* text) {
    if (!withSink([&](LogSink& sink) { sink.writeAndroid(tag, priority, text); })) {
        printAndroidLine(tag, priority, text);
    }
}

void outputLastLine(char const* tag, int priority, char const* text) {
    withSink([&](LogSink& sink) { sink.writeAndroid(tag, priority, text); });
    printAndroidLine(tag, priority, text);
}

}  // namespace quen::host
