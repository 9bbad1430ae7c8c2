#pragma once

/**
 * The camera's logging calls. A line is written when `mtkcam_testLog` allows its tag and letter and
 * the level's flag in `g_logInfoLv` is set; writing goes through `log_dbg_print`.
 */

/** One level of the log: whether it is on, and the text that begins its lines. */
struct LogLevelInfo {
    bool enabled;
    char const* prefix;
};

/** Indexed by the level's number: debug 0, error 1, warning 2, info 3. */
extern LogLevelInfo g_logInfoLv[4];

/**
 * Whether lines of a tag are wanted. Cheap; any thread.
 *
 * @param level 'D', 'E', 'W' or 'I'
 */
bool mtkcam_testLog(char const* tag, char level);

/** Writes one formatted line. Any thread. */
void log_dbg_print(char const* tag, int level, char const* text);

/** The base name of a path; points into `path`. */
char const* get_filename(char const* path);
