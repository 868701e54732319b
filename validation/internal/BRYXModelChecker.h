#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "mxf/metadata/model/MXFSetDescription.h"
#include "mxf/metadata/model/MetadataRoot.h"
#include "validation/internal/BRYXValidator.h"

namespace bryx {

/// Where @p set stands in its stream.
inline std::uint64_t positionOf(const MetadataRoot& set) {
    return set.hasStartStreampos() ? static_cast<std::uint64_t>(std::streamoff{set.getStartStreampos()}) : 0;
}

/// Whether all properties of @p set that were required or present could be read. What could not has been reported, and
/// there is no use in checking the defaults that stand in its place.
inline bool isWhole(const MetadataRoot& set) {
    const auto& properties = set.getDescription().properties();
    return std::none_of(properties.begin(), properties.end(), [&](const MXFProperty* property) {
        return set.isMissing(property->label()) || set.hasDarkProperty(property->label());
    });
}

/// The base of what checks sets of a model: reports of sets, at their positions.
class BRYXModelChecker {
public:
    explicit BRYXModelChecker(const BRYXValidator& validator) : validator_(validator) {}

protected:
    ~BRYXModelChecker() = default;

    void report(const MetadataRoot& set, const BRYXPlainCheck& check, const std::string& detail = {}) const {
        validator_.reportAt(positionOf(set), check, detail);
    }
    void report(const MetadataRoot& set, const BRYXSubjectCheck& check, const std::string& subject,
                const std::string& detail = {}) const {
        validator_.reportAt(positionOf(set), check, subject, detail);
    }

private:
    const BRYXValidator& validator_;
};

} // namespace bryx
