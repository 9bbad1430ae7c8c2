#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <functional>

#include "inputs/Capture.h"
#include "inputs/InputOptions.h"

namespace quenfuzz {

/** Options of an input such as the command line lets through. The size is seldom a large one. */
quen::reprocess::InputOptions takeInputOptions(FuzzedDataProvider& input);

/**
 * Reads a picture, checks what the reader promises of it and takes in every sample the way the
 * client does. A Failure is an answer; anything else that is thrown ends the process.
 */
void readWhole(std::function<quen::reprocess::Capture()> const& read);

}  // namespace quenfuzz
