#include "OpenCalls.h"

namespace quen::replay {

using recording::ClientCall;
using recording::Crossing;

namespace {

/** Whether the client or the ISP calls the library. */
bool entersLibrary(Crossing::WhatCase kind) {
    return kind == Crossing::kClientCall || kind == Crossing::kResultCall;
}

/** A return's number in the oneof follows its call's. */
bool answers(Crossing::WhatCase returned, Crossing::WhatCase call) {
    return static_cast<int>(returned) == static_cast<int>(call) + 1;
}

}  // namespace

std::string OpenCalls::take(Crossing const& crossing) {
    switch (crossing.what_case()) {
        case Crossing::kClientCall:
        case Crossing::kIspCall:
        case Crossing::kResultCall:
        case Crossing::kNotifyCall:
            return takeCall(crossing, mThreads[crossing.thread()]);
        case Crossing::kClientReturn:
        case Crossing::kIspReturn:
        case Crossing::kResultReturn:
        case Crossing::kNotifyReturn:
            return takeReturn(crossing, mThreads[crossing.thread()]);
        case Crossing::kHeader:
            return "another recording begins";
        default:
            return "is of no kind that this program knows";
    }
}

std::string OpenCalls::takeCall(Crossing const& crossing, std::vector<Call>& open) {
    bool const isInLibrary = !open.empty() && entersLibrary(open.back().kind);
    if (entersLibrary(crossing.what_case()) && isInLibrary) {
        return "comes on a thread that is inside call " + std::to_string(open.back().number) +
               " of the library";
    }
    if (!entersLibrary(crossing.what_case()) && !isInLibrary) {
        return "has no call of the library before it on its thread";
    }
    std::string fault;
    if (crossing.has_client_call()) {
        fault = takeClientCall(crossing);
    } else if (crossing.has_result_call() && mReceivers.count(crossing.session()) == 0) {
        fault = "there is no receiver for this result";
    } else if (crossing.isp_call().has_callback()) {
        mReceivers.insert(crossing.session());
    }
    open.push_back({crossing.call(), crossing.what_case(), crossing.session(),
                    crossing.has_client_call() &&
                            crossing.client_call().operation() == ClientCall::CONSTRUCT});
    return fault;
}

std::string OpenCalls::takeClientCall(Crossing const& crossing) {
    ClientCall::Operation const operation = crossing.client_call().operation();
    auto const device = mDevices.find(crossing.session());
    if (operation == ClientCall::CONSTRUCT) {
        return device == mDevices.end() ? "" : "its device object is there already";
    }
    if (device == mDevices.end()) {
        return "its device object was not constructed";
    }
    if (operation != ClientCall::DESTRUCT) {
        ++device->second;
        return {};
    }
    bool const isUsed = device->second > 0;
    mDevices.erase(device);
    return isUsed ? "its device object is inside another call" : "";
}

std::string OpenCalls::takeReturn(Crossing const& crossing, std::vector<Call>& open) {
    if (open.empty() || open.back().number != crossing.call() ||
        open.back().session != crossing.session() ||
        !answers(crossing.what_case(), open.back().kind)) {
        return "answers no call that is open on its thread";
    }
    if (crossing.has_client_return()) {
        auto const device = mDevices.find(crossing.session());
        if (open.back().constructs) {
            mDevices.emplace(crossing.session(), 0);
        } else if (device != mDevices.end() && device->second > 0) {
            --device->second;
        }
    }
    open.pop_back();
    return {};
}

}  // namespace quen::replay
