#include "mxf/essence/MXFGCIndexer.h"

#include <limits>

#include "util/assertion_failure.h"

namespace bryx {

MXFGCIndexer::~MXFGCIndexer() = default;

void MXFGCIndexer::startContentPackage() {
    start_ = position();
    offsets_.clear();
    isFirst_ = true;
    next().startContentPackage();
}

void MXFGCIndexer::startElement(const KLVKey& key) {
    if (isFirst_) {
        // Whatever the next handler filled up when the package started belongs to what came before.
        start_ = position();
        isFirst_ = false;
    } else {
        const std::uint64_t offset = position() - start_;
        util::require(offset <= std::numeric_limits<std::uint32_t>::max(), "element offset fits index entry");
        offsets_.push_back(static_cast<std::uint32_t>(offset));
    }
    next().startElement(key);
}

void MXFGCIndexer::endContentPackage() {
    next().endContentPackage();
    indexContentPackage(start_, offsets_);
}

void MXFGCIndexer::indexContentPackage(std::uint64_t /*start*/, const Offsets& /*offsets*/) {}

} // namespace bryx
