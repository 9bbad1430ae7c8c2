#pragma once

#include <cstddef>

namespace quen::host {

/**
 * Longest line on standard error, newline included; longer ones are cut. Written in one call: lines
 * do not mix, even on a pipe.
 */
constexpr size_t kOutputLineBytes = 4096;

/** Hand a line to the sink, or write it to standard error where there is none. Any thread. */
void outputCameraLine(char const* tag, int level, char const* text);
void outputAndroidLine(char const* tag, int priority, char const* text);

/** As outputAndroidLine, and to standard error in any case. */
void outputLastLine(char const* tag, int priority, char const* text);

}  // namespace quen::host
