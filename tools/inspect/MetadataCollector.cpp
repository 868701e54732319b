#include "inspect/MetadataCollector.h"

#include <utility>

#include "mxf/metadata/parsing/MXFMetadataModelParser.h"

namespace {

constexpr std::uint64_t maxSets = 200000;

} // namespace

std::vector<std::shared_ptr<const MetadataRoot>> ownedBy(const MetadataRoot& set, const MXFProperty& property) {
    std::vector<std::shared_ptr<const MetadataRoot>> sets;
    if (property.kind() == MXFProperty::Kind::StrongReference) {
        mxfutil::forEachReference(property.value(set), [&](const auto& target) { sets.push_back(target); });
    }
    return sets;
}

MXFScalar scalarOf(const MetadataRoot::DarkValue& value) {
    return std::visit([](const auto& content) { return MXFScalar(content); }, value);
}

void MetadataCollector::endMetadata() {
    inRegion_ = false;
    sets_.clear();
}

void MetadataCollector::model(const Model& model) {
    for (const auto& root : model) {
        forEachSet(*root, [&](const MetadataRoot&) { ++setCount_; });
    }
    if (setCount_ <= maxSets) {
        models_.add({structure_.partitionOffset(), model});
    } else {
        models_.omit();
    }
}

void MetadataCollector::readingEnded() {
    if (!inRegion_) {
        return;
    }
    const auto factory = createBRYXDefaultMetadataFactory();
    MXFMetadataModelParser parser(*factory, *this);
    std::vector<MXFPrimedSet> sets = std::move(sets_);
    parser.startMetadata();
    for (MXFPrimedSet& set : sets) {
        if (parser.handlesSet(set.key)) {
            parser.primedSet(set);
        }
    }
    parser.endMetadata();
}
