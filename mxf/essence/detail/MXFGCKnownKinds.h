#pragma once

#include <array>
#include <cstddef>

#include "mxf/essence/MXFGCKeys.h"

namespace bryx::mxfutil::detail {

/// What the keys of a body stand for, remembered of those that came last: the few keys of a content package come again
/// and again.
class MXFGCKnownKinds {
public:
    void clear() { known_ = {}; }

    /// What @p key stands for: what @p classify(key) says, unless that is remembered.
    template <class Classify>
    MXFGCEssenceKind kindOf(const KLVKey& key, Classify classify) {
        // The keys of a content package differ in item type and number.
        Known& known = known_[(key[12] + std::size_t{key[15]}) % known_.size()];
        if (!known.isKnown || known.key != key) {
            known = {key, classify(key), true};
        }
        return known.kind;
    }

private:
    struct Known {
        KLVKey key;
        MXFGCEssenceKind kind = MXFGCEssenceKind::None;
        bool isKnown = false;
    };

    std::array<Known, 32> known_;
};

} // namespace bryx::mxfutil::detail
