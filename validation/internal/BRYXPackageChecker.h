#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "mxf/metadata/structural/Preface.h"
#include "validation/internal/BRYXModelChecker.h"
#include "validation/internal/BRYXSummaries.h"

namespace bryx {

class Sequence;
class SourceClip;
class SourcePackage;
class TimecodeComponent;
class TimelineTrack;

/// Whether a data definition is that of timecode or descriptive metadata, and not of essence (ST 377-1).
bool isMetadataDefinition(const KLVKey& dataDefinition);

/// Whether what is on @p track stands in an essence container.
bool isEssenceTrack(const Track& track);

/// Of what is on a track, in edit units of that; negative if it is not known.
std::int64_t durationOf(const Component& component);

/// Whether @p package describes an essence container: it has a file descriptor, or one of a class that is not known.
bool isFilePackage(const GenericPackage& package);

/// Checks the packages of a model, their tracks and what is on them, and the essence container data.
class BRYXPackageChecker : public BRYXModelChecker {
public:
    /// @param isComplete whether all values are final and known
    BRYXPackageChecker(const BRYXValidator& validator, const ContentStorage& storage, bool isComplete);

    void check() const;

    /// The essence container data and the tracks of their packages.
    std::vector<BRYXMetadataSummary::Container> containers() const;

    /// Whether the essence of @p package is in the file.
    bool isLinked(const GenericPackage& package) const { return linked_.count(package.getPackageUID()) != 0; }

private:
    using Package = std::shared_ptr<const GenericPackage>;

    void checkPackage(const GenericPackage& package) const;
    void checkTrack(const GenericPackage& package, const Track& track) const;
    void checkTimelineTrack(const GenericPackage& package, const TimelineTrack& track) const;
    void checkDurations(const GenericPackage& package) const;
    void checkSequence(const Sequence& sequence, bool isTimeline) const;
    void checkComponent(const GenericPackage& package, const Track& track, const Component& component) const;
    void checkSourceClip(const GenericPackage& package, const Track& track, const SourceClip& clip) const;
    void checkTimecode(const Rational& editRate, const TimecodeComponent& timecode) const;
    void checkCycles() const;
    void checkContainers() const;
    static void addPackage(const SourcePackage& package, BRYXMetadataSummary::Container& container);
    Package find(const UMID& packageUID) const;
    std::shared_ptr<const Track> findTrack(const GenericPackage& package, std::uint32_t trackID) const;
    /// Calls @p visit with each component of @p track that is no Sequence.
    template <class Visit>
    static void forEachComponent(const Track& track, Visit visit);

    const ContentStorage& storage_;
    bool isComplete_;
    std::map<UMID, Package> packages_;
    std::set<UMID> linked_; ///< named by essence container data
    std::map<std::pair<const GenericPackage*, std::uint32_t>, std::shared_ptr<const Track>> tracks_; ///< by track ID
};

} // namespace bryx
