#pragma once

#include <cstdint>

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

/// Another face of a KLVHandler, for one that wants small triplets to be fast: it takes an individual item that is in
/// memory already in a single call. A sender that finds this face may make that call in place of startIndividualItem,
/// getValueBuffer, value and endIndividualItem; it may make those as well, for any item. The effect has to be the same:
/// klvutil::sendIndividualItem() makes the single calls for whoever has nothing better to do with an item.
class BRYX_API KLVIndividualItemHandler {
public:
    virtual ~KLVIndividualItemHandler();

    /// A triplet with a single value. @p data is valid during the call only; it may be anything if @p size is 0.
    virtual void individualItem(const KLVKey& key, const std::uint8_t* data, std::uint64_t size) = 0;
};

} // namespace bryx
