#include "klv/Finding.h"

#include "klv/ErrorHandler.h"

namespace bryx::klvutil {

namespace {

std::string withDetail(const std::string& message, const std::string& detail) {
    return detail.empty() ? message : message + " - " + detail;
}

void send(ErrorHandler& errorHandler, const FindingKind& finding, const std::string& message) {
    switch (finding.level) {
    case FindingLevel::warning:
        return errorHandler.warning(finding.id, message);
    case FindingLevel::error:
        return errorHandler.error(finding.id, message);
    case FindingLevel::fatal:
        return errorHandler.fatalError(finding.id, message);
    }
}

} // namespace

std::string describe(const Finding& finding, const std::string& detail) {
    return withDetail(finding.message, detail);
}

std::string describe(const SubjectFinding& finding, const std::string& subject, const std::string& detail) {
    std::string message = finding.message;
    message.replace(message.find('%'), 1, subject);
    return withDetail(message, detail);
}

void report(ErrorHandler* errorHandler, const Finding& finding, const std::string& detail) {
    if (errorHandler != nullptr) {
        send(*errorHandler, finding, describe(finding, detail));
    }
}

void report(ErrorHandler* errorHandler, const SubjectFinding& finding, const std::string& subject,
            const std::string& detail) {
    if (errorHandler != nullptr) {
        send(*errorHandler, finding, describe(finding, subject, detail));
    }
}

} // namespace bryx::klvutil
