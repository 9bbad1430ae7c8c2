// Writes random camera_metadata buffers, or reads such from another build of the camera metadata
// library and tells what it finds. Built once with Android's own and once with the host platform's;
// scripts/check_phone_tree.sh has each read what the other wrote.
//
//   metadata_exchange write SEED COUNT    buffers to standard output, each behind its size
//   metadata_exchange read                buffers from standard input, as text to standard output

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <set>
#include <vector>

#include <system/camera_metadata.h>

namespace {

using Random = std::mt19937;

/** Before the entries: sizes, counts, places and flags. */
constexpr size_t kHeaderBytes = 48;

/** Uniform in [0, limit); the same with every standard library. */
uint32_t below(Random& random, uint32_t limit) {
    return static_cast<uint32_t>(random() % limit);
}

std::vector<uint32_t> knownTags() {
    std::vector<uint32_t> tags;
    for (auto const& bounds : camera_metadata_section_bounds) {
        for (uint32_t tag = bounds[0]; tag < bounds[1]; ++tag) {
            tags.push_back(tag);
        }
    }
    return tags;
}

std::vector<uint8_t> randomItems(Random& random, uint32_t tag, size_t count) {
    int const type = get_camera_metadata_tag_type(tag);
    // A byte more: the data of an entry without items must not be null.
    std::vector<uint8_t> items(count * camera_metadata_type_size[type] + 1);
    for (uint8_t& item : items) {
        item = static_cast<uint8_t>(random());
    }
    return items;
}

/** Whether a sort leaves nothing open: of two entries with one tag, either may come first. */
bool hasOneOrder(camera_metadata_t* metadata) {
    std::set<uint32_t> tags;
    size_t const entries = get_camera_metadata_entry_count(metadata);
    for (size_t i = 0; i < entries; ++i) {
        camera_metadata_entry_t entry;
        get_camera_metadata_entry(metadata, i, &entry);
        tags.insert(entry.tag);
    }
    return tags.size() == entries;
}

/** One change: mostly a further entry, sometimes another value, a removal or a sort. */
void change(Random& random, std::vector<uint32_t> const& tags, camera_metadata_t* metadata) {
    uint32_t const what = below(random, 10);
    size_t const entries = get_camera_metadata_entry_count(metadata);
    if (what < 7 || entries == 0) {
        uint32_t const tag = tags[below(random, static_cast<uint32_t>(tags.size()))];
        size_t const count = below(random, 8) == 0 ? 0 : below(random, 12);
        std::vector<uint8_t> const items = randomItems(random, tag, count);
        add_camera_metadata_entry(metadata, tag, items.data(), count);
    } else if (what == 7) {
        size_t const index = below(random, static_cast<uint32_t>(entries));
        camera_metadata_entry_t entry;
        if (get_camera_metadata_entry(metadata, index, &entry) == 0) {
            // Not to no items: Android's library keeps the offset of those there were and then
            // finds its own buffer invalid.
            size_t const count = 1 + below(random, 11);
            std::vector<uint8_t> const items = randomItems(random, entry.tag, count);
            update_camera_metadata_entry(metadata, index, items.data(), count, nullptr);
        }
    } else if (what == 8) {
        delete_camera_metadata_entry(metadata, below(random, static_cast<uint32_t>(entries)));
    } else if (hasOneOrder(metadata)) {
        sort_camera_metadata(metadata);
    }
}

int writeBuffers(uint32_t seed, int count) {
    Random random(seed);
    std::vector<uint32_t> const tags = knownTags();
    for (int buffer = 0; buffer < count; ++buffer) {
        size_t const entries = below(random, 40);
        size_t const data = below(random, 1200);
        camera_metadata_t* const metadata = allocate_camera_metadata(entries, data);
        for (uint32_t changes = below(random, 80); changes > 0; --changes) {
            change(random, tags, metadata);
        }
        std::vector<uint8_t> bytes(get_camera_metadata_compact_size(metadata));
        auto const size = static_cast<uint32_t>(bytes.size());
        if (copy_camera_metadata(bytes.data(), size, metadata) == nullptr ||
            fwrite(&size, sizeof(size), 1, stdout) != 1 ||
            fwrite(bytes.data(), size, 1, stdout) != 1) {
            return EXIT_FAILURE;
        }
        free_camera_metadata(metadata);
    }
    return EXIT_SUCCESS;
}

void printBytes(uint8_t const* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        printf(" %02x", bytes[i]);
    }
    printf("\n");
}

void printEntries(camera_metadata_t const* metadata) {
    auto const* const begin = reinterpret_cast<uint8_t const*>(metadata);
    printf("  header");
    printBytes(begin, kHeaderBytes);
    for (size_t i = 0; i < get_camera_metadata_entry_count(metadata); ++i) {
        camera_metadata_ro_entry_t entry;
        if (get_camera_metadata_ro_entry(metadata, i, &entry) != 0) {
            printf("  %zu: unreadable\n", i);
            continue;
        }
        printf("  %zu: %08" PRIx32 " %s.%s type %d at %td", i, entry.tag,
               get_camera_metadata_section_name(entry.tag), get_camera_metadata_tag_name(entry.tag),
               int{entry.type}, entry.data.u8 - begin);
        printBytes(entry.data.u8, entry.count * camera_metadata_type_size[entry.type]);
    }
}

int readBuffers() {
    int buffers = 0;
    for (uint32_t size = 0; fread(&size, sizeof(size), 1, stdin) == 1; ++buffers) {
        std::vector<uint64_t> words(size / sizeof(uint64_t) + 1);  // aligned as a buffer has to be
        if (fread(words.data(), size, 1, stdin) != 1) {
            return EXIT_FAILURE;
        }
        auto const* const given = reinterpret_cast<camera_metadata_t const*>(words.data());
        size_t expected = size;
        printf("%d: %u bytes, validation %d\n", buffers, size,
               validate_camera_metadata_structure(given, &expected));
        camera_metadata_t* const copy = allocate_copy_camera_metadata_checked(given, size);
        if (copy == nullptr) {
            printf("  refused\n");
            continue;
        }
        printEntries(copy);
        free_camera_metadata(copy);
    }
    printf("%d buffers\n", buffers);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** words) {
    if (count == 4 && strcmp(words[1], "write") == 0) {
        return writeBuffers(static_cast<uint32_t>(atoi(words[2])), atoi(words[3]));
    }
    if (count == 2 && strcmp(words[1], "read") == 0) {
        return readBuffers();
    }
    fprintf(stderr, "usage: metadata_exchange write SEED COUNT | read\n");
    return 2;
}
