#pragma once

#include <system/camera_metadata.h>
#include <system/camera_vendor_tags.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * For the camera service only: sets the operations that describe the process's vendor tags. The
 * caller keeps them valid; null removes them. The host sets those of the platform's own tags at the
 * start, as a camera service does on the phone. Any thread.
 */
int set_camera_metadata_vendor_ops(const vendor_tag_ops_t* query_ops);

/** As above, for buffers that have a vendor id; these take precedence. */
int set_camera_metadata_vendor_cache_ops(const struct vendor_tag_cache_ops* query_cache_ops);

void set_camera_metadata_vendor_id(camera_metadata_t* meta, metadata_vendor_id_t id);

/** Returns CAMERA_METADATA_INVALID_VENDOR_ID for a null buffer. */
metadata_vendor_id_t get_camera_metadata_vendor_id(const camera_metadata_t* meta);

/** Section, name and type of a tag for buffers of that vendor id. */
const char* get_local_camera_metadata_section_name_vendor_id(uint32_t tag, metadata_vendor_id_t id);
const char* get_local_camera_metadata_tag_name_vendor_id(uint32_t tag, metadata_vendor_id_t id);
int get_local_camera_metadata_tag_type_vendor_id(uint32_t tag, metadata_vendor_id_t id);

#ifdef __cplusplus
}
#endif
