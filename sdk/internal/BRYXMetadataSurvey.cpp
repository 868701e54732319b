#include "sdk/internal/BRYXMetadataSurvey.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

#include "klv/ValueCoding.h"
#include "mxf/structure/MXFStaticTags.h"
#include "sdk/BRYXWriter.h"

namespace bryx {

namespace {

// ---- Properties by their static tags (ST 377-1) ----

constexpr std::uint16_t instanceUID = 0x3C0A;
constexpr std::uint16_t linkedPackageUID = 0x2701;
constexpr std::uint16_t linkedBodySID = 0x3F07;
constexpr std::uint16_t packageUID = 0x4401;
constexpr std::uint16_t packageTracks = 0x4403;
constexpr std::uint16_t packageDescriptor = 0x4701;
constexpr std::uint16_t subDescriptors = 0x3F01;
constexpr std::uint16_t trackSegment = 0x4803;
constexpr std::uint16_t trackNumber = 0x4804;
constexpr std::uint16_t trackEditRate = 0x4B01;
constexpr std::uint16_t trackOrigin = 0x4B02;
constexpr std::uint16_t componentDuration = 0x0202;
constexpr std::uint16_t sampleRate = 0x3001;
constexpr std::uint16_t containerDuration = 0x3002;
constexpr std::uint16_t channelCount = 0x3D07;

/// A property that may be written before its value is known. Then all octets of it are the one that stands for that.
struct BestEffort {
    std::uint16_t tag;
    std::uint8_t unknown;
};

constexpr BestEffort bestEffort[] = {
    {componentDuration, 0xFF},
    {containerDuration, 0xFF},
    {0x320C, 0xFF}, // PictureDescriptor.frameLayout
    {0x3202, 0x00}, // PictureDescriptor.storedHeight
    {0x3203, 0x00}, // PictureDescriptor.storedWidth
    {0x320E, 0x00}, // PictureDescriptor.aspectRatio
    {0x3301, 0x00}, // CDCIPictureDescriptor.componentDepth
    {0x3302, 0x00}, // CDCIPictureDescriptor.horizontalSubsampling
    {0x3401, 0x00}, // RGBAPictureDescriptor.pixelLayout
    {0x3D01, 0x00}, // SoundDescriptor.quantizationBits
    {0x3D03, 0x00}, // SoundDescriptor.audioSamplingRate
    {channelCount, 0x00},
};

const std::vector<std::uint8_t>* octetsOf(const MXFPrimedSet& set, std::uint16_t tag) {
    const auto property = set.properties.find(*mxfutil::staticLabel(tag));
    return property == set.properties.end() ? nullptr : &property->second;
}

/// A property of @p set; none if it is not there, or is no such value.
template <class Value>
std::optional<Value> get(const MXFPrimedSet& set, std::uint16_t tag) {
    const auto* const octets = octetsOf(set, tag);
    if (octets == nullptr) {
        return {};
    }
    try {
        return klvutil::readValue<Value>(*octets);
    } catch (const std::length_error&) {
        return {};
    }
}

/// The descriptor of immersive audio, in which 0 channels is the value that it must have (ST 2067-201).
constexpr KLVKey immersiveAudioKey = klvutil::key("060e2b34.02530101.0d010101.01017b00");

bool holdsUnknown(const MXFPrimedSet& set, const BestEffort& property) {
    const auto* const octets = octetsOf(set, property.tag);
    return octets != nullptr && (property.tag != channelCount || set.key != immersiveAudioKey) &&
           std::all_of(octets->begin(), octets->end(), [&](std::uint8_t octet) { return octet == property.unknown; });
}

bool isRate(const Rational& rate) {
    return rate.numerator > 0 && rate.denominator > 0;
}

/// Whether @p duration at one rate is that of @p editUnits at another.
bool isDuration(std::int64_t duration, const Rational& rate, std::uint64_t editUnits, const Rational& editRate) {
    if (std::int64_t{rate.numerator} * editRate.denominator == std::int64_t{editRate.numerator} * rate.denominator) {
        return static_cast<std::uint64_t>(duration) == editUnits;
    }
    const double unit = static_cast<double>(rate.denominator) / rate.numerator;
    const double editUnit = static_cast<double>(editRate.denominator) / editRate.numerator;
    const double difference = static_cast<double>(duration) * unit - static_cast<double>(editUnits) * editUnit;
    return std::abs(difference) < std::max(unit, editUnit);
}

} // namespace

BRYXMetadataSurvey::BRYXMetadataSurvey(const BRYXHeaderMetadata& metadata) {
    metadata.send(*this);
}

void BRYXMetadataSurvey::startMetadata() {}

void BRYXMetadataSurvey::endMetadata() {}

void BRYXMetadataSurvey::primer(const Primer& /*primer*/) {}

bool BRYXMetadataSurvey::handlesSet(const KLVKey& /*key*/) {
    return true;
}

void BRYXMetadataSurvey::primedSet(MXFPrimedSet& set) {
    if (const auto uid = get<MXFUID>(set, instanceUID)) {
        byUID_.emplace(*uid, sets_.size());
    }
    sets_.push_back(std::move(set));
}

const MXFPrimedSet* BRYXMetadataSurvey::find(const MXFUID& uid) const {
    const auto found = byUID_.find(uid);
    return found == byUID_.end() ? nullptr : &sets_[found->second];
}

const MXFPrimedSet* BRYXMetadataSurvey::segmentOf(const MXFPrimedSet& track) const {
    const auto segment = get<MXFUID>(track, trackSegment);
    return segment ? find(*segment) : nullptr;
}

bool BRYXMetadataSurvey::isComplete() const {
    return std::all_of(sets_.begin(), sets_.end(), [&](const MXFPrimedSet& set) {
        const bool isTimeline = octetsOf(set, trackOrigin) != nullptr;
        const MXFPrimedSet* const segment = isTimeline ? segmentOf(set) : nullptr;
        return (segment == nullptr || octetsOf(*segment, componentDuration) != nullptr) &&
               std::none_of(std::begin(bestEffort), std::end(bestEffort),
                            [&](const BestEffort& property) { return holdsUnknown(set, property); });
    });
}

void BRYXMetadataSurvey::visitDescriptor(const MXFPrimedSet* descriptor, const Visit& visit) const {
    if (descriptor == nullptr) {
        return;
    }
    const auto duration = get<std::int64_t>(*descriptor, containerDuration);
    const auto rate = get<Rational>(*descriptor, sampleRate);
    if (duration && rate) {
        visit(*duration, *rate);
    }
}

void BRYXMetadataSurvey::forEachDuration(const MXFPrimedSet& package, const Visit& visit) const {
    for (const MXFUID& uid : get<std::vector<MXFUID>>(package, packageTracks).value_or(std::vector<MXFUID>())) {
        const MXFPrimedSet* const track = find(uid);
        const MXFPrimedSet* const segment = track == nullptr ? nullptr : segmentOf(*track);
        if (segment == nullptr || get<std::uint32_t>(*track, trackNumber).value_or(0) == 0) {
            continue;
        }
        const auto duration = get<std::int64_t>(*segment, componentDuration);
        const auto rate = get<Rational>(*track, trackEditRate);
        if (duration && rate) {
            visit(*duration, *rate);
        }
    }
    if (const auto uid = get<MXFUID>(package, packageDescriptor)) {
        const MXFPrimedSet* const descriptor = find(*uid);
        visitDescriptor(descriptor, visit);
        if (descriptor != nullptr) {
            for (const MXFUID& sub :
                 get<std::vector<MXFUID>>(*descriptor, subDescriptors).value_or(std::vector<MXFUID>())) {
                visitDescriptor(find(sub), visit);
            }
        }
    }
}

bool BRYXMetadataSurvey::fits(std::uint32_t bodySID, std::uint64_t editUnits, const Rational& editRate) const {
    bool isAny = false;
    bool isOneRight = false;
    bool areAllRight = true;
    const Visit compare = [&](std::int64_t duration, const Rational& rate) {
        if (duration < 0 || !isRate(rate)) {
            return;
        }
        const bool isRight = isDuration(duration, rate, editUnits, isRate(editRate) ? editRate : rate);
        isAny = true;
        isOneRight = isOneRight || isRight;
        areAllRight = areAllRight && isRight;
    };
    for (const MXFPrimedSet& container : sets_) {
        const auto linked = get<UMID>(container, linkedPackageUID);
        if (!linked || get<std::uint32_t>(container, linkedBodySID) != bodySID) {
            continue;
        }
        for (const MXFPrimedSet& package : sets_) {
            if (get<UMID>(package, packageUID) == linked) {
                forEachDuration(package, compare);
            }
        }
    }
    return isRate(editRate) ? areAllRight : isOneRight || !isAny;
}

} // namespace bryx
