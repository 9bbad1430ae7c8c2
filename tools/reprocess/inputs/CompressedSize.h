#pragma once

#include <cstddef>

namespace quen::reprocess {

/**
 * Refuses a picture that its file has too few bytes for, however it is compressed: a damaged header
 * must not take gigabytes of memory, and minutes, before the samples turn out to be missing.
 *
 * @throws Failure
 */
void checkCompressedSize(size_t bytes, size_t width, size_t height);

}  // namespace quen::reprocess
