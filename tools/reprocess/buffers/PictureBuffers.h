#pragma once

#include <memory>

#include "buffers/BayerRows.h"
#include "buffers/BufferPool.h"
#include "buffers/ClientBuffer.h"
#include "buffers/Product.h"
#include "inputs/Capture.h"

// The buffers of a picture between its capture and its product.
namespace quen::reprocess {

/**
 * Writes a mosaic into a raw buffer of its size.
 *
 * @throws Failure when the buffer's layout is no single plane
 */
void fillRaw(ClientBuffer const& buffer, Capture const& capture, RawTarget target);

/**
 * A buffer for a packed NV21 picture.
 *
 * The library reads a picture to encode as it lies in the mapping, without a stride, so the buffer
 * is one of plain bytes: the rows of a picture's buffer may be padded by the allocator.
 *
 * @throws Failure when it cannot be allocated
 */
std::unique_ptr<ClientBuffer> packedPicture(Capture const& capture, BufferPool& pool);

/**
 * Packs a developed picture as NV21, unless it is: in its own buffer where possible, else in
 * another one.
 *
 * @throws Failure when the picture is no 4:2:0 of 8 bits, or no buffer can be allocated
 */
std::unique_ptr<ClientBuffer> asPackedPicture(std::unique_ptr<ClientBuffer> picture,
                                              Capture const& capture, BufferPool& pool);

/**
 * Copies a developed picture out of its buffer.
 *
 * @param kind Nv21 or I420
 * @throws Failure when the picture is no 4:2:0 of 8 bits
 */
Product packPlanes(ClientBuffer const& picture, Capture const& capture, OutputKind kind);

/**
 * Copies a developed picture out of its buffer, upright, for a file of RGB.
 *
 * @throws Failure when the picture is no 4:2:0 of 8 bits
 */
Product uprightPlanes(ClientBuffer const& picture, Capture const& capture);

}  // namespace quen::reprocess
