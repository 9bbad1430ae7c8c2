#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** First id of vendors' tags. */
#define CAMERA_METADATA_VENDOR_TAG_BOUNDARY 0x80000000u

/** Vendor id of a buffer without a vendor. */
#define CAMERA_METADATA_INVALID_VENDOR_ID UINT64_MAX

typedef uint64_t metadata_vendor_id_t;

/**
 * Describes a vendor's tags. The vendor keeps the texts valid. Returns null and -1 for unknown
 * tags. Any thread may call.
 */
typedef struct vendor_tag_ops vendor_tag_ops_t;
struct vendor_tag_ops {
    int (*get_tag_count)(const vendor_tag_ops_t* v);
    void (*get_all_tags)(const vendor_tag_ops_t* v, uint32_t* tag_array);
    const char* (*get_section_name)(const vendor_tag_ops_t* v, uint32_t tag);
    const char* (*get_tag_name)(const vendor_tag_ops_t* v, uint32_t tag);
    int (*get_tag_type)(const vendor_tag_ops_t* v, uint32_t tag);
    void* reserved[8];  ///< null
};

/** As above, for several vendors by their ids. */
struct vendor_tag_cache_ops {
    int (*get_tag_count)(metadata_vendor_id_t id);
    void (*get_all_tags)(uint32_t* tag_array, metadata_vendor_id_t id);
    const char* (*get_section_name)(uint32_t tag, metadata_vendor_id_t id);
    const char* (*get_tag_name)(uint32_t tag, metadata_vendor_id_t id);
    int (*get_tag_type)(uint32_t tag, metadata_vendor_id_t id);
    void* reserved[8];  ///< null
};

#ifdef __cplusplus
}
#endif
