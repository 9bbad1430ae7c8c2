#pragma once

namespace quen::host {

/**
 * Loads a library from the folder of the one that some code is in, wherever both are installed, and
 * finds a symbol in it. It stays loaded. Any thread.
 *
 * @param code any function of the library beside which to look
 * @return null, with dlerror() as the reason, when there is no such library or symbol
 */
void* findInSibling(void const* code, char const* file, char const* symbol);

}  // namespace quen::host
