#pragma once

#include <vector>

/**
 * Writer of the ISP's flat metadata buffer: a header of 20 bytes (12 reserved, entry count, offset
 * of the first record), then records of 56 bytes (tag, type, data size, 4 reserved, 40 data bytes),
 * all little-endian. Type codes: 0 unsigned 8-bit, 1 int32, 2 int64, 3 float.
 */

/**
 * Makes `vec` an empty buffer with room for `entryCount` records.
 *
 * @return 0, or an error code
 */
int initial_isp_metadata_vector(std::vector<unsigned char>& vec, unsigned int entryCount);

/**
 * Appends one record.
 *
 * @param data items, packed; may be null when `byteSize` is 0
 * @param byteSize at most 40
 * @param usedBytes receives the buffer's length afterwards when not null
 * @return 0, or an error code; `vec` is unchanged then
 */
int add_isp_metadata_entry(std::vector<unsigned char>& vec, unsigned int tag, unsigned int ispType,
                           void* data, unsigned int byteSize, unsigned int* usedBytes);
