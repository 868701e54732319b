#include "sdk/BRYXWriter.h"

#include "mxf/metadata/coding/MXFMetadataModelCoder.h"
#include "mxf/metadata/structural/Preface.h"
#include "sdk/BRYXMetadataFactory.h"
#include "sdk/internal/BRYXWriterImpl.h"
#include "sdk/internal/VerifyingBRYXWriterImpl.h"
#include "util/assertion_failure.h"

namespace bryx {

BRYXWriter::~BRYXWriter() = default;
VerifyingBRYXWriter::~VerifyingBRYXWriter() = default;

BRYXHeaderMetadata toBRYXHeaderMetadata(std::shared_ptr<Preface> root, std::shared_ptr<MXFMetadataFactory> factory) {
    util::require(root != nullptr, "valid model");
    if (factory == nullptr) {
        factory = std::make_shared<BRYXMetadataFactory>();
    }
    BRYXHeaderMetadata metadata{root->getOperationalPattern(), root->getEssenceContainers(), {}};
    metadata.send = [root = std::move(root), factory = std::move(factory)](MXFMetadataHandler& handler) {
        MXFMetadataModelCoder coder(handler, *factory);
        coder.startMetadata();
        coder.model({root});
        coder.endMetadata();
    };
    return metadata;
}

std::shared_ptr<BRYXWriter> createBRYXWriter(std::shared_ptr<std::ostream> stream) {
    return std::make_shared<BRYXWriterImpl>(std::move(stream));
}

std::shared_ptr<VerifyingBRYXWriter> createVerifyingBRYXWriter(std::shared_ptr<std::iostream> stream) {
    return std::make_shared<VerifyingBRYXWriterImpl>(std::move(stream));
}

} // namespace bryx
