#pragma once

#include <cstddef>
#include <string>

#include <system/camera_metadata.h>

namespace quen::host {

/**
 * Metadata as text: a line a tag, "0xc0030014 currentMode int64[1] 2", each ended by a newline.
 * Values of long lists are left out behind the first ones.
 */

/** Appends one entry's line, without the newline. */
void appendEntryText(std::string& text, camera_metadata_ro_entry_t const& entry);

/** @param metadata null has no lines */
std::string metadataText(camera_metadata const* metadata);

/** Text of an ISP metadata buffer; one line that says what is wrong with a malformed one. */
std::string ispMetadataText(void const* data, size_t size);

}  // namespace quen::host
