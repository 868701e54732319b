#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "klv/ErrorHandler.h"
#include "klv/FindingReporter.h"
#include "validation/BRYXChecks.h"
#include "validation/BRYXOverridableLocator.h"

namespace bryx {

using BRYXPlainCheck = BRYXCheckOf<klvutil::Finding>;
using BRYXSubjectCheck = BRYXCheckOf<klvutil::SubjectFinding>;

/// What the validators have in common: the mode, and where and how they report.
class BRYXValidator {
public:
    /// What is kept of a file, of each kind of thing. Checks that need more of it are not made.
    static constexpr std::size_t maxKept = 65536;

    explicit BRYXValidator(BRYXValidationMode::Enum mode) : mode_(mode) {}
    BRYXValidator(const BRYXValidator&) = delete;
    BRYXValidator& operator=(const BRYXValidator&) = delete;

    void setErrorHandler(std::shared_ptr<ErrorHandler> errorHandler) { errorHandler_ = std::move(errorHandler); }
    void setLocator(std::shared_ptr<BRYXOverridableLocator> locator) { locator_ = std::move(locator); }

    /// Whether the mode has @p check made, for those that cost something.
    bool makes(const BRYXCheck& check) const noexcept { return check.mode <= mode_; }

    /// Of the KLV triplet that is being read.
    std::uint64_t position() const;

    /// Reports that @p check has failed at the current position, if the mode has it made, and unless it has failed a thousand
    /// times before: whoever calls says it once for each thing.
    void report(const BRYXPlainCheck& check, const std::string& detail = {}) const;
    /// The same for what stands at @p position.
    void reportAt(std::uint64_t position, const BRYXPlainCheck& check, const std::string& detail = {}) const;
    /// The same with @p subject in the place of the message's "%".
    void reportAt(std::uint64_t position, const BRYXSubjectCheck& check, const std::string& subject,
                  const std::string& detail = {}) const;

protected:
    ~BRYXValidator() = default;

private:
    template <class Report>
    void at(std::uint64_t position, const BRYXCheck& check, Report report) const;

    BRYXValidationMode::Enum mode_;
    mutable FindingReporter reporter_;
    mutable std::uint64_t reports_ = 0;
    std::shared_ptr<ErrorHandler> errorHandler_;
    std::shared_ptr<BRYXOverridableLocator> locator_;
};

} // namespace bryx
