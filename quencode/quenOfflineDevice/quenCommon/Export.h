#pragma once

/** Marks what the library's clients may link; everything else stays hidden. */
#define QUEN_EXPORT __attribute__((visibility("default")))
