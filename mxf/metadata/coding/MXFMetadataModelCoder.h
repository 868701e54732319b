#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "mxf/metadata/factories/MXFMetadataFactory.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/metadata/model/MXFMetadataModelHandler.h"
#include "util/Api.h"

namespace bryx {

/// Makes a primer and primed sets of a model, the reverse of MXFMetadataModelParser: has a factory code each set, and
/// gives tags to the properties that have none of their own.
///
/// Sets come depth first: each before the sets that it owns, all of those before its next sibling. The next handler
/// gets nothing before the whole model has been coded.
///
/// A dark property with the label mxfutil::orderHintLabel fixes an order of sets: its value is a list of labels, 16
/// octets each, and the sets that have a property with one of them change places among themselves, so that they come in
/// the order of the list. Labels made for that alone belong to the private family that mxfutil::isPrivateLabel() tells;
/// neither they nor the hint are written.
class BRYX_API MXFMetadataModelCoder : public MXFMetadataModelHandler {
public:
    /// The tags of all properties that the sets have; 0 for one that still needs a tag.
    using CombinedPrimer = std::map<KLVKey, std::uint16_t>;

    /// @param next not owned
    /// @param factory not owned
    MXFMetadataModelCoder(MXFMetadataHandler& next, MXFMetadataFactory& factory);
    ~MXFMetadataModelCoder() override;
    MXFMetadataModelCoder(const MXFMetadataModelCoder&) = delete;
    MXFMetadataModelCoder& operator=(const MXFMetadataModelCoder&) = delete;

    void startMetadata() override;
    void endMetadata() override;

    /// Codes one model: a root alone (mxfutil::rootAlone() makes one of a model as it was read).
    ///
    /// Requires "valid model", "can handle object" and "unique MetadataRoot.instanceUID" of each set, "consistent primer
    /// entry" of each property, "single primed set order" and "no repeated properties in order hint", "dynamic tag
    /// available", and what MXFMetadataFactory::code() does. Weak references to sets outside the model are left out;
    /// references that were read and are not resolved are coded as they were.
    void model(const Model& model) override;

    /// Adds the entries of @p setPrimer that @p set makes use of to @p combined. A property with a tag from 0x8000 up
    /// that another one has already is left to be given one. Requires "consistent primer entry": that no property has
    /// two tags, and no other tag two properties.
    static void insertPrimerForSet(CombinedPrimer& combined, const MXFMetadataFactory::SetPrimer& setPrimer,
                                   const MXFPrimedSet& set);

protected:
    /// Gives a tag to each entry of @p primer that has none: those from 0x8000 up that are free, in the order of the
    /// labels, so that the same model gets the same tags each time. Requires "dynamic tag available".
    /// @return the entries in the order of their tags
    virtual MXFMetadataHandler::Primer allocateDynamicTags(const CombinedPrimer& primer);

private:
    MXFMetadataHandler& next_;
    MXFMetadataFactory& factory_;
};

namespace mxfutil {

/// The root of a model as it was read, for coding it.
/// @param[out] leftOut if not null, gets the sets that nothing owns, and that are not coded
BRYX_API MXFMetadataModelHandler::Model rootAlone(const MXFMetadataModelHandler::Model& model,
                                                  MXFMetadataModelHandler::Model* leftOut = nullptr);

} // namespace mxfutil

} // namespace bryx
