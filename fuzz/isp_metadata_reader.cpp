// ISP metadata buffers at the software ISP: its reader, the settings it takes and the report's
// text.

#include <hidl/HidlSupport.h>

#include <host/isp/device/RequestSettings.h>
#include <host/metadata/IspMetadataReader.h>
#include <host/metadata/MetadataText.h>

#include "support/Require.h"

using quen::host::IspMetadataReader;
using quen::host::IspRecord;
using quenfuzz::require;

namespace {

void readItems(IspRecord const& record) {
    size_t const count = record.count();
    for (size_t i = 0; i <= count; ++i) {
        int const answers = record.byteAt(i).has_value() + record.int32At(i).has_value() +
                            record.int64At(i).has_value() + record.floatAt(i).has_value();
        require(answers == (i < count ? 1 : 0),
                "an item has one type, and none is behind the last");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    IspMetadataReader reader;
    bool const isSound = reader.parse(data, size);
    require(isSound == (reader.error()[0] == '\0'), "an error is told exactly when there is one");
    for (size_t i = 0; i < reader.count(); ++i) {
        IspRecord const record = reader.at(i);
        readItems(record);
        require(reader.find(record.tag).has_value(), "a record is found by its tag");
    }

    android::hardware::hidl_vec<uint8_t> bytes;
    bytes.setToExternal(const_cast<uint8_t*>(data), size);
    quen::host::isp::RequestSettings settings;
    bool const isTaken = quen::host::isp::parseSettings(bytes, settings);
    require(isSound || !isTaken, "settings are not taken from a malformed buffer");
    if (isTaken && settings.jpegQuality) {
        require(*settings.jpegQuality >= 1 && *settings.jpegQuality <= 100, "a quality's range");
    }
    // Formatting takes longer than all the rest: one length in eight.
    if (size % 8 == 0) {
        require(!quen::host::ispMetadataText(data, size).empty() || reader.count() == 0,
                "records have a text");
    }
    return 0;
}
