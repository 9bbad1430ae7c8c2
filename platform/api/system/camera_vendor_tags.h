#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Vendors' tags begin here. */
#define CAMERA_METADATA_VENDOR_TAG_BOUNDARY 0x80000000u

/** Of a buffer that belongs to no vendor in particular. */
#define CAMERA_METADATA_INVALID_VENDOR_ID UINT64_MAX

typedef uint64_t metadata_vendor_id_t;

/**
 * What a vendor's tags are. Texts stay the vendor's and valid; answers for a tag that is none of
 * the vendor's are null and -1. Any thread may call.
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

/** The same of several vendors, told apart by their ids. */
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
