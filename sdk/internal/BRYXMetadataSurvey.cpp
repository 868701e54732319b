#include "sdk/internal/BRYXMetadataSurvey.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

#include "klv/KLVKey.h"
#include "klv/ValueCoding.h"
#include "sdk/BRYXWriter.h"

namespace bryx {

namespace {

// ---- Properties by their labels (ST 377-1) ----

constexpr KLVKey instanceUID = klvutil::key("060e2b34.01010101.01011502.00000000");
constexpr KLVKey linkedPackageUID = klvutil::key("060e2b34.01010102.06010106.01000000");
constexpr KLVKey linkedBodySID = klvutil::key("060e2b34.01010104.01030404.00000000");
constexpr KLVKey packageUID = klvutil::key("060e2b34.01010101.01011510.00000000");
constexpr KLVKey packageTracks = klvutil::key("060e2b34.01010102.06010104.06050000");
constexpr KLVKey packageDescriptor = klvutil::key("060e2b34.01010102.06010104.02030000");
constexpr KLVKey subDescriptors = klvutil::key("060e2b34.01010104.06010104.060b0000");
constexpr KLVKey trackSegment = klvutil::key("060e2b34.01010102.06010104.02040000");
constexpr KLVKey trackNumber = klvutil::key("060e2b34.01010102.01040103.00000000");
constexpr KLVKey trackEditRate = klvutil::key("060e2b34.01010102.05300405.00000000");
constexpr KLVKey trackOrigin = klvutil::key("060e2b34.01010102.07020103.01030000");
constexpr KLVKey componentDuration = klvutil::key("060e2b34.01010102.07020201.01030000");
constexpr KLVKey sampleRate = klvutil::key("060e2b34.01010101.04060101.00000000");
constexpr KLVKey containerDuration = klvutil::key("060e2b34.01010101.04060102.00000000");
constexpr KLVKey channelCount = klvutil::key("060e2b34.01010105.04020101.04000000");

/// A property that may be written before its value is known. Then all octets of it are the one that stands for that.
struct BestEffort {
    KLVKey label;
    std::uint8_t unknown;
};

constexpr BestEffort bestEffort[] = {
    {componentDuration, 0xFF},
    {containerDuration, 0xFF},
    {klvutil::key("060e2b34.01010101.04010301.04000000"), 0xFF}, // PictureDescriptor.frameLayout
    {klvutil::key("060e2b34.01010101.04010502.01000000"), 0x00}, // PictureDescriptor.storedHeight
    {klvutil::key("060e2b34.01010101.04010502.02000000"), 0x00}, // PictureDescriptor.storedWidth
    {klvutil::key("060e2b34.01010101.04010101.01000000"), 0x00}, // PictureDescriptor.aspectRatio
    {klvutil::key("060e2b34.01010102.04010503.0a000000"), 0x00}, // CDCIPictureDescriptor.componentDepth
    {klvutil::key("060e2b34.01010101.04010501.05000000"), 0x00}, // CDCIPictureDescriptor.horizontalSubsampling
    {klvutil::key("060e2b34.01010102.04010503.06000000"), 0x00}, // RGBAPictureDescriptor.pixelLayout
    {klvutil::key("060e2b34.01010104.04020303.04000000"), 0x00}, // SoundDescriptor.quantizationBits
    {klvutil::key("060e2b34.01010105.04020301.01010000"), 0x00}, // SoundDescriptor.audioSamplingRate
    {channelCount, 0x00},
};

const std::vector<std::uint8_t>* octetsOf(const MXFPrimedSet& set, const KLVKey& label) {
    const auto property = set.properties.find(label);
    return property == set.properties.end() ? nullptr : &property->second;
}

/// A property of @p set; none if it is not there, or is no such value.
template <class Value>
std::optional<Value> get(const MXFPrimedSet& set, const KLVKey& label) {
    const auto* const octets = octetsOf(set, label);
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
    const auto* const octets = octetsOf(set, property.label);
    return octets != nullptr && (property.label != channelCount || set.key != immersiveAudioKey) &&
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

/// Whether so many units of a rate are no more than @p editUnits of another.
bool isWithin(std::int64_t units, const Rational& rate, std::uint64_t editUnits, const Rational& editRate) {
    return static_cast<double>(units) * rate.denominator / rate.numerator <=
           static_cast<double>(editUnits) * editRate.denominator / editRate.numerator;
}

} // namespace

BRYXMetadataSurvey::BRYXMetadataSurvey(const BRYXHeaderMetadata& metadata) {
    metadata.send(*this);
    for (const MXFPrimedSet& set : sets_) {
        const auto linked = get<UMID>(set, linkedPackageUID);
        const auto bodySID = get<std::uint32_t>(set, linkedBodySID);
        if (linked && bodySID) {
            packages_[*bodySID].insert(*linked);
        }
        if (const auto uid = get<UMID>(set, packageUID)) {
            addDurations(durations_[*uid], set);
        }
    }
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

/// Adds all durations that @p package gives.
void BRYXMetadataSurvey::addDurations(Durations& durations, const MXFPrimedSet& package) const {
    std::int64_t origin = 0;
    const auto add = [&](const std::optional<std::int64_t>& duration, const std::optional<Rational>& rate) {
        if (duration && rate && *duration >= 0 && isRate(*rate)) {
            durations.insert({*duration, *rate, origin});
        }
    };
    const auto addDescriptor = [&](const MXFPrimedSet* descriptor) {
        if (descriptor != nullptr) {
            add(get<std::int64_t>(*descriptor, containerDuration), get<Rational>(*descriptor, sampleRate));
        }
    };
    std::vector<const MXFPrimedSet*> tracks;
    for (const MXFUID& uid : get<std::vector<MXFUID>>(package, packageTracks).value_or(std::vector<MXFUID>())) {
        const MXFPrimedSet* const track = find(uid);
        if (track != nullptr && get<std::uint32_t>(*track, trackNumber).value_or(0) != 0) {
            tracks.push_back(track);
            origin = std::max<std::int64_t>(get<std::int64_t>(*track, trackOrigin).value_or(0), origin);
        }
    }
    for (const MXFPrimedSet* const track : tracks) {
        if (const MXFPrimedSet* const segment = segmentOf(*track)) {
            add(get<std::int64_t>(*segment, componentDuration), get<Rational>(*track, trackEditRate));
        }
    }
    if (const auto uid = get<MXFUID>(package, packageDescriptor)) {
        const MXFPrimedSet* const descriptor = find(*uid);
        addDescriptor(descriptor);
        if (descriptor != nullptr) {
            for (const MXFUID& sub :
                 get<std::vector<MXFUID>>(*descriptor, subDescriptors).value_or(std::vector<MXFUID>())) {
                addDescriptor(find(sub));
            }
        }
    }
}

bool BRYXMetadataSurvey::fits(std::uint32_t bodySID, std::uint64_t editUnits, const Rational& editRate) const {
    const auto packages = packages_.find(bodySID);
    if (packages == packages_.end()) {
        return true;
    }
    bool isAny = false;
    for (const UMID& package : packages->second) {
        const auto found = durations_.find(package);
        if (found == durations_.end() || found->second.empty()) {
            continue;
        }
        const Durations& durations = found->second;
        if (isRate(editRate)) {
            if (!std::all_of(durations.begin(), durations.end(), [&](const Duration& duration) {
                    return isDuration(duration.units, duration.rate, editUnits, editRate) ||
                           (duration.origin > 0 && isWithin(duration.units, duration.rate, editUnits, editRate));
                })) {
                return false;
            }
        } else {
            const auto right = durations.lower_bound({static_cast<std::int64_t>(editUnits), Rational(), 0});
            if (right != durations.end() && static_cast<std::uint64_t>(right->units) == editUnits) {
                return true;
            }
            isAny = true;
        }
    }
    return !isAny;
}

} // namespace bryx
