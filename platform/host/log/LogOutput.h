#pragma once

#include <cstddef>

namespace quen::host {

/** Longest line on standard error with its end; longer ones are cut. One write, whole even on a
 * pipe. */
constexpr size_t kOutputLineBytes = 4096;

/** Hand a line to the sink, or write it to standard error where there is none. Any thread. */
void outputCameraLine(char const* tag, int level, char const* text);
void outputAndroidLine(char const* tag, int priority, char const* text);

/** As outputAndroidLine, and to standard error in any case. */
void outputLastLine(char const* tag, int priority, char const* text);

}  // namespace quen::host
