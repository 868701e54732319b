#include "sdk/BRYXMetadataFactory.h"

#include <utility>

namespace bryx {

BRYXMetadataFactory::BRYXMetadataFactory() {
    add(std::make_shared<MXFFormatMetadataModelFactory>());
    add(std::make_shared<MXFMPEGMetadataModelFactory>());
    add(std::make_shared<MXFAES3MetadataModelFactory>());
    add(std::make_shared<MXFAMWAMetadataModelFactory>());
    add(std::make_shared<MXFAcquisitionMetadataModelFactory>());
    add(std::make_shared<MXFTextBasedDMModelFactory>());
    add(std::make_shared<MXFVBIANCMetadataModelFactory>());
}

BRYXMetadataFactory::BRYXMetadataFactory(const BRYXMetadataFactory& other) : MXFMetadataModelFactory(other) {
    for (const auto& family : other.families_) {
        add(std::make_shared<MXFMetadataFamily>(*family));
    }
}

BRYXMetadataFactory::~BRYXMetadataFactory() = default;

void BRYXMetadataFactory::add(std::shared_ptr<MXFMetadataFamily> family) {
    factories_.push_back(family);
    families_.push_back(std::move(family));
}

std::shared_ptr<MXFMetadataFactory> createBRYXDefaultMetadataFactory() {
    return std::make_shared<BRYXMetadataFactory>();
}

} // namespace bryx
