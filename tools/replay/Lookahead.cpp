#include "Lookahead.h"

namespace quen::replay {

using recording::Crossing;
using recording::ResultCall;

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
        bool const isResult = crossing.has_result_call() &&
                              crossing.result_call().kind() == ResultCall::FINAL &&
                              crossing.session() == call.session();
        found.isAnswered =
                found.isAnswered || (isResult && isSubmitted &&
                                     crossing.result_call().number() == found.request->number());
    }
    return found;
}

}  // namespace quen::replay
