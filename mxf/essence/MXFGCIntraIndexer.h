#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "mxf/essence/MXFGCIndexer.h"
#include "mxf/index/MXFIndexTableSegment.h"
#include "util/Api.h"

namespace bryx {

/// Makes an index table while a Generic Container is written: an entry for each content package. Each picture is taken to
/// be coded on its own, unless a derived class knows better.
///
/// Elements at a place that is the same in all content packages of a segment are told by delta entries alone; one behind
/// an element whose size varies begins a slice. The elements of a system item count as one, which begins with the first.
class BRYX_API MXFGCIntraIndexer : public MXFGCIndexer {
public:
    using MXFGCIndexer::MXFGCIndexer;
    ~MXFGCIntraIndexer() override;

    /// The next content package comes into another partition: where its body begins, and how many octets of the essence
    /// container came before.
    void startBody(std::uint64_t position, std::uint64_t bodyOffset) {
        bodyStart_ = position;
        bodyOffset_ = bodyOffset;
    }

    /// The content packages that have been written so far.
    std::int64_t editUnits() const noexcept { return static_cast<std::int64_t>(packages_.size() + alike_); }

    /// A segment for all edit units if they have one size and their elements stand at the same places in all; else one
    /// whose editUnitByteCount is 0. Edit rate, SIDs and identifiers are the caller's to fill in, here and below.
    /// @param octets of the essence container, fill behind the last element included
    MXFIndexTableSegment constantSegment(std::uint64_t octets) const;

    /// The segment that begins with edit unit @p first: up to @p end but without it, or as many edit units as its array of
    /// entries can hold. Requires "valid edit units": 0 <= first < end <= editUnits().
    MXFIndexTableSegment segment(std::int64_t first, std::int64_t end) const;

    void startContentPackage() override;
    void startElement(const KLVKey& key) override;
    void endContentPackage() override;

protected:
    /// Tells of the picture in a content package what an index entry says beside its place: flags, temporal and key
    /// frame offset. Here one from which decoding may start.
    virtual void describe(std::int64_t editUnit, MXFIndexEntry& entry) const;

    void indexContentPackage(std::uint64_t start, const Offsets& offsets) override;

private:
    /// What is kept of a content package; its offsets are those from offsets on.
    struct Package {
        std::uint64_t streamOffset;
        std::size_t offsets;
    };

    Package packageAt(std::size_t package) const;
    std::size_t elementCount(std::size_t package) const;
    std::uint32_t offsetAt(std::size_t package, std::size_t element) const;
    std::vector<std::size_t> slices(std::size_t first, std::size_t count, std::vector<MXFDeltaEntry>& deltas) const;

    std::uint64_t bodyStart_ = 0;
    std::uint64_t bodyOffset_ = 0;
    // Content packages that follow the first one are only counted as long as they come at the same distance and have their
    // elements at the same places. Where all have one size, memory does not grow.
    std::size_t alike_ = 0;
    std::uint64_t size_ = 0;             ///< that distance
    std::vector<Package> packages_;      ///< the first one, and those behind the ones that are alike
    std::vector<std::uint32_t> offsets_; ///< of these packages, one after the other
    std::vector<std::size_t> pictures_;  ///< the elements of the first package that are pictures
    std::vector<bool> isTold_;           ///< each element of the package that is written: not if a system item goes on
    std::size_t told_ = 0;               ///< these elements
    bool inSystemItem_ = false;
    bool isFirstPackage_ = true;
};

} // namespace bryx
