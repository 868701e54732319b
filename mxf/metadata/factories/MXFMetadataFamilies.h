#pragma once

#include <memory>
#include <vector>

#include "mxf/metadata/factories/MXFMetadataModelFactory.h"
#include "util/Api.h"

namespace bryx {

class MetadataRootFactory;

/// @file
/// The factories of the families of sets that the library knows. A caller that needs several of them lists them in an
/// MXFMetadataModelFactory of its own.

/// A family of classes, each with its own factory. A copy has factories of its own.
class BRYX_API MXFMetadataFamily : public MXFMetadataModelFactory {
public:
    MXFMetadataFamily(const MXFMetadataFamily& other);
    MXFMetadataFamily& operator=(const MXFMetadataFamily&) = delete;
    ~MXFMetadataFamily() override;

    const std::vector<std::shared_ptr<MXFMetadataFactory>>& getFactories() override { return factories_; }

protected:
    explicit MXFMetadataFamily(const std::vector<std::shared_ptr<MetadataRootFactory>>& factories);

private:
    std::vector<std::shared_ptr<MetadataRootFactory>> own_;
    std::vector<std::shared_ptr<MXFMetadataFactory>> factories_; ///< the same
};

/// The structural sets of ST 377-1, its generic descriptors, and the labels of multichannel audio (ST 377-4).
class BRYX_API MXFFormatMetadataModelFactory : public MXFMetadataFamily {
public:
    MXFFormatMetadataModelFactory();
};

/// The descriptors of MPEG-2 video, MPEG-4 visual, AVC and MPEG audio (ST 381-1, -2, -3).
class BRYX_API MXFMPEGMetadataModelFactory : public MXFMetadataFamily {
public:
    MXFMPEGMetadataModelFactory();
};

/// The descriptors of WAVE and AES3 sound (ST 382).
class BRYX_API MXFAES3MetadataModelFactory : public MXFMetadataFamily {
public:
    MXFAES3MetadataModelFactory();
};

/// The descriptions of AS-11.
class BRYX_API MXFAMWAMetadataModelFactory : public MXFMetadataFamily {
public:
    MXFAMWAMetadataModelFactory();
};

/// Acquisition metadata (RDD 18).
class BRYX_API MXFAcquisitionMetadataModelFactory : public MXFMetadataFamily {
public:
    MXFAcquisitionMetadataModelFactory();
};

/// Text-based descriptions (RP 2057).
class BRYX_API MXFTextBasedDMModelFactory : public MXFMetadataFamily {
public:
    MXFTextBasedDMModelFactory();
};

/// The descriptors of VBI and ANC data (ST 436-1).
class BRYX_API MXFVBIANCMetadataModelFactory : public MXFMetadataFamily {
public:
    MXFVBIANCMetadataModelFactory();
};

} // namespace bryx
