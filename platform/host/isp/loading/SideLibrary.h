#pragma once

namespace quen::host::isp {

/**
 * Loads a library that lies beside the software ISP's, for what few runs need and what takes a
 * while to load. Thread-safe; the library stays.
 *
 * @param file its name, without a folder
 * @param symbol a function in it
 * @return the function; null, with an error logged, when it cannot be had
 */
void* loadFromSideLibrary(char const* file, char const* symbol);

}  // namespace quen::host::isp
