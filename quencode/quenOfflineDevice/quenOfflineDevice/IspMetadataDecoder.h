#pragma once

#include <cstddef>

#include <nscam/IMetadata.h>

namespace quen {

/**
 * Decodes the ISP's flat metadata buffer. The header and the records are trusted: a data size that
 * is not a whole number of items takes in one item more, one beyond the data area reads on into the
 * next record, and a record with data of an unknown type never ends. A later record replaces an
 * earlier one of the same tag.
 *
 * @param data null: nothing to decode
 * @param out entries are added or replaced
 * @return false for a null buffer only
 */
bool decodeTrustedIspMetadata(void const* data, NSCam::IMetadata& out);

/**
 * As decodeTrustedIspMetadata, for a buffer of a known size that nothing is believed of. A record
 * that does not fit the buffer or its own data area, is of an unknown type or holds no whole number
 * of items is left out, with a warning line; all records behind the buffer's end share one.
 *
 * @param bytes size of the buffer
 */
bool decodeIspMetadata(void const* data, size_t bytes, NSCam::IMetadata& out);

}  // namespace quen
