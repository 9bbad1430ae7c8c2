#pragma once

#include <optional>
#include <string_view>

/**
 * Controls the log of a program, the camera's lines and Android's alike. Any thread.
 *
 * By default errors and warnings go to standard error. The flags of `g_logInfoLv` are all set and
 * stay so: the enable test decides which lines are logged.
 */
namespace quen::host {

/** Which lines are logged: those of the named level and of the levels before it. */
enum class LogLevel { Silent, Error, Warning, Info, Debug };

/** "silent", "error", "warning", "info" or "debug"; nothing for another name. */
std::optional<LogLevel> logLevelByName(std::string_view name);

/** Level of every tag without a level of its own. */
LogLevel logLevel();
void setLogLevel(LogLevel level);

/** @return false, and nothing changed, for an unknown name */
bool setLogLevel(std::string_view name);

/** Gives a tag a level of its own, above or below the others'. */
void setTagLogLevel(std::string_view tag, LogLevel level);

/** Removes the levels of single tags. */
void clearTagLogLevels();

/**
 * Receives the log's lines instead of standard error.
 *
 * Called on the thread that logs, by several threads at a time. A sink must not log, nor replace
 * the sink.
 */
class LogSink {
  public:
    virtual ~LogSink() = default;

    /**
     * A line of the camera (`log_dbg_print`).
     *
     * @param level debug 0, error 1, warning 2, info 3
     * @param text without an end of line
     */
    virtual void write(char const* tag, int level, char const* text) = 0;

    /**
     * A line of Android's log (`__android_log_print` and the like); dropped unless overridden. A
     * line that ends the process goes to standard error, too.
     *
     * @param priority ANDROID_LOG_*
     */
    virtual void writeAndroid(char const* tag, int priority, char const* text);
};

/**
 * Replaces the sink; null for standard error. When the call has returned, no thread is in the old
 * sink.
 *
 * @param sink owned by the caller, who replaces it before destroying it
 * @return the sink before, null for standard error
 */
LogSink* setLogSink(LogSink* sink);

/**
 * Writes a line to standard error as the log does where there is no sink: for a sink that looks at
 * the lines and lets them pass. Any thread.
 */
void printCameraLine(char const* tag, int level, char const* text);
void printAndroidLine(char const* tag, int priority, char const* text);

}  // namespace quen::host
