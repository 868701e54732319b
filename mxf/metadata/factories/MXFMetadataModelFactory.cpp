#include "mxf/metadata/factories/MXFMetadataModelFactory.h"

#include <utility>

#include "klv/ValueCoding.h"
#include "mxf/metadata/factories/MXFMetadataFindings.h"
#include "mxf/metadata/model/dangling_ref.h"
#include "util/assertion_failure.h"

namespace bryx {

MXFMetadataModelFactory::MXFMetadataModelFactory() = default;

// The cache leads to the factories of the other, and is filled again.
MXFMetadataModelFactory::MXFMetadataModelFactory(const MXFMetadataModelFactory& other)
    : MXFMetadataFactory(other), errorHandler_(other.errorHandler_) {}

MXFMetadataModelFactory::~MXFMetadataModelFactory() = default;

void MXFMetadataModelFactory::setErrorHandler(std::shared_ptr<ErrorHandler> errorHandler) {
    for (const auto& factory : getFactories()) {
        util::require(factory != nullptr, "factory is present");
        factory->setErrorHandler(errorHandler);
    }
    errorHandler_ = std::move(errorHandler);
}

MXFMetadataFactory* MXFMetadataModelFactory::find(const KLVKey& setKey) {
    const auto cached = cache_.find(setKey);
    if (cached != cache_.end()) {
        return cached->second.get();
    }
    for (const auto& factory : getFactories()) {
        util::require(factory != nullptr, "factory is present");
        if (factory->canParse(setKey)) {
            cache_.emplace(setKey, factory);
            return factory.get();
        }
    }
    return nullptr;
}

MXFMetadataFactory& MXFMetadataModelFactory::forKey(const KLVKey& setKey) {
    MXFMetadataFactory* const factory = find(setKey);
    util::require(factory != nullptr, "can handle set key");
    return *factory;
}

MXFMetadataFactory* MXFMetadataModelFactory::find(const std::type_info& type) {
    for (const auto& factory : getFactories()) {
        util::require(factory != nullptr, "factory is present");
        if (factory->canCode(type)) {
            return factory.get();
        }
    }
    return nullptr;
}

MXFMetadataFactory& MXFMetadataModelFactory::forType(const std::type_info& type) {
    MXFMetadataFactory* const factory = find(type);
    util::require(factory != nullptr, "can handle type");
    return *factory;
}

bool MXFMetadataModelFactory::canParse(const KLVKey& setKey) {
    return find(setKey) != nullptr;
}

std::pair<std::shared_ptr<MetadataRoot>, MXFPendingReferences> MXFMetadataModelFactory::parse(const MXFPrimedSet& set) {
    auto result = forKey(set.key).parse(set);
    const std::shared_ptr<MetadataRoot>& object = result.first;
    util::require(object != nullptr, "factory has created object");
    for (auto dark = object->beginDarkProperties(); dark != object->endDarkProperties(); ++dark) {
        const auto* const octets = std::get_if<std::vector<std::uint8_t>>(&dark->second);
        if (octets == nullptr || !isReferenceDarkProperty(set.key, dark->first)) {
            continue;
        }
        try {
            result.second.emplace(klvutil::readValue<MXFUID>(*octets),
                                  std::make_shared<dangling_dark_ref_t<MetadataRoot>>(object, dark->first));
        } catch (const std::length_error& error) {
            fireReferenceDarkPropertyInternalizeError(dark->first, error);
        }
    }
    return result;
}

const std::type_info& MXFMetadataModelFactory::getType(const KLVKey& setKey) {
    return forKey(setKey).getType(setKey);
}

bool MXFMetadataModelFactory::canCode(const std::type_info& type) {
    return find(type) != nullptr;
}

std::pair<MXFPrimedSet, MXFOwnedSets> MXFMetadataModelFactory::code(std::shared_ptr<const MetadataRoot> set) {
    const MetadataRoot* const object = set.get();
    util::require(object != nullptr, "can handle type");
    return forType(typeid(*object)).code(std::move(set));
}

const MXFMetadataFactory::SetPrimer& MXFMetadataModelFactory::getSetPrimer(const std::type_info& type) {
    return forType(type).getSetPrimer(type);
}

const KLVKey& MXFMetadataModelFactory::getSetKey(const std::type_info& type) {
    return forType(type).getSetKey(type);
}

bool MXFMetadataModelFactory::isReferenceDarkProperty(const KLVKey& /*setKey*/, const KLVKey& /*propertyKey*/) {
    return false;
}

void MXFMetadataModelFactory::fireReferenceDarkPropertyInternalizeError(const KLVKey& key,
                                                                        const std::exception& reason) {
    klvutil::report(errorHandler_.get(), mxfutil::findings::invalidReferenceDarkProperty, toString(key), reason.what());
}

} // namespace bryx
