#include "validation/internal/BRYXSystemValidator.h"

#include <algorithm>
#include <limits>
#include <string>

#include "timecode/TimecodeCalculator.h"

namespace bryx {

namespace checks = BRYXSystemChecks;

namespace {

/// The bits of a bitmap that announce items, the kinds of elements in them, and their names.
struct AnnouncedItem {
    std::uint8_t bit;
    MXFGCEssenceKind kind;
    const char* name;
};
constexpr AnnouncedItem announcedItems[] = {
    {MXFSystemBitmap::pictureItem, MXFGCEssenceKind::Picture, "picture"},
    {MXFSystemBitmap::soundItem, MXFGCEssenceKind::Sound, "sound"},
    {MXFSystemBitmap::dataItem, MXFGCEssenceKind::Data, "data"},
};

/// @param kind not None
std::size_t indexOf(MXFGCEssenceKind kind) {
    return static_cast<std::size_t>(kind) - static_cast<std::size_t>(MXFGCEssenceKind::Picture);
}

} // namespace

BRYXSystemValidator::BRYXSystemValidator(MXFSDTICPSystemHandler& next, MXFGCStructureHandler& nextStructure,
                                         BRYXCrossValidator& cross, BRYXValidationMode::Enum mode)
    : MXFGCStructureFilter(nextStructure), BRYXValidator(mode), next_(next), cross_(cross) {
    cross_.expectElements();
}

BRYXSystemValidator::~BRYXSystemValidator() = default;

void BRYXSystemValidator::startStream(std::uint64_t kagSize) {
    const std::uint32_t bodySID = cross_.bodySID();
    container_ = containers_.size() < maxKept || containers_.count(bodySID) != 0 ? &containers_[bodySID] : nullptr;
    knownKinds_.clear();
    MXFGCStructureFilter::startStream(kagSize);
}

void BRYXSystemValidator::endStream() {
    container_ = nullptr;
    MXFGCStructureFilter::endStream();
}

void BRYXSystemValidator::startContentPackage() {
    hasSystemItem_ = false;
    bitmap_.reset();
    elements_ = {};
    announced_ = {};
    cross_.contentPackage();
    MXFGCStructureFilter::startContentPackage();
}

/// Tells of a key that comes for the first time, or again after others.
MXFGCEssenceKind BRYXSystemValidator::classify(const KLVKey& key) {
    const MXFGCEssenceKind kind = mxfutil::gcEssenceKind(key);
    if (kind != MXFGCEssenceKind::None || !mxfutil::isGCSystemElement(key)) {
        cross_.element(key);
    }
    return kind;
}

void BRYXSystemValidator::startElement(const KLVKey& key) {
    const MXFGCEssenceKind kind = knownKinds_.kindOf(key, [this](const KLVKey& k) { return classify(k); });
    // Keys of private kinds need not hold a count.
    if (kind != MXFGCEssenceKind::None && elements_[indexOf(kind)]++ == 0) {
        announced_[indexOf(kind)] = key[13];
        positions_[indexOf(kind)] = position();
    }
    hasSystemItem_ = hasSystemItem_ || (kind == MXFGCEssenceKind::None && mxfutil::isGCSystemElement(key));
    MXFGCStructureFilter::startElement(key);
}

void BRYXSystemValidator::checkBitmap() {
    if (!bitmap_ || elements_[indexOf(MXFGCEssenceKind::Compound)] != 0) {
        return; // compound elements hold items of all kinds
    }
    std::uint8_t wrong = 0;
    for (const AnnouncedItem& item : announcedItems) {
        const bool isAnnounced = (*bitmap_ & item.bit) != 0;
        if (isAnnounced != (elements_[indexOf(item.kind)] != 0)) {
            wrong |= item.bit;
            if ((container_->wrongBits & item.bit) == 0) {
                reportAt(packPosition_, checks::inconsistentBitmap, item.name);
            }
        }
    }
    container_->wrongBits |= wrong;
}

void BRYXSystemValidator::checkCounts() {
    for (std::size_t i = 0; i < kinds; ++i) {
        if (elements_[i] != announced_[i]) {
            return reportCount(i);
        }
    }
}

void BRYXSystemValidator::reportCount(std::size_t kind) {
    if (!container_->miscountsElements) {
        container_->miscountsElements = true;
        reportAt(positions_[kind], checks::incorrectElementCount,
                 std::to_string(announced_[kind]) + ", not " + std::to_string(elements_[kind]));
    }
}

void BRYXSystemValidator::checkKinds() {
    if (hasSystemItem_ || container_->lacksSystemItem) {
        return;
    }
    constexpr std::uint64_t none = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t first = none;
    std::uint64_t second = none; // where elements of a second kind begin
    for (std::size_t i = 0; i < kinds; ++i) {
        const std::uint64_t start = elements_[i] != 0 ? positions_[i] : none;
        second = std::min(second, std::max(first, start));
        first = std::min(first, start);
    }
    if (second != none) {
        container_->lacksSystemItem = true;
        reportAt(second, checks::missingSystemItem);
    }
}

void BRYXSystemValidator::endContentPackage() {
    if (container_ != nullptr) {
        checkBitmap();
        checkCounts();
        checkKinds();
    }
    MXFGCStructureFilter::endContentPackage();
}

void BRYXSystemValidator::checkPack(const MXFSystemMetadataPack& pack) const {
    const auto& first = container_->first;
    if (!first) {
        if (!mxfutil::packageRate(pack.rate)) {
            report(checks::invalidPackageRate, std::to_string(pack.rate));
        }
        return;
    }
    if (pack.label != first->label && pack.label != container_->label) {
        reportAt(position(), checks::inconsistentSystemItem, "label", toString(pack.label));
    }
    if (pack.rate != first->rate && pack.rate != container_->rate) {
        reportAt(position(), checks::inconsistentSystemItem, "rate", std::to_string(pack.rate));
    }
    const auto step = static_cast<std::uint16_t>(pack.continuityCount - container_->continuityCount);
    if (step != 1 && step != container_->step) {
        report(checks::discontinuousCount,
               std::to_string(pack.continuityCount) + " after " + std::to_string(container_->continuityCount));
    }
    container_->step = step;
}

bool BRYXSystemValidator::follows(const Timecode& timecode, const Timecode& next, std::uint8_t rate) {
    if (calculator_ == nullptr || calculatorRate_ != rate || calculatorDrops_ != timecode.dropFrame) {
        const auto packageRate = mxfutil::packageRate(rate);
        const int nominal =
            packageRate ? (packageRate->numerator + packageRate->denominator - 1) / packageRate->denominator : 0;
        if (nominal == 0 || nominal > 60 || (timecode.dropFrame && nominal % 30 != 0)) {
            return true; // no counting to hold it against
        }
        calculator_ = createTimecodeCalculator(static_cast<std::uint8_t>(nominal), timecode.dropFrame, std::uint8_t{1});
        calculatorRate_ = rate;
        calculatorDrops_ = timecode.dropFrame;
    }
    const auto frames = [&](const Timecode& t) {
        return calculator_->toFrames(t.hours, t.minutes, t.seconds, t.frames);
    };
    const auto inRange = [&](const Timecode& t) {
        return calculator_->isInRange(t.hours, t.minutes, t.seconds, t.frames);
    };
    // Mostly just the next frame of the same second, which is quick to see unless labels are dropped.
    if (!timecode.dropFrame && next.frames == timecode.frames + 1 && next.seconds == timecode.seconds &&
        next.minutes == timecode.minutes && next.hours == timecode.hours) {
        return inRange(next);
    }
    return inRange(timecode) && inRange(next) &&
           frames(next) == (std::uint64_t{frames(timecode)} + 1) % calculator_->getFramesPerDay();
}

void BRYXSystemValidator::checkTimecode(const MXFSystemMetadataPack& pack) {
    boost::optional<Timecode> found;
    for (const MXFDateTimeStamp* const stamp : {&pack.userStamp, &pack.creationStamp}) {
        const auto timecode = mxfutil::stampTimecode(pack, *stamp);
        if (stamp->type == MXFDateTimeStamp::timecodeType && !timecode) {
            report(checks::invalidTimecode);
        }
        if (!found) {
            found = timecode;
        }
    }
    if (makes(checks::discontinuousTimecode) && found && container_->timecode &&
        !follows(*container_->timecode, *found, pack.rate)) {
        report(checks::discontinuousTimecode, toString(*found) + " after " + toString(*container_->timecode));
    }
    container_->timecode = found;
}

void BRYXSystemValidator::systemMetadata(const MXFSystemMetadataPack& pack) {
    cross_.systemItem(pack.label, mxfutil::packageRate(pack.rate));
    bitmap_ = pack.bitmap;
    packPosition_ = position();
    if (container_ != nullptr) {
        checkPack(pack);
        checkTimecode(pack);
        if (!container_->first) {
            container_->first = pack;
        }
        container_->label = pack.label;
        container_->rate = pack.rate;
        container_->continuityCount = pack.continuityCount;
    }
    next_.systemMetadata(pack);
}

void BRYXSystemValidator::pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& items) {
    if (nextProxy_ != nullptr) {
        nextProxy_->pdProxyMetadata(metadata, items);
    }
}

} // namespace bryx
