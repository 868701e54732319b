#include "validation/BRYXChecks.h"

namespace bryx {

#define BRYX_LIST_CHECK(name, ...) &name,

/// The group of the checks in @p space that @p rows lists.
#define BRYX_CHECK_GROUP(subject, space, rows)                                                                         \
    BRYXCheckGroup {                                                                                                   \
        subject, [] {                                                                                                  \
            using namespace space;                                                                                     \
            return std::vector<const BRYXCheck*>{rows(BRYX_LIST_CHECK)};                                               \
        }()                                                                                                            \
    }

const std::vector<BRYXCheckGroup>& getBRYXChecks() {
    static const std::vector<BRYXCheckGroup> groups{
        BRYX_CHECK_GROUP("Structure", BRYXStructureChecks, BRYX_STRUCTURE_CHECKS),
        BRYX_CHECK_GROUP("Header metadata", BRYXMetadataChecks, BRYX_METADATA_CHECKS),
        BRYX_CHECK_GROUP("One against the other", BRYXCrossChecks, BRYX_CROSS_CHECKS),
        BRYX_CHECK_GROUP("Index tables", BRYXIndexChecks, BRYX_INDEX_CHECKS),
        BRYX_CHECK_GROUP("System items", BRYXSystemChecks, BRYX_SYSTEM_CHECKS),
    };
    return groups;
}

} // namespace bryx
