#include "mxf/index/MXFIndexParser.h"

#include <algorithm>
#include <stdexcept>

#include "mxf/index/MXFIndexFindings.h"
#include "mxf/structure/MXFStaticTags.h"

namespace bryx {

namespace findings = mxfutil::findings;

namespace {

/// The tags of index table segments, which are static.
const MXFPrimer& segmentPrimer() {
    static const MXFPrimer primer = [] {
        MXFPrimer tags;
        MXFIndexTableSegment segment;
        MXFIndexTableSegment::properties(segment, [&](const char*, std::uint16_t tag, auto, const auto&) {
            tags.emplace(tag, *mxfutil::staticLabel(tag));
        });
        return tags;
    }();
    return primer;
}

using mxfutil::readProperty;

template <class Value>
void readProperty(const std::vector<std::uint8_t>& octets, const MXFIndexTableSegment& /*segment*/, Value& value) {
    value = klvutil::readValue<Value>(octets);
}
template <class Value>
void readProperty(const std::vector<std::uint8_t>& octets, const MXFIndexTableSegment& /*segment*/,
                  boost::optional<Value>& value) {
    value = klvutil::readValue<Value>(octets);
}

} // namespace

MXFIndexParser::~MXFIndexParser() = default;

void MXFIndexParser::startStream(bool accurateLengths) {
    MXFPrimedSetParser::startStream(accurateLengths);
    handler_.startIndex();
}

void MXFIndexParser::endStream(bool stopped) {
    handler_.endIndex();
    MXFPrimedSetParser::endStream(stopped);
}

const MXFPrimer& MXFIndexParser::primer() const {
    return segmentPrimer();
}

bool MXFIndexParser::wantsSet(const KLVKey& key) {
    return mxfutil::isIndexTableSegmentKey(key);
}

bool MXFIndexParser::allowsBERLengths(const KLVKey& /*key*/) const {
    return true;
}

const KLVKey* MXFIndexParser::unknownTag(std::uint16_t tag) {
    reporter().report(errorHandler(), findings::unsupportedIndexTag, tag, mxfutil::tagText(tag));
    return nullptr;
}

void MXFIndexParser::primedSet(MXFPrimedSet& set) {
    using Presence = MXFIndexTableSegment::Presence;
    MXFIndexTableSegment segment;
    MXFIndexTableSegment::properties(segment, [&](const char* name, std::uint16_t tag, Presence presence, auto& value) {
        const auto found = set.properties.find(segmentPrimer().at(tag));
        if (found == set.properties.end()) {
            if (presence == Presence::Mandatory) {
                reporter().report(errorHandler(), findings::missingIndexProperty, set.position, name);
            }
            return;
        }
        try {
            readProperty(found->second, segment, value);
        } catch (const std::length_error& error) {
            reporter().report(errorHandler(), findings::invalidIndexProperty, set.position, name, error.what());
        }
    });
    check(segment, set.position);
    handler_.indexTableSegment(segment);
}

void MXFIndexParser::check(const MXFIndexTableSegment& segment, std::uint64_t position) {
    const bool hasEntries = !segment.indexEntryArray.empty();
    const bool isConstant = segment.editUnitByteCount != 0;
    if (segment.indexDuration == 0 && !isConstant) {
        reporter().report(errorHandler(), findings::inconsistentDurationAndByteCount, position);
    }
    if (hasEntries && (segment.indexDuration < 0 ||
                       static_cast<std::uint64_t>(segment.indexDuration) != segment.indexEntryArray.size())) {
        reporter().report(errorHandler(), findings::inconsistentDurationAndEntries, position);
    }
    if (isConstant && segment.indexStartPosition != 0) {
        reporter().report(errorHandler(), findings::inconsistentByteCountAndStart, position);
    }
    if (isConstant == hasEntries) {
        reporter().report(errorHandler(), findings::inconsistentByteCountAndEntries, position);
    }
    const auto& deltas = segment.deltaEntryArray;
    if (std::any_of(deltas.begin(), deltas.end(),
                    [&](const auto& delta) { return delta.slice > segment.sliceCount; })) {
        reporter().report(errorHandler(), findings::inconsistentSlices, position);
    }
    if (std::any_of(deltas.begin(), deltas.end(), [&](const auto& delta) {
            return delta.posTableIndex < -1 || delta.posTableIndex > static_cast<int>(segment.posTableCount);
        })) {
        reporter().report(errorHandler(), findings::inconsistentPosTables, position);
    }
}

} // namespace bryx
