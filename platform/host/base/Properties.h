#pragma once

#include <string_view>

namespace quen::host {

/**
 * Sets a system property of this process, as `property_set` does; an empty value unsets it. Any
 * thread.
 *
 * @return false, and nothing changed, for an empty name or a value of PROPERTY_VALUE_MAX characters
 * or more
 */
bool setProperty(std::string_view name, std::string_view value);

}  // namespace quen::host
