#pragma once

#include <stddef.h>
#include <stdint.h>

#include <system/camera_metadata_tags.h>
#include <system/camera_vendor_tags.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * A flat buffer of metadata entries, each a tag with items of one type. The buffer holds no
 * pointers: it can be copied as bytes. Calls return 0 for success and another value for a failure,
 * which leaves the buffer unchanged; a null buffer is a failure. The counts and capacities of a
 * null buffer are 0 on the host; on the phone, reading them ends the process. Not thread-safe.
 */

/** Types of items; the type of a tag is fixed. */
enum {
    TYPE_BYTE = 0,
    TYPE_INT32 = 1,
    TYPE_FLOAT = 2,
    TYPE_INT64 = 3,
    TYPE_DOUBLE = 4,
    TYPE_RATIONAL = 5,
    NUM_TYPES
};

typedef struct camera_metadata_rational {
    int32_t numerator;
    int32_t denominator;
} camera_metadata_rational_t;

/** A found entry; `data` points into the buffer and is valid until the buffer changes. */
typedef struct camera_metadata_entry {
    size_t index;
    uint32_t tag;
    uint8_t type;
    size_t count;  ///< items
    union {
        uint8_t* u8;
        int32_t* i32;
        float* f;
        int64_t* i64;
        double* d;
        camera_metadata_rational_t* r;
    } data;
} camera_metadata_entry_t;

typedef struct camera_metadata_ro_entry {
    size_t index;
    uint32_t tag;
    uint8_t type;
    size_t count;  ///< items
    union {
        const uint8_t* u8;
        const int32_t* i32;
        const float* f;
        const int64_t* i64;
        const double* d;
        const camera_metadata_rational_t* r;
    } data;
} camera_metadata_ro_entry_t;

struct camera_metadata;
typedef struct camera_metadata camera_metadata_t;

/** Bytes of one item, and its name, by type. */
extern const size_t camera_metadata_type_size[NUM_TYPES];
extern const char* camera_metadata_type_names[NUM_TYPES];

/** Id ranges of the sections (first id, one past the last), and their names. */
extern unsigned int camera_metadata_section_bounds[ANDROID_SECTION_COUNT][2];
extern const char* camera_metadata_section_names[ANDROID_SECTION_COUNT];

// ---- Buffers

/** A new buffer with room for that many entries and bytes of data; `free_camera_metadata` frees it.
 */
camera_metadata_t* allocate_camera_metadata(size_t entry_capacity, size_t data_capacity);

/** As above, in the caller's memory, 8-byte aligned; null when `dst_size` is too small. */
camera_metadata_t* place_camera_metadata(void* dst, size_t dst_size, size_t entry_capacity,
                                         size_t data_capacity);

void free_camera_metadata(camera_metadata_t* metadata);

/** Bytes of a buffer with such capacities. */
size_t calculate_camera_metadata_size(size_t entry_count, size_t data_count);

/** Bytes that an entry takes of the data capacity; 0 when its items lie in the entry itself. */
size_t calculate_camera_metadata_entry_data_size(uint8_t type, size_t data_count);

/** Bytes of the buffer, and those it would take without spare capacity; 1 for a null buffer. */
size_t get_camera_metadata_size(const camera_metadata_t* metadata);
size_t get_camera_metadata_compact_size(const camera_metadata_t* metadata);

size_t get_camera_metadata_entry_count(const camera_metadata_t* metadata);
size_t get_camera_metadata_entry_capacity(const camera_metadata_t* metadata);
size_t get_camera_metadata_data_count(const camera_metadata_t* metadata);
size_t get_camera_metadata_data_capacity(const camera_metadata_t* metadata);

/** Copies into the caller's memory, without spare capacity; null when `dst_size` is too small. */
camera_metadata_t* copy_camera_metadata(void* dst, size_t dst_size, const camera_metadata_t* src);

/** Validates and copies bytes of any alignment; null when they are not a valid buffer. */
camera_metadata_t* allocate_copy_camera_metadata_checked(const camera_metadata_t* src,
                                                         size_t src_size);

/** A new buffer with the same entries and no spare capacity. */
camera_metadata_t* clone_camera_metadata(const camera_metadata_t* src);

/**
 * Adds every entry of `src`; tags that `dst` has already are there twice afterwards. Fails for
 * buffers of different vendors.
 */
int append_camera_metadata(camera_metadata_t* dst, const camera_metadata_t* src);

enum {
    CAMERA_METADATA_VALIDATION_ERROR = 1,
    CAMERA_METADATA_VALIDATION_SHIFTED = 2,  ///< valid, but not aligned: copy it before use
};

/**
 * Checks that no access leaves the buffer, and that each tag has its type. Checks the alignment of
 * the entries and of their data relative to the header. Unlike the phone, the host refuses entries
 * that overlap the header, and data behind data_count.
 *
 * @param expected_size bytes that the buffer may take; null when not known
 */
int validate_camera_metadata_structure(const camera_metadata_t* metadata,
                                       const size_t* expected_size);

// ---- Entries

/** Appends an entry; fails for an unknown tag and without room. Look-up is linear until a sort. */
int add_camera_metadata_entry(camera_metadata_t* dst, uint32_t tag, const void* data,
                              size_t data_count);

/** Sorts the entries by tag, for fast look-up. */
int sort_camera_metadata(camera_metadata_t* dst);

int get_camera_metadata_entry(camera_metadata_t* src, size_t index, camera_metadata_entry_t* entry);
int get_camera_metadata_ro_entry(const camera_metadata_t* src, size_t index,
                                 camera_metadata_ro_entry_t* entry);

/** @return -ENOENT when there is no such entry */
int find_camera_metadata_entry(camera_metadata_t* src, uint32_t tag,
                               camera_metadata_entry_t* entry);
int find_camera_metadata_ro_entry(const camera_metadata_t* src, uint32_t tag,
                                  camera_metadata_ro_entry_t* entry);

/** Removes an entry; those behind it move up by one. */
int delete_camera_metadata_entry(camera_metadata_t* dst, size_t index);

/**
 * Gives an entry other items of its type. Fails without room for them.
 *
 * @param data_count items, which may be more or fewer than before
 * @param updated_entry receives the entry when not null
 */
int update_camera_metadata_entry(camera_metadata_t* dst, size_t index, const void* data,
                                 size_t data_count, camera_metadata_entry_t* updated_entry);

// ---- Tags

/**
 * Section, name within it and type of a tag; null, null and -1 for an unknown one, and for vendors'
 * tags while no operations describe them (camera_metadata_hidden.h).
 */
const char* get_camera_metadata_section_name(uint32_t tag);
const char* get_camera_metadata_tag_name(uint32_t tag);
int get_camera_metadata_tag_type(uint32_t tag);

/** As above, with the operations of the buffer's vendor id; `meta` may be null. */
const char* get_local_camera_metadata_section_name(uint32_t tag, const camera_metadata_t* meta);
const char* get_local_camera_metadata_tag_name(uint32_t tag, const camera_metadata_t* meta);
int get_local_camera_metadata_tag_type(uint32_t tag, const camera_metadata_t* meta);

// ---- Text

/**
 * Writes what the buffer holds to a file descriptor, as text. The host writes every value as a
 * number; the phone writes the names of those that have one.
 *
 * @param verbosity 0: no values; 1: at most 16 an entry; 2: all
 * @param indentation blanks in front of each line
 */
void dump_camera_metadata(const camera_metadata_t* metadata, int fd, int verbosity);
void dump_indented_camera_metadata(const camera_metadata_t* metadata, int fd, int verbosity,
                                   int indentation);

#ifdef __cplusplus
}
#endif
