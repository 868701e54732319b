#pragma once

#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <type_traits>

#include "klv/KLVHandler.h"
#include "klv/detail/KLVForwarding.h"
#include "util/Api.h"

namespace bryx {

class GroupValidatorFilter;

namespace klvutil {

class KLVEventLog;

namespace detail {

class BRYX_API VerifyingPass : public KLVHandler {
public:
    VerifyingPass(std::iostream& written, KLVHandler* inner);
    ~VerifyingPass() override;

protected:
    /// Makes the event on the inner handler and in the log of what was sent, and verifies what is complete.
    template <class Event>
    auto pass(Event event) {
        if constexpr (std::is_void_v<decltype(event(groups()))>) {
            event(groups());
            event(log());
            verifyIfComplete();
        } else {
            const auto result = event(groups());
            event(log());
            return result;
        }
    }

private:
    KLVHandler& groups();
    KLVHandler& log();
    void verifyIfComplete();
    void verify();

    std::iostream& written_;
    std::unique_ptr<GroupValidatorFilter> groups_; ///< in front of the inner handler
    std::unique_ptr<KLVEventLog> sent_;
    std::unique_ptr<KLVEventLog> sink_; ///< takes what no inner handler does
    std::streamoff start_;              ///< of what has not been verified yet
};

extern template class BRYX_API KLVForwarding<VerifyingPass>;

} // namespace detail
} // namespace klvutil

/// Reads each triplet back as soon as it is written, and checks every event against what a reader of the written stream
/// reports: kind, key, tag, length, their forms, and the octets of values. It stands in front of the writer.
///
/// Requires of the sender what GroupValidatorFilter does, such as "valid group item". Memory does not grow with values,
/// nor with the stream.
class BRYX_API VerifyingKLVHandler : public klvutil::detail::KLVForwarding<klvutil::detail::VerifyingPass> {
public:
    /// What was written does not read back as it was sent. Thrown when an outermost triplet ends; tells position, key and
    /// difference.
    class BRYX_API exception : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
        ~exception() override;
    };

    /// @param written what the inner handler writes to, from where it stands now; outlives this
    /// @param inner writes what it is sent; null if somebody else did so already
    VerifyingKLVHandler(std::iostream& written, KLVHandler* inner) : KLVForwarding(written, inner) {}
    ~VerifyingKLVHandler() override;
};

} // namespace bryx
