#include "mxf/essence/MXFKeyReporter.h"

#include <cstddef>

namespace {

constexpr std::size_t maxReported = 1000;

} // namespace

void MXFKeyReporter::report(ErrorHandler* errorHandler, const klvutil::Finding& finding, const KLVKey& key) {
    if (reported_.size() < maxReported && reported_.insert(key).second) {
        klvutil::report(errorHandler, finding, toString(key));
    }
}
