#include "mxf/index/MXFIndexCoder.h"

#include <utility>

#include "klv/KLVSending.h"
#include "util/assertion_failure.h"
#include "util/fresh_uuid.h"

namespace bryx {

namespace {

using Presence = MXFIndexTableSegment::Presence;

/// Whether an optional value says anything.
template <class Value>
bool says(const std::vector<Value>& value) {
    return !value.empty();
}
template <class Value>
bool says(const boost::optional<Value>& value) {
    return value.has_value();
}
bool says(std::uint8_t count) {
    return count != 0;
}
template <class Value>
bool says(const Value& /*value*/) {
    return true;
}

using mxfutil::writeProperty;

template <class Value>
std::vector<std::uint8_t> writeProperty(const MXFIndexTableSegment& /*segment*/, const Value& value) {
    return klvutil::writeValue(value);
}
template <class Value>
std::vector<std::uint8_t> writeProperty(const MXFIndexTableSegment& /*segment*/, const boost::optional<Value>& value) {
    return klvutil::writeValue(*value);
}

} // namespace

MXFIndexCoder::MXFIndexCoder(KLVHandler& next) : next_(next) {}

MXFIndexCoder::~MXFIndexCoder() = default;

void MXFIndexCoder::setBERLengthForm(std::uint8_t form) {
    util::require(klvutil::isValidBERLengthForm(form), "valid BER length form");
    form_ = form;
}

void MXFIndexCoder::startIndex() {
    util::require(!started_, "before start");
    started_ = true;
}

void MXFIndexCoder::endIndex() {
    started_ = false;
}

void MXFIndexCoder::indexTableSegment(const MXFIndexTableSegment& segment) {
    util::require(started_, "before index table segment");
    std::vector<std::pair<std::uint16_t, std::vector<std::uint8_t>>> items;
    std::uint64_t length = 0;
    MXFIndexTableSegment::properties(
        segment, [&](const char* /*name*/, std::uint16_t tag, Presence presence, const auto& value) {
            if (presence == Presence::Optional && !says(value)) {
                return;
            }
            items.emplace_back(tag, writeProperty(segment, value));
            const std::size_t size = items.back().second.size();
            util::require(size <= 65535, "property fits item length");
            length += 4 + size;
        });
    if (segment.instanceUID == MXFUID()) {
        items.front().second = klvutil::writeValue(MXFUID{util::freshUUID().octets});
    }
    next_.berLengthForm(klvutil::fittingBERLengthForm(form_, length));
    if (next_.startLocalSet(mxfutil::indexTableSegmentKey, length, KLVFieldForm::TwoOctets, KLVFieldForm::TwoOctets)) {
        for (const auto& [tag, octets] : items) {
            klvutil::sendLocalItem(next_, tag, octets);
        }
    }
    next_.endLocalSet(mxfutil::indexTableSegmentKey);
}

} // namespace bryx
