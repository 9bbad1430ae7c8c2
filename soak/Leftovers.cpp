#include "Leftovers.h"

#include <dirent.h>

#include <cstdio>
#include <cstring>

#include "HeapCount.h"

namespace quensoak {

namespace {

int64_t openDescriptors() {
    int64_t count = 0;
    DIR* const folder = opendir("/proc/self/fd");
    while (folder != nullptr && readdir(folder) != nullptr) {
        ++count;
    }
    closedir(folder);
    return count;
}

/** The allocator's, the threads' and a sanitizer's mappings are private, and come and go. */
int64_t sharedMappings() {
    int64_t count = 0;
    FILE* const maps = fopen("/proc/self/maps", "re");
    char line[512];
    while (maps != nullptr && fgets(line, sizeof(line), maps) != nullptr) {
        count += strstr(line, "/memfd:") != nullptr ? 1 : 0;
    }
    fclose(maps);
    return count;
}

}  // namespace

Holdings Holdings::now(Graphics const& graphics) {
    int64_t const blocks = quensoak::heapBlocks();  // first: the others allocate
    return {openDescriptors(), sharedMappings(), static_cast<int64_t>(graphics.imported()), blocks};
}

Holdings Holdings::operator-(Holdings const& before) const {
    return {descriptors - before.descriptors, mappings - before.mappings, imports - before.imports,
            heapBlocks - before.heapBlocks};
}

}  // namespace quensoak
