#include "Lookahead.h"

#include <set>

namespace quen::replay {

using recording::Crossing;
using recording::ResultCall;

namespace {

/** Whether a crossing is a request's result. */
bool isResult(Crossing const& crossing) {
    return crossing.has_result_call() && crossing.result_call().kind() == ResultCall::FINAL;
}

}  // namespace

Lookahead lookAhead(RecordedOrder const& order, size_t index) {
    Crossing const& call = order.at(index);
    Lookahead found;
    uint64_t submission = 0;  // the call of the library to the ISP
    bool isSubmitted = false;
    for (size_t i = index + 1; i < order.size(); ++i) {
        Crossing const& crossing = order.at(i);
        bool const isOwn = crossing.thread() == call.thread();
        if (isOwn && crossing.has_client_return() && crossing.call() == call.call()) {
            found.returned = &crossing.client_return();
            break;
        }
        if (isOwn && crossing.has_isp_call() && crossing.isp_call().requests_size() > 0 &&
            found.request == nullptr) {
            found.request = &crossing.isp_call().requests(0);
            submission = crossing.call();
        }
        isSubmitted = isSubmitted || (crossing.has_isp_return() && crossing.call() == submission);
        bool const isOfSession = isResult(crossing) && crossing.session() == call.session();
        found.isAnswered =
                found.isAnswered || (isOfSession && isSubmitted &&
                                     crossing.result_call().number() == found.request->number());
    }
    return found;
}

std::optional<uint32_t> findOutstanding(RecordedOrder const& order, size_t next, size_t index) {
    uint32_t const session = order.at(index).session();
    std::set<uint32_t> outstanding;
    for (size_t i = 0; i < index; ++i) {
        Crossing const& crossing = order.at(i);
        if (crossing.session() != session) {
            continue;
        }
        if (i < next && crossing.isp_call().requests_size() > 0) {
            outstanding.insert(crossing.isp_call().requests(0).number());
        } else if (isResult(crossing)) {
            uint32_t const number = crossing.result_call().number();
            if (outstanding.erase(number) != 0 && i >= next) {
                return number;
            }
        }
    }
    return std::nullopt;
}

}  // namespace quen::replay
