#include "mxf/metadata/model/MXFLabelNames.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "klv/KLVCoding.h"
#include "util/byte_order.h"

namespace bryx::mxfutil {

namespace {

/// Octets 8 to 15 of a label, in ascending order, and its name. Octets 0 to 6 are 06 0E 2B 34 04 01 01 in all of them.
struct Row {
    std::uint64_t item;
    const char* name;
};

constexpr Row rows[] = {
#include "mxf/metadata/model/internal/MXFLabelNames.inc"
};

} // namespace

const char* labelName(const KLVKey& label) noexcept {
    if (!klvutil::isSMPTEKey(label) || label[4] != 4 || label[5] != 1 || label[6] != 1) {
        return nullptr;
    }
    const auto item = util::loadBigEndian<std::uint64_t>(&label.octets[8]);
    const Row* const at = std::lower_bound(std::begin(rows), std::end(rows), item,
                                           [](const Row& row, std::uint64_t value) { return row.item < value; });
    return at != std::end(rows) && at->item == item ? at->name : nullptr;
}

} // namespace bryx::mxfutil
