#pragma once

#include <type_traits>

#include "klv/KLVHandler.h"
#include "klv/detail/KLVForwarding.h"
#include "util/assertion_failure.h"

namespace bryx {

/// A handler that stands in front of another one. The next handler is not owned and must outlive the stream.
class BRYX_API KLVFilter : public KLVHandler {
public:
    virtual void setHandler(KLVHandler* handler);

    /// The next handler. Requires "handler is present".
    virtual KLVHandler* getHandler() const;

protected:
    /// The next handler, for forwarding an event. Requires "handler is present".
    KLVHandler& next() const {
        util::require(handler_ != nullptr, "handler is present");
        return *handler_;
    }

private:
    KLVHandler* handler_ = nullptr;
};

namespace klvutil::detail {

class BRYX_API PlainPass : public KLVFilter {
protected:
    template <class Event>
    auto pass(Event event) {
        return event(next());
    }
};

extern template class BRYX_API KLVForwarding<PlainPass>;

} // namespace klvutil::detail

/// Forwards every event unchanged and returns the next handler's result. Derive from it to override what matters.
class BRYX_API DullKLVFilter : public klvutil::detail::KLVForwarding<klvutil::detail::PlainPass> {
public:
    ~DullKLVFilter() override;
};

namespace klvutil::detail {

class BRYX_API ActionPass : public DullKLVFilter {
protected:
    /// Runs before each event is forwarded.
    virtual void before() = 0;
    /// Runs after each event that the next handler took without an exception.
    virtual void after() = 0;

    template <class Event>
    auto pass(Event event) {
        before();
        if constexpr (std::is_void_v<decltype(event(next()))>) {
            event(next());
            after();
        } else {
            const auto result = event(next());
            after();
            return result;
        }
    }
};

extern template class BRYX_API KLVForwarding<ActionPass>;

} // namespace klvutil::detail

/// Wraps every event but setLocator in two actions: before(), the event on the next handler, after().
class BRYX_API ActionKLVFilter : public klvutil::detail::KLVForwarding<klvutil::detail::ActionPass> {
public:
    ~ActionKLVFilter() override;
    void setLocator(const Locator& locator) override;
};

/// Forwards the events of one stream to the next handler, but not the start and the end of the stream: for one of
/// several senders that write to the same stream, which another one of them opens and closes.
class BRYX_API KLVStreamFilter : public DullKLVFilter {
public:
    void startStream(bool accurateLengths) override;
    void endStream(bool stopped) override;
};

} // namespace bryx
