// The texts of the command line's --set, up to the request that carries them.

#include <cstring>
#include <string>

#include <system/camera_metadata.h>

#include "client/RequestMetadata.h"
#include "client/TagAssignment.h"
#include "support/Failure.h"
#include "support/Require.h"

using namespace quen::reprocess;
using quenfuzz::require;

namespace {

void sendRequest(TagAssignment const& assignment, std::string const& text) {
    RequestOptions options;
    options.assignments = {text, text};
    RequestMetadata const request(options, 0, 1);
    require(validate_camera_metadata_structure(request.get(), nullptr) == 0, "requests are sound");
    camera_metadata_ro_entry_t entry;
    require(find_camera_metadata_ro_entry(request.get(), assignment.tag, &entry) == 0 &&
                    entry.count == assignment.count &&
                    memcmp(entry.data.u8, assignment.items.data(), assignment.items.size()) == 0,
            "a request has what was assigned");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    // Text of a command line ends at its first zero.
    std::string const all(reinterpret_cast<char const*>(data), size);
    std::string const text = all.c_str();
    try {
        TagAssignment const assignment = parseAssignment(text);
        int const type = get_camera_metadata_tag_type(assignment.tag);
        require(type >= 0 && type < NUM_TYPES, "the tag is known");
        require(assignment.count != 0 && assignment.items.size() ==
                                                 assignment.count * camera_metadata_type_size[type],
                "the items are whole");
        sendRequest(assignment, text);
    } catch (Failure const& failure) {
        require(failure.what()[0] != '\0', "a failure says what is wrong");
    }
    return 0;
}
