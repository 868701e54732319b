#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include <boost/optional.hpp>

#include "mxf/structure/MXFStructureHandler.h"
#include "validation/internal/BRYXCrossValidator.h"

namespace bryx {

/// Checks of partition packs and the random index what MXFStructureValidator, behind which it stands, does not; and passes
/// them on.
class BRYXStructureValidator final : public MXFStructureHandler, public BRYXValidator {
public:
    /// @param next not owned, as @p cross
    BRYXStructureValidator(MXFStructureHandler& next, BRYXCrossValidator& cross, BRYXValidationMode::Enum mode)
        : BRYXValidator(mode), next_(next), cross_(cross) {}

    void runIn(std::uint64_t length) override;
    void startStructure() override;
    void endStructure() override;
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override;
    void endPartition(const KLVKey& key) override;
    void randomIndex(const MXFRandomIndex& index) override;

private:
    /// What later packs are compared with.
    struct First {
        KLVKey operationalPattern;
        std::uint32_t kagSize = 0;
        bool isClosed = false;
        std::uint8_t registerVersion = 0; ///< in the key
        std::uint16_t majorVersion = 0;
        std::uint16_t minorVersion = 0;
    };

    void checkStatus(const KLVKey& key, const MXFPartitionPack& pack);
    void checkLabels(const MXFPartitionPack& pack, bool isClosed);
    void checkVersions(const KLVKey& key, const MXFPartitionPack& pack);
    void checkSIDs(const KLVKey& key, const MXFPartitionPack& pack) const;

    MXFStructureHandler& next_;
    BRYXCrossValidator& cross_;
    boost::optional<First> first_;
    std::set<KLVKey> containers_;             ///< all labels so far
    std::map<KLVKey, std::uint8_t> versions_; ///< of these and of the pattern, which comparing leaves out
    bool containersAreFinal_ = false;
    boost::optional<std::uint64_t> openMetadata_; ///< the pack whose header metadata, the last so far, may still change
    std::uint64_t position_ = 0;                  ///< of the pack of the current partition
    std::uint32_t kagSize_ = 0;                   ///< of that
};

} // namespace bryx
