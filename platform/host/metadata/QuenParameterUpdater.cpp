#include <quen/QuenParameterUpdater.h>

#include <string>

#include <mtkcam/log.h>

#include "host/metadata/MetadataText.h"

namespace {

constexpr char kLogTag[] = "QuenParameterUpdater";
constexpr int kDebug = 0;  // the level's place in g_logInfoLv

}  // namespace

void QuenParameterUpdater::dumpMetadata(camera_metadata* metadata, char const* stage,
                                        int frameNumber) {
    if (!mtkcam_testLog(kLogTag, 'D') || !g_logInfoLv[kDebug].enabled) {
        return;
    }
    std::string const prefix = std::string(g_logInfoLv[kDebug].prefix) + '[' + kLogTag + "] ";
    size_t const count = get_camera_metadata_entry_count(metadata);
    std::string line = prefix + "frame " + std::to_string(frameNumber) + " stage " +
                       (stage == nullptr ? "" : stage) + ": " +
                       (metadata == nullptr ? "no metadata" : std::to_string(count) + " tags");
    log_dbg_print(kLogTag, kDebug, line.c_str());
    for (size_t i = 0; i < count; ++i) {
        camera_metadata_ro_entry_t entry;
        if (get_camera_metadata_ro_entry(metadata, i, &entry) != 0) {
            continue;
        }
        line.resize(prefix.size());
        quen::host::appendEntryText(line, entry);
        log_dbg_print(kLogTag, kDebug, line.c_str());
    }
}
