#pragma once

#include <cstddef>
#include <string>

#include <system/camera_metadata.h>

namespace quen::host {

/**
 * Formats metadata as text: a line per tag, "0xc0030014 currentMode int64[1] 2", each ended by a
 * newline. Long lists are cut.
 */

/** Appends one entry's line, without the newline. */
void appendEntryText(std::string& text, camera_metadata_ro_entry_t const& entry);

/** @param metadata null gives no lines */
std::string metadataText(camera_metadata const* metadata);

/** Formats an ISP metadata buffer; a malformed one as one line that names the error. */
std::string ispMetadataText(void const* data, size_t size);

}  // namespace quen::host
