#include "mxf/metadata/model/dangling_ref.h"

namespace bryx {

dangling_ref_base::~dangling_ref_base() = default;

bool dangling_ref_base::isWaiting(const MetadataRoot& set, const KLVKey& label, std::size_t index) {
    const auto at = set.unresolved_.find(label);
    return at != set.unresolved_.end() && at->second.count(index) != 0;
}

void dangling_ref_base::wasResolved(MetadataRoot& set, const KLVKey& label, std::size_t index) {
    const auto at = set.unresolved_.find(label);
    at->second.erase(index);
    if (at->second.empty()) {
        set.unresolved_.erase(at);
    }
}

} // namespace bryx
