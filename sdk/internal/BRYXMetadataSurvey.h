#pragma once

#include <cstdint>
#include <functional>
#include <map>
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
    /// another rate may be off by less than one unit.
    /// @param editRate of the container; one with a zero if it is not known. Then it is enough that one of them fits.
    bool fits(std::uint32_t bodySID, std::uint64_t editUnits, const Rational& editRate) const;

    void startMetadata() override;
    void endMetadata() override;
    void primer(const Primer& primer) override;
    bool handlesSet(const KLVKey& key) override;
    void primedSet(MXFPrimedSet& set) override;

private:
    using Visit = std::function<void(std::int64_t duration, const Rational& rate)>;

    const MXFPrimedSet* find(const MXFUID& uid) const;
    const MXFPrimedSet* segmentOf(const MXFPrimedSet& track) const;
    void forEachDuration(const MXFPrimedSet& package, const Visit& visit) const;
    void visitDescriptor(const MXFPrimedSet* descriptor, const Visit& visit) const;

    std::vector<MXFPrimedSet> sets_;
    std::map<MXFUID, std::size_t> byUID_;
};

} // namespace bryx
