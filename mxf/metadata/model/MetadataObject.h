#pragma once

#include "mxf/metadata/model/MetadataRoot.h"

/// A set of ST 377-1 or of descriptive metadata.
class BRYX_API MetadataObject : public MetadataRoot {
public:
    ~MetadataObject() override;

    /// The generation of the file in which the set was last changed: the thisGenerationUID of an Identification.
    /// Optional; getting it when it is absent fails the requirement "MetadataObject.generationUID is present".
    const MXFUID& getGenerationUID() const;
    void setGenerationUID(const MXFUID& generationUID) { generationUID_ = generationUID; }
    bool hasGenerationUID() const noexcept { return generationUID_.has_value(); }
    void removeGenerationUID() noexcept { generationUID_ = boost::none; }

protected:
    MetadataObject() = default;

private:
    boost::optional<MXFUID> generationUID_;
};

/// A set of acquisition metadata (RDD 18), which carries no generation.
class BRYX_API AcquisitionMetadataObject : public MetadataRoot {
public:
    ~AcquisitionMetadataObject() override;

protected:
    AcquisitionMetadataObject() = default;
};
