#include "klv/parse_error.h"

namespace bryx::klvutil {

parse_error::parse_error(const Finding& finding, std::streampos position, const std::string& detail)
    : std::runtime_error(describe(finding, detail)), id_(finding.id), position_(position) {}

parse_error::~parse_error() = default;

void fail(ErrorHandler* errorHandler, const Finding& finding, std::streampos position, const std::string& detail) {
    report(errorHandler, finding, detail);
    throw parse_error(finding, position, detail);
}

} // namespace bryx::klvutil
