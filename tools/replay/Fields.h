#pragma once

#include <string>
#include <vector>

#include "recording.pb.h"

namespace quen::replay {

/** A value that crosses, with its name: "request[0].settings.tuningMode (0x800b000e)". */
struct Field {
    std::string name;
    std::string value;
    /** A hash over what other fields tell one by one: it counts where those do not differ. */
    bool isSummary = false;
};

/**
 * Everything that a crossing says, in a fixed order. Times, threads and calls are not part of it.
 *
 * @param holdsPictures whether pictures are told by their hashes; else by their sizes
 */
std::vector<Field> fieldsOf(recording::Crossing const& crossing, bool holdsPictures);

/** What a crossing is: "library to ISP: processISPRequest". */
std::string titleOf(recording::Crossing const& crossing);

}  // namespace quen::replay
