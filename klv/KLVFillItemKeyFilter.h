#pragma once

#include <cstdint>

#include "klv/KLVFilter.h"

namespace bryx {

/// Deals with the two versions in which the key of fill items is found: octet 7 is 01 in files after ST 377:2004 and
/// 02 after ST 377-1. Both mean fill.
///
/// As it is built, the filter forwards every event unchanged: this is how a reader uses it. In front of a writer it
/// can give all fill items the version that a receiver insists on.
class BRYX_API KLVFillItemKeyFilter : public DullKLVFilter {
public:
    /// From now on octet 7 of the key of fill items is @p version. Requires "valid fill item key version": 1 or 2.
    void setKeyVersion(std::uint8_t version);

    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;
    void endIndividualItem(const KLVKey& key) override;

private:
    KLVKey versioned(const KLVKey& key) const;

    std::uint8_t version_ = 0;
};

} // namespace bryx
