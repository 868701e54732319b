#include "validation/internal/BRYXValidator.h"

#include "util/assertion_failure.h"

namespace bryx {

namespace {

/// Has a locator tell another position for a while.
class PositionOverride {
public:
    PositionOverride(BRYXOverridableLocator& locator, std::uint64_t position) : locator_(locator) {
        locator_.overrideLocator(static_cast<std::streamoff>(position));
    }
    ~PositionOverride() { locator_.restoreLocator(); }
    PositionOverride(const PositionOverride&) = delete;
    PositionOverride& operator=(const PositionOverride&) = delete;

private:
    BRYXOverridableLocator& locator_;
};

} // namespace

std::uint64_t BRYXValidator::position() const {
    util::require(locator_ != nullptr, "has locator");
    return static_cast<std::uint64_t>(std::streamoff{locator_->streampos()});
}

template <class Report>
void BRYXValidator::at(std::uint64_t position, const BRYXCheck& check, Report report) const {
    if (makes(check)) {
        util::require(locator_ != nullptr, "has locator");
        const PositionOverride positionOverride(*locator_, position);
        report();
    }
}

void BRYXValidator::report(const BRYXPlainCheck& check, const std::string& detail) const {
    if (makes(check)) {
        reporter_.report(errorHandler_.get(), check.report(), reports_++, detail);
    }
}

void BRYXValidator::reportAt(std::uint64_t position, const BRYXPlainCheck& check, const std::string& detail) const {
    at(position, check, [&] { reporter_.report(errorHandler_.get(), check.report(), reports_++, detail); });
}

void BRYXValidator::reportAt(std::uint64_t position, const BRYXSubjectCheck& check, const std::string& subject,
                             const std::string& detail) const {
    at(position, check, [&] { reporter_.report(errorHandler_.get(), check.report(), reports_++, subject, detail); });
}

} // namespace bryx
