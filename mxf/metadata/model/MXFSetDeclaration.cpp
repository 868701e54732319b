#include "mxf/metadata/model/MXFSetDeclaration.h"

#include <string>

#include "util/assertion_failure.h"

namespace bryx::mxfutil::detail {

void failPresent(const char* setName, const char* propertyName) {
    util::failAssertion((std::string(setName) + "." + propertyName + " is present").c_str());
}

void requireIndex(std::size_t index, std::size_t end, const char* setName, const char* propertyName) {
    if (index >= end) {
        util::failAssertion(("valid " + std::string(setName) + "." + propertyName + " index").c_str());
    }
}

} // namespace bryx::mxfutil::detail
