#pragma once

#include <cstdint>

#include "klv/KLVKey.h"
#include "mxf/structure/MXFStaticTags.h"

namespace bryx {

/// How files name a property: by its label, and in a set by a local tag.
class MXFPropertyLabel {
public:
    /// A property with a static tag, which tells the label.
    constexpr explicit MXFPropertyLabel(std::uint16_t staticTag) noexcept : tag_(staticTag) {}

    /// A property that has no tag of its own: each file gives it one.
    constexpr explicit MXFPropertyLabel(const char (&label)[36]) noexcept : label_(klvutil::key(label)) {}

    /// A property that is written with @p fixedTag, from the range that each file may use as it likes, unless that tag
    /// is taken.
    constexpr MXFPropertyLabel(std::uint16_t fixedTag, const char (&label)[36]) noexcept
        : tag_(fixedTag), label_(klvutil::key(label)) {}

    /// The tag that the property is written with if possible; 0 for none.
    constexpr std::uint16_t tag() const noexcept { return tag_; }

    KLVKey label() const noexcept {
        const KLVKey* const known = label_[0] == 0 ? mxfutil::staticLabel(tag_) : &label_;
        return known == nullptr ? KLVKey{} : *known;
    }

private:
    std::uint16_t tag_ = 0;
    KLVKey label_{};
};

} // namespace bryx
