#pragma once

#include "klv/InputLocator.h"
#include "klv/KLVFilter.h"

namespace bryx {

/// Offers a locator for the events that pass, taken from the input they come from. The counterpart of KLVMonitor for
/// streams that can seek.
class BRYX_API KLVTeller : public DullKLVFilter {
public:
    /// @param position of the innermost triplet, kept up to date by the input, which outlives the filter
    explicit KLVTeller(const std::streampos& position) : locator_(position) {}
    ~KLVTeller() override;

    /// Valid as long as the filter is.
    virtual const Locator& getLocator() const { return locator_; }

private:
    InputLocator locator_;
};

} // namespace bryx
