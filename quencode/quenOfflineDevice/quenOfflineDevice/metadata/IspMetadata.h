#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <nscam/IMetadata.h>

/**
 * The ISP's flat metadata buffer: encoded for configurations and requests, decoded from results.
 * Little-endian and of no particular alignment. A header, then records of 56 bytes:
 *
 *     0   12 bytes reserved           0   tag
 *     12  entryCount                  4   type, an ISP type code
 *     16  firstRecordOffset           8   dataSize, bytes
 *                                     12  4 bytes reserved
 *                                     16  data, 40 bytes at most
 *
 * Any thread; nothing but the arguments is touched.
 */

namespace quen {

/** Type codes of a record. Float and int64 have each other's codes in IMetadata. */
inline constexpr uint32_t kIspTypeByte = 0;
inline constexpr uint32_t kIspTypeInt32 = 1;
inline constexpr uint32_t kIspTypeInt64 = 2;
inline constexpr uint32_t kIspTypeFloat = 3;

/**
 * Encodes metadata in its own order. Entries of types that the ISP does not know, and those too
 * large for a record, are left out with a warning.
 *
 * @param meta not null; not changed
 * @param out reinitialised; a writer that cannot do so aborts the process
 */
void convertToISPMetadata(NSCam::IMetadata const* meta, std::vector<unsigned char>& out);

/**
 * Decodes a buffer whose header and records are trusted: a data size that is not a whole number of
 * items takes in one item more, one beyond the data area reads on into the next record, and a
 * record with data of an unknown type never ends. A later record replaces an earlier one of the
 * same tag.
 *
 * @param data null: nothing to decode
 * @param out entries are added or replaced
 * @return false for a null buffer only
 */
bool convertToIMetadata(void const* data, NSCam::IMetadata& out);

/**
 * As convertToIMetadata, for an untrusted buffer of known size. A record that
 * does not fit the buffer or its own data area, is of an unknown type or holds no whole number of
 * items is left out, with a warning line; all records beyond the buffer's end share one line.
 *
 * @param bytes size of the buffer
 */
bool convertCheckedToIMetadata(void const* data, size_t bytes, NSCam::IMetadata& out);

}  // namespace quen
