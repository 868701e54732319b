#include "mxf/structure/MXFStaticTags.h"

#include <algorithm>
#include <vector>

#include "util/byte_order.h"

namespace bryx::mxfutil {

namespace {

/// A tag, and octets 7 and 8 to 15 of the label; the others are 06 0E 2B 34 01 01 01 in all of them.
struct Row {
    std::uint16_t tag;
    std::uint8_t version;
    std::uint64_t item;
    bool isElsewhereDynamic = false;
};

constexpr Row rows[] = {
#include "mxf/structure/internal/MXFStaticTags.inc"
};

struct Entry {
    std::uint16_t tag;
    KLVKey label;
    bool isElsewhereDynamic;
};

/// The table as it is looked up in: by tag, and by label.
class StaticTags {
public:
    StaticTags() {
        for (const Row& row : rows) {
            Entry entry{row.tag, {{0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, row.version}}, row.isElsewhereDynamic};
            util::storeBigEndian(&entry.label[8], row.item, 8);
            byTag_.push_back(entry);
        }
        byLabel_ = byTag_;
        std::sort(byLabel_.begin(), byLabel_.end(), [](const Entry& a, const Entry& b) { return a.label < b.label; });
    }

    const KLVKey* label(std::uint16_t tag) const noexcept {
        const auto at = std::lower_bound(byTag_.begin(), byTag_.end(), tag,
                                         [](const Entry& entry, std::uint16_t value) { return entry.tag < value; });
        return at != byTag_.end() && at->tag == tag ? &at->label : nullptr;
    }

    const Entry* entry(const KLVKey& label) const noexcept {
        const auto at = std::lower_bound(byLabel_.begin(), byLabel_.end(), label,
                                         [](const Entry& entry, const KLVKey& key) { return entry.label < key; });
        return at != byLabel_.end() && at->label == label ? &*at : nullptr;
    }

private:
    std::vector<Entry> byTag_;
    std::vector<Entry> byLabel_;
};

const StaticTags& staticTags() {
    static const StaticTags tags;
    return tags;
}

} // namespace

const KLVKey* staticLabel(std::uint16_t tag) noexcept {
    return staticTags().label(tag);
}

std::uint16_t staticTag(const KLVKey& label) noexcept {
    const Entry* const entry = staticTags().entry(label);
    return entry == nullptr ? std::uint16_t{0} : entry->tag;
}

bool isElsewhereDynamic(const KLVKey& label) noexcept {
    const Entry* const entry = staticTags().entry(label);
    return entry != nullptr && entry->isElsewhereDynamic;
}

} // namespace bryx::mxfutil
