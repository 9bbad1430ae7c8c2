// ISP metadata buffers at the library's decoder of the hardened build, beside the software ISP's
// reader: what the reader finds sound, the decoder must take in to the last item.

#include <cstring>

#include <nscam/IMetadata.h>

#include <host/metadata/IspMetadataReader.h>
#include <quenOfflineDevice/metadata/IspMetadata.h>

#include "support/Require.h"

using NSCam::IMetadata;
using quen::host::IspMetadataReader;
using quen::host::IspRecord;
using quenfuzz::require;

namespace {

void compare(IspMetadataReader const& reader, IMetadata const& decoded) {
    for (size_t i = 0; i < reader.count(); ++i) {
        IspRecord const record = *reader.find(reader.at(i).tag);  // the last of a tag stands
        IMetadata::IEntry const entry = decoded.entryFor(record.tag);
        require(entry.count() == record.count(), "every item of a sound record is there");
        require(memcmp(entry.data(), record.data, record.byteSize) == 0, "items are as sent");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    IMetadata decoded;
    require(quen::convertCheckedToIMetadata(data, size, decoded),
            "a buffer is taken in, what is broken apart");
    IspMetadataReader reader;
    if (reader.parse(data, size)) {
        compare(reader, decoded);
    }
    return 0;
}
