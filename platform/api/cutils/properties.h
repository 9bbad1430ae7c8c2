#pragma once

#include <cstdint>

/** Size of a value, final zero included. PROPERTY_KEY_MAX is an old limit: keys may be longer. */
#define PROPERTY_KEY_MAX 32
#define PROPERTY_VALUE_MAX 92

extern "C" {

/**
 * Reads a property. Any thread.
 *
 * @param value room for PROPERTY_VALUE_MAX characters
 * @param defaultValue used when the property is unset or empty; null for none
 * @return length of what was put into `value`
 */
int property_get(char const* key, char* value, char const* defaultValue);

/**
 * Read a property as a number (decimal, 0x.. or 0..) or a truth value (0, n, no, false, off; 1, y,
 * yes, true, on). Any thread.
 *
 * @return the default when the property is unset, cannot be read so, or is out of the type's range
 */
int8_t property_get_bool(char const* key, int8_t defaultValue);
int64_t property_get_int64(char const* key, int64_t defaultValue);
int32_t property_get_int32(char const* key, int32_t defaultValue);

/**
 * Sets a property; null or "" unsets it. Any thread.
 *
 * @return 0, or -1 when the key is null or empty, or the value too long
 */
int property_set(char const* key, char const* value);
}
