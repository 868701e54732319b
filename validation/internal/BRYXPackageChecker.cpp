#include "validation/internal/BRYXPackageChecker.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "mxf/metadata/descriptors/FileDescriptor.h"
#include "mxf/metadata/structural/EventTrack.h"
#include "mxf/metadata/structural/MaterialPackage.h"
#include "mxf/metadata/structural/Sequence.h"
#include "mxf/metadata/structural/SourceClip.h"
#include "mxf/metadata/structural/SourcePackage.h"
#include "mxf/metadata/structural/TimecodeComponent.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "validation/internal/BRYXRates.h"

namespace bryx {

namespace checks = BRYXMetadataChecks;

namespace {

/// Whether @p umid begins as a basic UMID does, of whatever kind of material and however its numbers were made (ST 330).
bool isUMID(const UMID& umid) {
    constexpr std::uint8_t label[] = {0x06, 0x0A, 0x2B, 0x34, 0x01, 0x01, 0x01};
    constexpr std::uint8_t greatestMaterialType = 0x0F;
    return std::equal(std::begin(label), std::end(label), umid.octets.begin()) && umid.octets[8] == 1 &&
           umid.octets[9] == 1 && umid.octets[10] != 0 && umid.octets[10] <= greatestMaterialType &&
           umid.octets[12] == 0x13;
}

template <class Class>
const Class* as(const MetadataRoot* set) {
    return dynamic_cast<const Class*>(set);
}

/// The sum of @p a and @p b, which is not negative; the greatest number if they have none.
std::int64_t sumOf(std::int64_t a, std::int64_t b) {
    constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();
    return a > greatest - b ? greatest : a + b;
}

std::int64_t durationOf(const Track& track) {
    const auto segment = track.getSegment();
    return segment == nullptr ? -1 : bryx::durationOf(*segment);
}

/// Whether a data definition is that of descriptive metadata, which need not be there all the time.
bool isDescriptiveDefinition(const KLVKey& dataDefinition) {
    return isMetadataDefinition(dataDefinition) && dataDefinition[12] == 0x10;
}

/// Whether @p track is one of data essence: timed text, ancillary data and the like.
bool isDataTrack(const Track& track) {
    constexpr std::uint8_t data[] = {0x01, 0x03, 0x02, 0x02, 0x03};
    const auto segment = track.getSegment();
    return segment != nullptr &&
           std::equal(std::begin(data), std::end(data), segment->getDataDefinition().octets.begin() + 8);
}

} // namespace

bool isMetadataDefinition(const KLVKey& dataDefinition) {
    constexpr std::uint8_t metadata[] = {0x01, 0x03, 0x02, 0x01};
    return std::equal(std::begin(metadata), std::end(metadata), dataDefinition.octets.begin() + 8);
}

bool isEssenceTrack(const Track& track) {
    const auto segment = track.getSegment();
    return track.hasTrackNumber() && track.getTrackNumber() != 0 && segment != nullptr &&
           !isMetadataDefinition(segment->getDataDefinition());
}

std::int64_t durationOf(const Component& component) {
    return component.hasDuration() ? component.getDuration() : -1;
}

bool isFilePackage(const GenericPackage& package) {
    const auto* const source = as<SourcePackage>(&package);
    return source != nullptr &&
           (source->getDescriptor() == nullptr || as<FileDescriptor>(source->getDescriptor().get()) != nullptr);
}

BRYXPackageChecker::BRYXPackageChecker(const BRYXValidator& validator, const ContentStorage& storage, bool isComplete)
    : BRYXModelChecker(validator), storage_(storage), isComplete_(isComplete) {
    for (std::size_t i = 0; i < storage.getPackageCount(); ++i) {
        const Package package = storage.getPackageAt(i);
        packages_.emplace(package->getPackageUID(), package);
        for (std::size_t t = 0; t < package->getTrackCount(); ++t) {
            const auto track = package->getTrackAt(t);
            tracks_.emplace(std::pair(package.get(), track->getTrackID()), track);
        }
    }
    for (std::size_t i = 0; i < storage.getEssenceContainerDataCount(); ++i) {
        linked_.insert(storage.getEssenceContainerDataAt(i)->getLinkedPackageUID());
    }
}

BRYXPackageChecker::Package BRYXPackageChecker::find(const UMID& packageUID) const {
    const auto package = packages_.find(packageUID);
    return package == packages_.end() ? nullptr : package->second;
}

std::shared_ptr<const Track> BRYXPackageChecker::findTrack(const GenericPackage& package, std::uint32_t trackID) const {
    const auto track = tracks_.find({&package, trackID});
    return track == tracks_.end() ? nullptr : track->second;
}

template <class Visit>
void BRYXPackageChecker::forEachComponent(const Track& track, Visit visit) {
    const auto segment = track.getSegment();
    if (const auto* const sequence = as<Sequence>(segment.get())) {
        for (std::size_t i = 0; i < sequence->getComponentCount(); ++i) {
            visit(*sequence->getComponentAt(i));
        }
    } else if (segment != nullptr) {
        visit(*segment);
    }
}

void BRYXPackageChecker::check() const {
    std::set<UMID> known;
    bool hasMaterial = false;
    bool hasFile = false;
    for (std::size_t i = 0; i < storage_.getPackageCount(); ++i) {
        const auto package = storage_.getPackageAt(i);
        hasMaterial = hasMaterial || as<MaterialPackage>(package.get()) != nullptr;
        hasFile = hasFile || isFilePackage(*package);
        if (!known.insert(package->getPackageUID()).second) {
            report(*package, checks::duplicatePackageUID, toString(package->getPackageUID()));
        }
        if (isWhole(*package)) {
            checkPackage(*package);
        }
    }
    if (!hasMaterial) {
        report(storage_, checks::missingMaterialPackage);
    }
    if (!hasFile) {
        report(storage_, checks::missingFilePackage);
    }
    checkCycles();
    checkContainers();
}

void BRYXPackageChecker::checkPackage(const GenericPackage& package) const {
    if (!isUMID(package.getPackageUID())) {
        report(package, checks::invalidPackageUID, toString(package.getPackageUID()));
    }
    if (package.getTrackCount() == 0 &&
        package.getUnresolvedReferences(MXFPropertyLabel(0x4403).label()).empty()) { // tracks
        report(package, checks::packageWithoutTracks);
    }
    std::set<std::uint32_t> ids;
    std::set<std::uint32_t> numbers;
    for (std::size_t i = 0; i < package.getTrackCount(); ++i) {
        const auto track = package.getTrackAt(i);
        if (!isWhole(*track)) {
            continue;
        }
        if (track->getTrackID() == 0) {
            report(*track, checks::invalidTrackID, "0");
        } else if (!ids.insert(track->getTrackID()).second) {
            report(*track, checks::duplicateTrackID, std::to_string(track->getTrackID()));
        }
        if (isLinked(package) && isEssenceTrack(*track) && !numbers.insert(track->getTrackNumber()).second) {
            report(*track, checks::duplicateTrackNumber, std::to_string(track->getTrackNumber()));
        }
        checkTrack(package, *track);
        forEachComponent(*track, [&](const Component& component) { checkComponent(package, *track, component); });
    }
    // Tracks of packages whose essence is elsewhere may be as they like.
    if (isLinked(package) || as<MaterialPackage>(&package) != nullptr) {
        checkDurations(package);
    }
}

void BRYXPackageChecker::checkTrack(const GenericPackage& package, const Track& track) const {
    const auto* const timeline = as<TimelineTrack>(&track);
    const auto* const event = as<EventTrack>(&track);
    if (timeline != nullptr) {
        checkTimelineTrack(package, *timeline);
    } else if (event != nullptr && !isRate(event->getEditRate())) {
        report(track, checks::invalidEditRate, "EventTrack.editRate", toString(event->getEditRate()));
    }
    const auto segment = track.getSegment();
    if (const auto* const sequence = as<Sequence>(segment.get())) {
        checkSequence(*sequence, timeline != nullptr);
    }
}

void BRYXPackageChecker::checkTimelineTrack(const GenericPackage& package, const TimelineTrack& track) const {
    if (!isRate(track.getEditRate())) {
        // Data is timed by the track of its file package. What a material package says of it is often left empty, and
        // pictures and sound are decoded all the same.
        if (as<MaterialPackage>(&package) != nullptr && isDataTrack(track)) {
            report(track, checks::untimedData, toString(track.getEditRate()));
        } else {
            report(track, checks::invalidEditRate, "TimelineTrack.editRate", toString(track.getEditRate()));
        }
    }
    const std::int64_t duration = durationOf(track);
    if (track.getOrigin() < 0) {
        report(track, checks::invalidOrigin, std::to_string(track.getOrigin()));
    } else if (duration >= 0 && track.getOrigin() > duration) {
        report(track, checks::originBeyondDuration, std::to_string(track.getOrigin()));
    }
    if (isComplete_ && duration == -1 && track.getSegment() != nullptr) {
        report(*track.getSegment(), checks::unknownDuration);
    }
}

void BRYXPackageChecker::checkSequence(const Sequence& sequence, bool isTimeline) const {
    std::int64_t sum = 0;
    bool isKnown = sequence.getUnresolvedReferences(MXFPropertyLabel(0x1001).label()).empty(); // components
    for (std::size_t i = 0; i < sequence.getComponentCount(); ++i) {
        const auto component = sequence.getComponentAt(i);
        if (isWhole(*component) && component->getDataDefinition() != sequence.getDataDefinition()) {
            report(*component, checks::inconsistentDataDefinition, toString(component->getDataDefinition()));
        }
        const std::int64_t duration = bryx::durationOf(*component);
        isKnown = isKnown && duration >= 0;
        sum = isKnown ? sumOf(sum, duration) : 0;
    }
    if (sequence.hasDuration() && sequence.getDuration() < -1) {
        report(sequence, checks::invalidDuration, std::to_string(sequence.getDuration()));
    } else if (isTimeline && isKnown && bryx::durationOf(sequence) >= 0 && sum != sequence.getDuration()) {
        report(sequence, checks::inconsistentSequenceDuration,
               std::to_string(sequence.getDuration()) + ", not " + std::to_string(sum));
    }
}

void BRYXPackageChecker::checkDurations(const GenericPackage& package) const {
    const TimelineTrack* first = nullptr;
    const auto unit = [](const TimelineTrack& track) {
        return static_cast<double>(track.getEditRate().denominator) / track.getEditRate().numerator;
    };
    const auto seconds = [&](const TimelineTrack& track) {
        return static_cast<double>(durationOf(track)) * unit(track);
    };
    // At rates that do not fit one another, tracks cannot end together.
    const auto isEqual = [&](const TimelineTrack& a, const TimelineTrack& b) {
        return isSameRate(a.getEditRate(), b.getEditRate())
                   ? durationOf(a) == durationOf(b)
                   : std::abs(seconds(a) - seconds(b)) < std::max(unit(a), unit(b));
    };
    for (std::size_t i = 0; i < package.getTrackCount(); ++i) {
        const auto track = package.getTrackAt(i);
        const auto* const timeline = as<TimelineTrack>(track.get());
        const auto segment = track->getSegment();
        if (timeline == nullptr || segment == nullptr || isDescriptiveDefinition(segment->getDataDefinition()) ||
            durationOf(*timeline) < 0 || !isRate(timeline->getEditRate())) {
            continue;
        }
        if (first == nullptr) {
            first = timeline;
        } else if (!isEqual(*timeline, *first)) {
            report(*timeline, checks::unequalTracks,
                   std::to_string(durationOf(*timeline)) + " and " + std::to_string(durationOf(*first)));
        }
    }
}

void BRYXPackageChecker::checkComponent(const GenericPackage& package, const Track& track,
                                        const Component& component) const {
    if (!isWhole(component)) {
        return;
    }
    if (component.hasDuration() && component.getDuration() < -1) {
        report(component, checks::invalidDuration, std::to_string(component.getDuration()));
    }
    const auto* const timeline = as<TimelineTrack>(&track);
    const auto* const timecode = as<TimecodeComponent>(&component);
    if (const auto* const clip = as<SourceClip>(&component)) {
        checkSourceClip(package, track, *clip);
    } else if (timecode != nullptr && timeline != nullptr && isRate(timeline->getEditRate())) {
        checkTimecode(timeline->getEditRate(), *timecode);
    }
}

void BRYXPackageChecker::checkSourceClip(const GenericPackage& package, const Track& track,
                                         const SourceClip& clip) const {
    const UMID& sourceID = clip.getSourcePackageID();
    if (sourceID == UMID{}) {
        if (clip.getSourceTrackID() != 0 || clip.getStartPosition() != 0) {
            report(clip, checks::inconsistentSourceEnd);
        }
        return;
    }
    const Package source = find(sourceID);
    if (source == nullptr) {
        return report(clip, checks::missingSourcePackage, toString(sourceID));
    }
    if (source.get() == &package) {
        return; // leads back at once, as checkCycles() finds
    }
    const auto sourceTrack = findTrack(*source, clip.getSourceTrackID());
    if (sourceTrack == nullptr) {
        return report(clip, checks::missingSourceTrack, std::to_string(clip.getSourceTrackID()));
    }
    const auto segment = sourceTrack->getSegment();
    if (segment == nullptr || !isWhole(*segment)) {
        return;
    }
    if (segment->getDataDefinition() != clip.getDataDefinition()) {
        report(clip, checks::inconsistentSourceTrack, toString(segment->getDataDefinition()));
    }
    const auto* const from = as<TimelineTrack>(sourceTrack.get());
    const auto* const to = as<TimelineTrack>(&track);
    const std::int64_t available = bryx::durationOf(*segment);
    const std::int64_t needed = bryx::durationOf(clip);
    // Positions count from the origin of the source track. Whether what is before that counts in its duration is read
    // in two ways, so that a clip may reach to its end in both.
    if (from != nullptr && to != nullptr && isSameRate(from->getEditRate(), to->getEditRate()) && available >= 0 &&
        (clip.getStartPosition() < -std::max<std::int64_t>(from->getOrigin(), 0) ||
         (needed >= 0 && sumOf(clip.getStartPosition(), needed) > available))) {
        report(clip, checks::sourceClipBeyondSource,
               std::to_string(clip.getStartPosition()) + " and " + std::to_string(needed) + " of " +
                   std::to_string(available));
    }
}

void BRYXPackageChecker::checkTimecode(const Rational& editRate, const TimecodeComponent& timecode) const {
    if (!isFrameRate(editRate)) {
        return; // where a track counts samples of sound, its timecode counts frames that the track does not know
    }
    const std::int64_t base = timecode.getRoundedTimecodeBase();
    const std::int64_t nearest =
        (std::int64_t{2} * editRate.numerator + editRate.denominator) / (std::int64_t{2} * editRate.denominator);
    if (base != nearest) {
        return report(timecode, checks::inconsistentTimecodeBase, std::to_string(base) + " at " + toString(editRate));
    }
    const bool mayDrop = base % 30 == 0 && std::int64_t{editRate.numerator} < base * editRate.denominator;
    if (timecode.getDropFrame() && !mayDrop) {
        report(timecode, checks::inconsistentDropFrame, "at " + toString(editRate));
    }
    constexpr std::int64_t secondsPerDay = 86400;
    if (timecode.getStartTimecode() < 0 || timecode.getStartTimecode() >= base * secondsPerDay) {
        report(timecode, checks::invalidStartTimecode, std::to_string(timecode.getStartTimecode()));
    }
}

void BRYXPackageChecker::checkCycles() const {
    struct Step {
        std::shared_ptr<const GenericPackage> package;
        std::vector<const SourceClip*> clips;
        std::size_t next;
    };
    const auto stepTo = [](const Package& package) {
        Step step{package, {}, 0};
        for (std::size_t i = 0; i < package->getTrackCount(); ++i) {
            forEachComponent(*package->getTrackAt(i), [&](const Component& component) {
                if (const auto* const clip = as<SourceClip>(&component)) {
                    step.clips.push_back(clip);
                }
            });
        }
        return step;
    };
    std::set<const GenericPackage*> done;
    std::set<const GenericPackage*> above;
    for (const auto& [uid, package] : packages_) {
        // A chain may be long: the way down is kept here, not on the stack of calls.
        std::vector<Step> way;
        if (done.count(package.get()) == 0) {
            way.push_back(stepTo(package));
            above.insert(package.get());
        }
        while (!way.empty()) {
            Step& step = way.back();
            if (step.next == step.clips.size()) {
                above.erase(step.package.get());
                done.insert(step.package.get());
                way.pop_back();
                continue;
            }
            const SourceClip& clip = *step.clips[step.next++];
            const Package source = find(clip.getSourcePackageID());
            if (source == nullptr || done.count(source.get()) != 0) {
                continue;
            }
            if (!above.insert(source.get()).second) {
                report(clip, checks::cyclicSourceChain, toString(clip.getSourcePackageID()));
            } else {
                way.push_back(stepTo(source));
            }
        }
    }
}

void BRYXPackageChecker::checkContainers() const {
    std::set<UMID> packages;
    std::set<std::uint32_t> bodySIDs;
    std::set<std::uint32_t> indexSIDs;
    for (std::size_t i = 0; i < storage_.getEssenceContainerDataCount(); ++i) {
        const auto container = storage_.getEssenceContainerDataAt(i);
        if (!isWhole(*container)) {
            continue;
        }
        const UMID& uid = container->getLinkedPackageUID();
        const Package package = find(uid);
        if (package == nullptr || !isFilePackage(*package)) {
            report(*container, checks::unknownLinkedPackage, toString(uid));
        } else if (!packages.insert(uid).second) {
            report(*container, checks::duplicateLinkedPackage, toString(uid));
        }
        if (container->getBodySID() == 0) {
            report(*container, checks::invalidBodySID, "0");
        } else if (!bodySIDs.insert(container->getBodySID()).second) {
            report(*container, checks::duplicateBodySID, std::to_string(container->getBodySID()));
        }
        if (container->hasIndexSID() && container->getIndexSID() != 0 &&
            !indexSIDs.insert(container->getIndexSID()).second) {
            report(*container, checks::duplicateIndexSID, std::to_string(container->getIndexSID()));
        }
    }
}

std::vector<BRYXMetadataSummary::Container> BRYXPackageChecker::containers() const {
    std::vector<BRYXMetadataSummary::Container> containers;
    std::set<UMID> summedUp;
    for (std::size_t i = 0; i < storage_.getEssenceContainerDataCount(); ++i) {
        const auto data = storage_.getEssenceContainerDataAt(i);
        BRYXMetadataSummary::Container& container = containers.emplace_back();
        container.bodySID = data->getBodySID();
        container.indexSID = data->hasIndexSID() ? data->getIndexSID() : 0;
        container.isSparse = data->hasSparse() && data->getSparse();
        container.position = positionOf(*data);
        const Package package = find(data->getLinkedPackageUID());
        const auto* const source = as<SourcePackage>(package.get());
        // A package belongs to one container; further ones have been reported.
        if (source != nullptr && summedUp.insert(source->getPackageUID()).second) {
            addPackage(*source, container);
        }
    }
    return containers;
}

void BRYXPackageChecker::addPackage(const SourcePackage& package, BRYXMetadataSummary::Container& container) {
    container.hasPackage = true;
    if (const auto* const descriptor = as<FileDescriptor>(package.getDescriptor().get())) {
        container.sampleRate = descriptor->getSampleRate();
        container.label = descriptor->getEssenceContainer();
    }
    for (std::size_t i = 0; i < package.getTrackCount(); ++i) {
        const auto track = package.getTrackAt(i);
        const auto* const timeline = as<TimelineTrack>(track.get());
        if (timeline != nullptr && isEssenceTrack(*track)) {
            container.tracks.push_back(
                {track->getTrackNumber(), timeline->getEditRate(), durationOf(*track), positionOf(*track)});
        }
    }
}

} // namespace bryx
