#include "klv/Finding.h"

#include "klv/ErrorHandler.h"

namespace klvutil {

std::string describe(const Finding& finding, const std::string& detail) {
    return detail.empty() ? finding.message : finding.message + (" - " + detail);
}

void report(ErrorHandler* errorHandler, const Finding& finding, const std::string& detail) {
    if (errorHandler == nullptr) {
        return;
    }
    const std::string message = describe(finding, detail);
    switch (finding.level) {
    case FindingLevel::warning:
        return errorHandler->warning(finding.id, message);
    case FindingLevel::error:
        return errorHandler->error(finding.id, message);
    case FindingLevel::fatal:
        return errorHandler->fatalError(finding.id, message);
    }
}

} // namespace klvutil
