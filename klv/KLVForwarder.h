#pragma once

#include "klv/KLVHandler.h"
#include "klv/detail/KLVForwarding.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace klvutil::detail {

class BRYX_API TargetPass : public KLVHandler {
public:
    /// Sets the handler that events go to; it is not owned.
    void setTarget(KLVHandler* target) { target_ = target; }

protected:
    template <class Event>
    auto pass(Event event) {
        util::require(target_ != nullptr, "handler is present");
        return event(*target_);
    }

private:
    KLVHandler* target_ = nullptr;
};

extern template class BRYX_API KLVForwarding<TargetPass>;

} // namespace klvutil::detail

/// Forwards every event to the handler set on it, without being a filter: a stand-in whose target may change.
class BRYX_API KLVForwarder : public klvutil::detail::KLVForwarding<klvutil::detail::TargetPass> {
public:
    ~KLVForwarder() override;
};

} // namespace bryx
