#pragma once

#include <cstddef>
#include <cstdint>

namespace quenfuzz {

/**
 * Sets the bytes of the file that the command line's readers open from now on, whatever name they
 * are given: they get a copy of just that size, so that a read beyond it is found.
 */
void setInputFile(uint8_t const* data, size_t size);

/** The same as a file of the system's, for a library that opens it itself. @return its path */
char const* setSystemFile(uint8_t const* data, size_t size);

}  // namespace quenfuzz
