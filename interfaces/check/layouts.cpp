// Prints what a caller's and a callee's builds have to agree on: every record's size, alignment and
// fields, every status code, every operation's slot. Built once with the headers that hidl-gen
// makes and once with the project's own; scripts/check_interfaces.sh compares the two.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>

#include <android/hidl/base/1.0/IBase.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IDevice.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/types.h>

#if defined(QUEN_GENERATED_HEADERS) != \
        defined(HIDL_GENERATED_VENDOR_MEDIATEK_HARDWARE_CAMERA_ISPHAL_V1_0_TYPES_H)
#error "built with the other headers"
#endif

namespace {

namespace isp = vendor::mediatek::hardware::camera::isphal::V1_0;
namespace client = vendor::quen::hardware::camera::quenpostproc::V1_0;
using android::hidl::base::V1_0::DebugInfo;
using android::hidl::base::V1_0::IBase;

/** A type's name as the compiler writes it. */
template <typename T>
std::string nameOf() {
    std::string const text = __PRETTY_FUNCTION__;
    size_t const begin = text.find("T = ") + 4;
    return text.substr(begin, std::min(text.find(';', begin), text.size() - 1) - begin);
}

template <typename T>
void printRecord(char const* name) {
    printf("%s: size %zu, alignment %zu\n", name, sizeof(T), alignof(T));
}

template <typename Operation>
void printOperation(char const* name, Operation operation) {
    ptrdiff_t slot;
    memcpy(&slot, &operation, sizeof(slot));
    printf("%s: slot %td, %s\n", name, slot / static_cast<ptrdiff_t>(sizeof(void*)),
           nameOf<Operation>().c_str());
}

template <typename Status>
void printStatuses(char const* name) {
    using Value = std::underlying_type_t<Status>;
    printf("%s: %s", name, nameOf<Value>().c_str());
    for (Status const status :
         {Status::OK, Status::ILLEGAL_ARGUMENT, Status::RESOURCE_ERROR, Status::REQUEST_ERROR,
          Status::REQUEST_STREAM_ID_ERROR, Status::RESULT_ERROR, Status::INTERNAL_ERROR}) {
        printf(" %lld", static_cast<long long>(status));
    }
    printf("\n");
}

#define RECORD(record) printRecord<record>(#record)
#define FIELD(record, field)                                                    \
    printf("  " #field ": offset %zu, size %zu, %s\n", offsetof(record, field), \
           sizeof(record::field), nameOf<std::remove_cv_t<decltype(record::field)>>().c_str())
#define OPERATION(interface, operation) \
    printOperation(#interface "::" #operation, &interface::operation)

void printRecords() {
    RECORD(DebugInfo);
    FIELD(DebugInfo, pid);
    FIELD(DebugInfo, ptr);
    FIELD(DebugInfo, arch);
    RECORD(isp::ISPStream);
    FIELD(isp::ISPStream, id);
    FIELD(isp::ISPStream, size);
    FIELD(isp::ISPStream, stride);
    FIELD(isp::ISPStream, width);
    FIELD(isp::ISPStream, height);
    FIELD(isp::ISPStream, format);
    FIELD(isp::ISPStream, dataSpace);
    FIELD(isp::ISPStream, bufferLayout);
    FIELD(isp::ISPStream, usage);
    FIELD(isp::ISPStream, tail);
    RECORD(isp::ISPStreamConfiguration);
    FIELD(isp::ISPStreamConfiguration, inputStreams);
    FIELD(isp::ISPStreamConfiguration, outputStreams);
    FIELD(isp::ISPStreamConfiguration, sessionSettings);
    RECORD(isp::ISPBuffer);
    FIELD(isp::ISPBuffer, streamId);
    FIELD(isp::ISPBuffer, buffer);
    FIELD(isp::ISPBuffer, tuningData);
    FIELD(isp::ISPBuffer, tuningDataSize);
    FIELD(isp::ISPBuffer, reserved);
    FIELD(isp::ISPBuffer, reservedSize);
    RECORD(isp::ISPRequest);
    FIELD(isp::ISPRequest, requestNumber);
    FIELD(isp::ISPRequest, settings);
    FIELD(isp::ISPRequest, inputBuffers);
    FIELD(isp::ISPRequest, outputBuffers);
    RECORD(isp::ISPResult);
    FIELD(isp::ISPResult, reqNumber);
    FIELD(isp::ISPResult, resultMetadata);
    FIELD(isp::ISPResult, status);
}

void printOperations() {
    OPERATION(IBase, isRemote);
    OPERATION(IBase, interfaceChain);
    OPERATION(IBase, debug);
    OPERATION(IBase, interfaceDescriptor);
    OPERATION(IBase, getHashChain);
    OPERATION(IBase, setHALInstrumentation);
    OPERATION(IBase, linkToDeath);
    OPERATION(IBase, ping);
    OPERATION(IBase, getDebugInfo);
    OPERATION(IBase, notifySyspropsChanged);
    OPERATION(IBase, unlinkToDeath);
    OPERATION(isp::IISPModule, openISPDevice);
    OPERATION(isp::IDevice, configureISPDevice);
    OPERATION(isp::IDevice, processISPRequest);
    OPERATION(isp::IDevice, flush);
    OPERATION(isp::IDevice, closeISPDevice);
    OPERATION(isp::ICallback, processResult);
    OPERATION(isp::ICallback, processEarlyResult);
    OPERATION(client::IQuenPostProcCallback, notifyRequestResult);
    OPERATION(client::IQuenPostProcCallback, notifyResultMetadata);
}

}  // namespace

int main() {
    printRecords();
    printStatuses<isp::Status>("isp::Status");
    printStatuses<client::Status>("client::Status");
    printf("value 6: %s\n", toString(static_cast<isp::Status>(6)).c_str());
    printOperations();
}
