#include "klv/FindingReporter.h"

#include "util/byte_order.h"

bool FindingReporter::isNew(const klvutil::Finding& finding, const Thing& thing) {
    return reported_.size() < mostThings && reported_.emplace(finding.id, thing).second;
}

void FindingReporter::report(ErrorHandler* errorHandler, const klvutil::Finding& finding, const KLVKey& key) {
    Thing thing = key.octets;
    thing[7] = 0;
    if (isNew(finding, thing)) {
        klvutil::report(errorHandler, finding, toString(key));
    }
}

void FindingReporter::report(ErrorHandler* errorHandler, const klvutil::Finding& finding, const MXFUID& uid) {
    if (isNew(finding, uid.octets)) {
        klvutil::report(errorHandler, finding, toString(uid));
    }
}

void FindingReporter::report(ErrorHandler* errorHandler, const klvutil::Finding& finding, std::uint64_t number,
                             const std::string& detail) {
    Thing thing{};
    util::storeBigEndian(thing.data(), number, sizeof number);
    if (isNew(finding, thing)) {
        klvutil::report(errorHandler, finding, detail);
    }
}
