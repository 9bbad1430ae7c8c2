#include <cstring>

#include <mtkcam/log.h>

#include "host/log/LogFilter.h"
#include "host/log/LogOutput.h"

using quen::host::LogLevel;

// All set: LogControl.h decides which lines are logged.
LogLevelInfo g_logInfoLv[4] = {
        {true, "D "},
        {true, "E "},
        {true, "W "},
        {true, "I "},
};

bool mtkcam_testLog(char const* tag, char level) {
    switch (level) {
        case 'D':
            return quen::host::isWanted(tag, LogLevel::Debug);
        case 'E':
            return quen::host::isWanted(tag, LogLevel::Error);
        case 'W':
            return quen::host::isWanted(tag, LogLevel::Warning);
        case 'I':
            return quen::host::isWanted(tag, LogLevel::Info);
        default:
            return false;
    }
}

void log_dbg_print(char const* tag, int level, char const* text) {
    quen::host::outputCameraLine(tag, level, text);
}

char const* get_filename(char const* path) {
    char const* const slash = strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}
