#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/metadata/model/MXFMetadataModelHandler.h"
#include "validation/internal/BRYXCrossValidator.h"

namespace bryx {

class Preface;

/// Checks the sets of header metadata and the model that they make, and passes them on. It wants all sets, so as to know
/// which there are; the next handler gets those that it wants.
class BRYXMetadataValidator final : public MXFMetadataHandler, public MXFMetadataModelHandler, public BRYXValidator {
public:
    /// @param next not owned, as @p cross
    BRYXMetadataValidator(MXFMetadataHandler& next, BRYXCrossValidator& cross, BRYXValidationMode::Enum mode);

    void startMetadata() override;
    void endMetadata() override;
    void primer(const Primer& primer) override { next_.primer(primer); }
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& set) override;
    void unhandledSet(const MXFPrimedSet& set) override { next_.unhandledSet(set); }
    void model(const Model& model) override;

private:
    /// A set in a region.
    struct Read {
        std::uint64_t digest;
        std::uint64_t position;
    };
    using Region = std::map<MXFUID, Read>;

    void checkReferences(const MetadataRoot& set, const std::set<MXFUID>& generations) const;
    void checkModel(const Preface& preface);
    void checkRepetition();

    MXFMetadataHandler& next_;
    MXFMetadataModelHandler* nextModel_; ///< the same, if it wants models
    BRYXCrossValidator& cross_;
    std::uint64_t start_ = 0; ///< of the region
    bool hasModel_ = false;
    Region region_;
    Region complete_; ///< the last region that was final, and with nothing missing
};

} // namespace bryx
