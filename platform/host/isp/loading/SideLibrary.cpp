#define LOG_TAG "quen-isp"

#include "host/isp/loading/SideLibrary.h"

#include <dlfcn.h>

#include <log/log.h>

#include "host/base/SiblingLibrary.h"

namespace quen::host::isp {

void* loadFromSideLibrary(char const* file, char const* symbol) {
    void* const address =
            findInSibling(reinterpret_cast<void const*>(&loadFromSideLibrary), file, symbol);
    if (address == nullptr) {
        ALOGE("%s cannot be loaded: %s", file, dlerror());
    }
    return address;
}

}  // namespace quen::host::isp
