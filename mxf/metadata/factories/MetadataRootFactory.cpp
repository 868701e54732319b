#include "mxf/metadata/factories/MetadataRootFactory.h"

#include <new>

#include "klv/ValueCoding.h"
#include "mxf/metadata/factories/MXFMetadataFindings.h"
#include "mxf/metadata/model/MXFOrderHint.h"
#include "util/assertion_failure.h"

namespace bryx {

namespace findings = mxfutil::findings;

namespace {

const KLVKey& instanceUIDLabel() {
    static const KLVKey label = MXFPropertyLabel(0x3C0A).label();
    return label;
}

constexpr const char* instanceUIDName = "MetadataRoot.instanceUID";

/// The longest value of an item whose length field has two octets.
constexpr std::size_t longestItem = 65535;

/// The key of a set whose item lengths are BER lengths (ST 336).
KLVKey withBERLengths(KLVKey key) {
    key[5] = 0x13;
    return key;
}

} // namespace

MetadataRootFactory::MetadataRootFactory() : setPrimer_{{instanceUIDLabel(), 0x3C0A}} {}

MetadataRootFactory::MetadataRootFactory(const MetadataRootFactory&) = default;

MetadataRootFactory::~MetadataRootFactory() = default;

void MetadataRootFactory::setErrorHandler(std::shared_ptr<ErrorHandler> errorHandler) {
    errorHandler_ = std::move(errorHandler);
}

bool MetadataRootFactory::allowBERLengths() const {
    return false;
}

bool MetadataRootFactory::canParse(const KLVKey& setKey) {
    const KLVKey& own = getSetKey();
    return setKey == own || (allowBERLengths() && own[5] == 0x53 && setKey == withBERLengths(own));
}

const std::type_info& MetadataRootFactory::getType(const KLVKey& setKey) {
    util::require(canParse(setKey), "expected set key");
    return getType();
}

bool MetadataRootFactory::canCode(const std::type_info& type) {
    return type == getType();
}

const MXFMetadataFactory::SetPrimer& MetadataRootFactory::getSetPrimer(const std::type_info& type) {
    util::require(canCode(type), "expected type");
    return setPrimer_;
}

const KLVKey& MetadataRootFactory::getSetKey(const std::type_info& type) {
    util::require(canCode(type), "expected type");
    return getSetKey();
}

void MetadataRootFactory::firePropertyRequiredError(const std::string& name) {
    klvutil::report(errorHandler_.get(), findings::missingProperty, name);
}

void MetadataRootFactory::firePropertyInternalizeError(const std::string& name, const std::exception& reason) {
    klvutil::report(errorHandler_.get(), findings::invalidProperty, name, reason.what());
}

std::pair<std::shared_ptr<MetadataRoot>, MXFPendingReferences> MetadataRootFactory::parse(const MXFPrimedSet& set) {
    std::pair<std::shared_ptr<MetadataRoot>, MXFPendingReferences> result;
    result.first = create();
    parseProperties(set.properties, result.first, result.second);
    return result;
}

void MetadataRootFactory::parseProperties(const MXFProperties& properties, const std::shared_ptr<MetadataRoot>& object,
                                          MXFPendingReferences& /*pending*/) {
    const auto instanceUID = properties.find(instanceUIDLabel());
    if (instanceUID == properties.end()) {
        firePropertyRequiredError(instanceUIDName);
    } else {
        try {
            object->setInstanceUID(klvutil::readValue<MXFUID>(instanceUID->second));
        } catch (const std::length_error& error) {
            firePropertyInternalizeError(instanceUIDName, error);
        }
    }
    for (const auto& [label, octets] : properties) {
        if (setPrimer_.find(label) == setPrimer_.end()) {
            object->setDarkProperty(label, octets);
        }
    }
}

void MetadataRootFactory::addToPrimer(const PropertyList& list) {
    for (const auto& property : list) {
        setPrimer_.emplace(property->label(), property->tag());
    }
}

void MetadataRootFactory::parseList(const PropertyList& list, const MXFProperties& properties,
                                    const std::shared_ptr<MetadataRoot>& object, MXFPendingReferences& pending) {
    for (const auto& property : list) {
        object->forgetReading(property->label());
        const auto found = properties.find(property->label());
        if (found == properties.end()) {
            if (property->isRequired()) {
                firePropertyRequiredError(property->fullName());
                object->setMissing(property->label());
            }
            continue;
        }
        try {
            property->read(object, found->second, pending);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& error) {
            firePropertyInternalizeError(property->fullName(), error);
            object->setDarkProperty(property->label(), found->second);
        }
    }
}

std::pair<MXFPrimedSet, MXFOwnedSets> MetadataRootFactory::code(std::shared_ptr<const MetadataRoot> set) {
    const MetadataRoot* const object = set.get();
    util::require(object != nullptr && canCode(typeid(*object)), "expected type");
    std::pair<MXFPrimedSet, MXFOwnedSets> result;
    MXFPrimedSet& coded = result.first;
    coded.key = getSetKey();
    codeProperties(set, coded.properties, result.second);
    for (const auto& [label, octets] : coded.properties) {
        if (octets.size() > longestItem && label != mxfutil::orderHintLabel && !mxfutil::isPrivateLabel(label)) {
            util::require(allowBERLengths(), "property fits item length");
            coded.key = withBERLengths(getSetKey());
        }
    }
    return result;
}

void MetadataRootFactory::codeProperties(const std::shared_ptr<const MetadataRoot>& object, MXFProperties& properties,
                                         MXFOwnedSets& owned) {
    properties[instanceUIDLabel()] = klvutil::writeValue(object->getInstanceUID());
    for (auto dark = object->beginDarkProperties(); dark != object->endDarkProperties(); ++dark) {
        if (const auto* octets = std::get_if<std::vector<std::uint8_t>>(&dark->second)) {
            properties[dark->first] = *octets;
        } else {
            const auto& target = std::get<std::shared_ptr<MetadataRoot>>(dark->second);
            util::require(target != nullptr, "MetadataRoot.referenceDarkProperty is present");
            properties[dark->first] = klvutil::writeValue(target->getInstanceUID());
            owned.push_back(target);
        }
    }
}

void MetadataRootFactory::codeList(const PropertyList& list, const MetadataRoot& object, MXFProperties& properties,
                                   MXFOwnedSets& owned) {
    for (const auto& property : list) {
        if (property->isCodable(object)) {
            property->code(object, properties[property->label()], owned);
        } else if (property->isRequired() && !property->holdsValue(object) &&
                   !object.hasDarkProperty(property->label())) {
            property->failPresent(); // a reference that was never there
        }
    }
}

} // namespace bryx
