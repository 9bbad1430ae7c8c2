#pragma once

#include <cstdint>

#include "quenCommon/Export.h"

extern "C" {

/**
 * Splits a gralloc 0 usage into gralloc 1 producer and consumer usages.
 *
 * @param usage sign-extended before it is split
 */
QUEN_EXPORT void android_convertGralloc0To1Usage(int32_t usage, uint64_t* producerUsage,
                                                 uint64_t* consumerUsage);

/** Joins gralloc 1 producer and consumer usages into a gralloc 0 usage. */
QUEN_EXPORT int32_t android_convertGralloc1To0Usage(uint64_t producerUsage, uint64_t consumerUsage);
}
