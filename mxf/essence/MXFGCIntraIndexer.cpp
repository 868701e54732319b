#include "mxf/essence/MXFGCIntraIndexer.h"

#include <algorithm>
#include <limits>

#include "mxf/essence/MXFGCKeys.h"
#include "mxf/index/MXFIndexCoder.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace {

/// What the array of a segment can hold. Further elements are not told.
constexpr std::size_t maxDeltaEntries = (65535 - 8) / 6;

} // namespace

MXFGCIntraIndexer::~MXFGCIntraIndexer() = default;

void MXFGCIntraIndexer::startContentPackage() {
    isTold_.clear();
    told_ = 0;
    inSystemItem_ = false;
    MXFGCIndexer::startContentPackage();
}

void MXFGCIntraIndexer::endContentPackage() {
    MXFGCIndexer::endContentPackage();
    isFirstPackage_ = false;
}

void MXFGCIntraIndexer::startElement(const KLVKey& key) {
    const bool isSystem = mxfutil::isGCSystemElement(key);
    const bool isTold = !isSystem || !inSystemItem_;
    isTold_.push_back(isTold);
    told_ += isTold ? 1 : 0;
    inSystemItem_ = isSystem;
    if (isFirstPackage_ && told_ <= maxDeltaEntries && mxfutil::gcEssenceKind(key) == MXFGCEssenceKind::Picture) {
        pictures_.push_back(told_ - 1);
    }
    MXFGCIndexer::startElement(key);
}

void MXFGCIntraIndexer::indexContentPackage(std::uint64_t start, const Offsets& offsets) {
    const Package package{start - bodyStart_ + bodyOffset_, offsets_.size()};
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        if (isTold_[i + 1]) {
            offsets_.push_back(offsets[i]);
        }
    }
    if (packages_.size() == 1) {
        const auto own = offsets_.begin() + static_cast<std::ptrdiff_t>(package.offsets);
        const std::uint64_t size = alike_ == 0 ? package.streamOffset - packages_[0].streamOffset : size_;
        if (package.streamOffset == packages_[0].streamOffset + (alike_ + 1) * size &&
            std::equal(offsets_.begin(), own, own, offsets_.end())) {
            size_ = size;
            ++alike_;
            offsets_.erase(own, offsets_.end());
            return;
        }
    }
    packages_.push_back(package);
}

MXFGCIntraIndexer::Package MXFGCIntraIndexer::packageAt(std::size_t package) const {
    return package <= alike_ ? Package{packages_[0].streamOffset + package * size_, 0} : packages_[package - alike_];
}

void MXFGCIntraIndexer::describe(std::int64_t /*editUnit*/, MXFIndexEntry& entry) const {
    entry.flags = MXFIndexEntryFlags::randomAccess;
}

std::size_t MXFGCIntraIndexer::elementCount(std::size_t package) const {
    const std::size_t next = package < alike_ ? 1 : package - alike_ + 1;
    const std::size_t end = next < packages_.size() ? packages_[next].offsets : offsets_.size();
    return end - packageAt(package).offsets + 1;
}

/// Where an element begins; that of the last one for one that the package does not have.
std::uint32_t MXFGCIntraIndexer::offsetAt(std::size_t package, std::size_t element) const {
    const std::size_t known = std::min(element, elementCount(package) - 1);
    return known == 0 ? 0 : offsets_[packageAt(package).offsets + known - 1];
}

/// The elements that begin a slice, in @p count packages from @p first on.
std::vector<std::size_t> MXFGCIntraIndexer::slices(std::size_t first, std::size_t count,
                                                   std::vector<MXFDeltaEntry>& deltas) const {
    std::size_t elements = 1;
    for (std::size_t i = first; i < first + count; ++i) {
        elements = std::max(elements, elementCount(i));
    }
    std::vector<std::size_t> starts;
    deltas = {{0, 0, 0}};
    std::size_t sliceStart = 0;
    for (std::size_t element = 1; element < std::min(elements, maxDeltaEntries); ++element) {
        const auto delta = [&](std::size_t package) {
            return offsetAt(package, element) - offsetAt(package, sliceStart);
        };
        bool isConstant = true;
        for (std::size_t i = first; isConstant && i < first + count; ++i) {
            isConstant = delta(i) == delta(first);
        }
        if (!isConstant) {
            if (starts.size() == std::numeric_limits<std::uint8_t>::max()) {
                break; // no further slice can be told
            }
            starts.push_back(element);
            sliceStart = element;
        }
        deltas.push_back({0, static_cast<std::uint8_t>(starts.size()), delta(first)});
    }
    return starts;
}

MXFIndexTableSegment MXFGCIntraIndexer::segment(std::int64_t first, std::int64_t end) const {
    util::require(0 <= first && first < end && end <= editUnits(), "valid edit units");
    const auto begin = static_cast<std::size_t>(first);
    std::size_t count = std::min(static_cast<std::size_t>(end - first), mxfutil::maxIndexEntries(0, 0));
    MXFIndexTableSegment result;
    std::vector<std::size_t> starts = slices(begin, count, result.deltaEntryArray);
    const std::size_t most = mxfutil::maxIndexEntries(static_cast<std::uint8_t>(starts.size()), 0);
    if (count > most) {
        count = most;
        starts = slices(begin, count, result.deltaEntryArray);
    }
    result.sliceCount = static_cast<std::uint8_t>(starts.size());
    result.indexStartPosition = first;
    result.indexDuration = static_cast<std::int64_t>(count);
    result.indexEntryArray.reserve(count);
    bool isReordered = false;
    for (std::size_t i = begin; i < begin + count; ++i) {
        MXFIndexEntry told;
        describe(static_cast<std::int64_t>(i), told);
        MXFIndexEntry entry{told.temporalOffset, told.keyFrameOffset, told.flags, packageAt(i).streamOffset, {}, {}};
        for (const std::size_t element : starts) {
            entry.sliceOffsets.push_back(offsetAt(i, element));
        }
        isReordered = isReordered || entry.temporalOffset != 0;
        result.indexEntryArray.push_back(std::move(entry));
    }
    for (const std::size_t element : pictures_) {
        if (isReordered && element < result.deltaEntryArray.size()) {
            result.deltaEntryArray[element].posTableIndex = -1;
        }
    }
    if (result.deltaEntryArray.size() == 1 && !isReordered) {
        result.deltaEntryArray.clear(); // a single element needs none
    }
    return result;
}

MXFIndexTableSegment MXFGCIntraIndexer::constantSegment(std::uint64_t octets) const {
    MXFIndexTableSegment result;
    const auto units = static_cast<std::uint64_t>(editUnits());
    if (octets == 0 || units == 0 || octets % units != 0) {
        return result;
    }
    const std::uint64_t size = octets / units;
    for (std::uint64_t i = 0; i < units; ++i) {
        if (packageAt(i).streamOffset != i * size) {
            return result;
        }
    }
    std::vector<MXFDeltaEntry> deltas;
    if (size > std::numeric_limits<std::uint32_t>::max() || !slices(0, units, deltas).empty()) {
        return result;
    }
    result.editUnitByteCount = static_cast<std::uint32_t>(size);
    result.indexDuration = editUnits();
    if (deltas.size() > 1) {
        result.deltaEntryArray = std::move(deltas);
    }
    return result;
}

} // namespace bryx
