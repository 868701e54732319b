#include "klv/FindingReporter.h"

#include <functional>

#include "util/byte_order.h"

namespace bryx {

bool FindingReporter::isNew(const klvutil::FindingKind& finding, const Thing& thing) {
    std::set<Thing>& things = reported_[finding.id];
    return things.size() < mostThings && things.insert(thing).second;
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

void FindingReporter::report(ErrorHandler* errorHandler, const klvutil::SubjectFinding& finding, std::uint64_t number,
                             const std::string& subject, const std::string& detail) {
    Thing thing{};
    util::storeBigEndian(thing.data(), number, sizeof number);
    util::storeBigEndian(thing.data() + sizeof number, std::hash<std::string>()(subject), sizeof number);
    if (isNew(finding, thing)) {
        klvutil::report(errorHandler, finding, subject, detail);
    }
}

} // namespace bryx
