#include "inputs/Corrections.h"

#include <algorithm>
#include <string>

#include "support/Failure.h"

namespace quen::reprocess {

void applyCorrections(InputOptions const& options, CaptureFacts& facts) {
    if (options.black) {
        std::copy(options.black->begin(), options.black->end(), facts.blackLevel);
    }
    if (options.wb) {
        auto const& [red, green, blue] = *options.wb;
        facts.wbGains[kRed] = red;
        facts.wbGains[kGreenOfRedRows] = green;
        facts.wbGains[kGreenOfBlueRows] = green;
        facts.wbGains[kBlue] = blue;
    }
    float const black = *std::max_element(std::begin(facts.blackLevel), std::end(facts.blackLevel));
    if (black >= facts.whiteLevel) {
        throw Failure("would be all black: its black level of " + std::to_string(int(black)) +
                              " is not below its white level of " +
                              std::to_string(int(facts.whiteLevel)),
                      "give the true one with --black");
    }
}

}  // namespace quen::reprocess
