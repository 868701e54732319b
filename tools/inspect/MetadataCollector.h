#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "inspect/BoundedList.h"
#include "inspect/StructureCollector.h"
#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"

struct FoundModel {
    std::uint64_t partition; ///< offset of its pack, in octets from the first of the file
    MXFMetadataModelHandler::Model model;
};

/// The sets that @p property of @p set refers to, if it owns them.
std::vector<std::shared_ptr<const MetadataRoot>> ownedBy(const MetadataRoot& set, const MXFProperty& property);

/// The value of a dark property as that of any other.
MXFScalar scalarOf(const MetadataRoot::DarkValue& value);

/// Calls @p visit with @p set and all sets that it owns, depth first.
template <class Visit>
void forEachSet(const MetadataRoot& set, const Visit& visit) {
    visit(set);
    for (const MXFProperty* property : set.getDescription().properties()) {
        for (const auto& owned : ownedBy(set, *property)) {
            forEachSet(*owned, visit);
        }
    }
}

/// Collects the models of header metadata.
class MetadataCollector final : public DullMXFMetadataHandler, public MXFMetadataModelHandler {
public:
    using Models = BoundedList<FoundModel, 256>;

    explicit MetadataCollector(const StructureCollector& structure) : structure_(structure) {}

    void startMetadata() override { inRegion_ = true; }
    void endMetadata() override;
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& set) override { sets_.push_back(std::move(set)); }
    void model(const Model& model) override;

    /// Reading has ended, perhaps within header metadata. What was read of that makes a model too; it has no error
    /// handler, since much is bound to be missing.
    void readingEnded();

    const Models& models() const { return models_; }

private:
    const StructureCollector& structure_;
    bool inRegion_ = false;
    std::vector<MXFPrimedSet> sets_; ///< of the region being read
    std::uint64_t setCount_ = 0;     ///< in all models
    Models models_;
};
