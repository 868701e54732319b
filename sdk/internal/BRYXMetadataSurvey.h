#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <tuple>
#include <vector>

#include "klv/KLVValueTypes.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"

namespace bryx {

struct BRYXHeaderMetadata;

/// What header metadata holds, whoever makes its sets: whether anything in it is not known yet, and whether the durations
/// in it are those of what has been written (ST 377-1, Partition Status).
class BRYXMetadataSurvey final : public MXFMetadataHandler {
public:
    explicit BRYXMetadataSurvey(const BRYXHeaderMetadata& metadata);

    /// Whether no "best effort" property holds the value that stands for "unknown", and each timeline track has a duration.
    bool isComplete() const;

    /// Whether the durations that the metadata gives for the essence container with @p bodySID fit @p editUnits: those of
    /// the tracks of its file package that have a number, and of that package's descriptors. What is counted in units of
    /// another rate may be off by less than one unit. Where a track has an origin, what comes before it and behind its end
    /// need not be counted.
    /// @param editRate of the container; one with a zero if it is not known. Then it is enough that one of them fits.
    bool fits(std::uint32_t bodySID, std::uint64_t editUnits, const Rational& editRate) const;

    void startMetadata() override;
    void endMetadata() override;
    void primer(const Primer& primer) override;
    bool handlesSet(const KLVKey& key) override;
    void primedSet(MXFPrimedSet& set) override;

private:
    /// A duration in units of a rate, both of which can be, with the origin that goes with it.
    struct Duration {
        std::int64_t units;
        Rational rate;
        std::int64_t origin; ///< the largest of the tracks of the package

        friend bool operator<(const Duration& a, const Duration& b) noexcept {
            return std::tie(a.units, a.rate.numerator, a.rate.denominator, a.origin) <
                   std::tie(b.units, b.rate.numerator, b.rate.denominator, b.origin);
        }
    };
    using Durations = std::set<Duration>;

    const MXFPrimedSet* find(const MXFUID& uid) const;
    const MXFPrimedSet* segmentOf(const MXFPrimedSet& track) const;
    void addDurations(Durations& durations, const MXFPrimedSet& package) const;

    std::vector<MXFPrimedSet> sets_;
    std::map<MXFUID, std::size_t> byUID_;
    std::map<std::uint32_t, std::set<UMID>> packages_; ///< whose essence is in an essence container, by its body SID
    std::map<UMID, Durations> durations_;              ///< by the package that gives them
};

} // namespace bryx
