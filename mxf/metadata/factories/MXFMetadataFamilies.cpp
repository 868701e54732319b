#include "mxf/metadata/factories/MXFMetadataFamilies.h"

#include <typeinfo>

#include "mxf/metadata/MXFMetadataSets.h"
#include "mxf/metadata/factories/MXFSetFactory.h"

namespace bryx {

// The classes of each family, in the order in which their factories are asked. To add a class, add it here.

#define BRYX_FORMAT_SETS(ROW)                                                                                          \
    ROW(Preface)                                                                                                       \
    ROW(Identification)                                                                                                \
    ROW(ContentStorage)                                                                                                \
    ROW(EssenceContainerData)                                                                                          \
    ROW(NetworkLocator)                                                                                                \
    ROW(TextLocator)                                                                                                   \
    ROW(MaterialPackage)                                                                                               \
    ROW(SourcePackage)                                                                                                 \
    ROW(TimelineTrack)                                                                                                 \
    ROW(EventTrack)                                                                                                    \
    ROW(StaticTrack)                                                                                                   \
    ROW(Sequence)                                                                                                      \
    ROW(SourceClip)                                                                                                    \
    ROW(Filler)                                                                                                        \
    ROW(TimecodeComponent)                                                                                             \
    ROW(CommentMarker)                                                                                                 \
    ROW(DMSegment)                                                                                                     \
    ROW(DMSourceClip)                                                                                                  \
    ROW(MultipleDescriptor)                                                                                            \
    ROW(CDCIPictureDescriptor)                                                                                         \
    ROW(RGBAPictureDescriptor)                                                                                         \
    ROW(SoundDescriptor)                                                                                               \
    ROW(DataDescriptor)                                                                                                \
    ROW(AudioChannelLabelSubDescriptor)                                                                                \
    ROW(SoundfieldGroupLabelSubDescriptor)                                                                             \
    ROW(GroupOfSoundfieldGroupsLabelSubDescriptor)                                                                     \
    ROW(ContainerConstraintsSubDescriptor)

#define BRYX_MPEG_SETS(ROW)                                                                                            \
    ROW(MPEGVideoDescriptor)                                                                                           \
    ROW(MPEG4VideoSubDescriptor)                                                                                       \
    ROW(AVCVideoSubDescriptor)                                                                                         \
    ROW(MPEGAudioDescriptor)

#define BRYX_AES3_SETS(ROW)                                                                                            \
    ROW(WaveAudioDescriptor)                                                                                           \
    ROW(AES3AudioDescriptor)

#define BRYX_AMWA_SETS(ROW)                                                                                            \
    ROW(AS11CoreFramework)                                                                                             \
    ROW(AS11UKDPPFramework)                                                                                            \
    ROW(AS11SegmentationFramework)

#define BRYX_ACQUISITION_SETS(ROW)                                                                                     \
    ROW(LensUnitMetadata)                                                                                              \
    ROW(CameraUnitMetadata)                                                                                            \
    ROW(UserDefinedAcquisitionMetadata)

#define BRYX_TEXT_BASED_SETS(ROW)                                                                                      \
    ROW(TextBasedDMFramework)                                                                                          \
    ROW(GenericStreamTextBasedSet)                                                                                     \
    ROW(UTF8TextBasedSet)                                                                                              \
    ROW(UTF16TextBasedSet)

#define BRYX_VBIANC_SETS(ROW)                                                                                          \
    ROW(VBIDataDescriptor)                                                                                             \
    ROW(ANCDataDescriptor)

// Sets are made here, and find their descriptions here, also those that an application makes.
#define BRYX_DEFINE_SET(Set)                                                                                           \
    template BRYX_API std::shared_ptr<Set> mxfutil::createSet<Set>();                                                  \
    template BRYX_API const MXFSetDescription& mxfutil::describeSet<Set>();

#define BRYX_MAKE_FACTORY(Set) std::make_shared<Set##Factory>(),

#define BRYX_DEFINE_FAMILY(Family, SETS)                                                                               \
    SETS(BRYX_DEFINE_SET)                                                                                              \
    Family::Family() : MXFMetadataFamily({SETS(BRYX_MAKE_FACTORY)}) {}

BRYX_DEFINE_FAMILY(MXFFormatMetadataModelFactory, BRYX_FORMAT_SETS)
BRYX_DEFINE_FAMILY(MXFMPEGMetadataModelFactory, BRYX_MPEG_SETS)
BRYX_DEFINE_FAMILY(MXFAES3MetadataModelFactory, BRYX_AES3_SETS)
BRYX_DEFINE_FAMILY(MXFAMWAMetadataModelFactory, BRYX_AMWA_SETS)
BRYX_DEFINE_FAMILY(MXFAcquisitionMetadataModelFactory, BRYX_ACQUISITION_SETS)
BRYX_DEFINE_FAMILY(MXFTextBasedDMModelFactory, BRYX_TEXT_BASED_SETS)
BRYX_DEFINE_FAMILY(MXFVBIANCMetadataModelFactory, BRYX_VBIANC_SETS)

MXFMetadataFamily::MXFMetadataFamily(const std::vector<std::shared_ptr<MetadataRootFactory>>& factories)
    : own_(factories), factories_(own_.begin(), own_.end()) {}

MXFMetadataFamily::MXFMetadataFamily(const MXFMetadataFamily& other) : MXFMetadataModelFactory(other) {
    for (const auto& factory : other.own_) {
        // A factory of a class derived by an application does not clone itself, and is shared.
        const std::shared_ptr<MetadataRootFactory> copy = factory->clone();
        const MetadataRootFactory& original = *factory;
        const MetadataRootFactory& cloned = *copy;
        own_.push_back(typeid(cloned) == typeid(original) ? copy : factory);
    }
    factories_.assign(own_.begin(), own_.end());
}

MXFMetadataFamily::~MXFMetadataFamily() = default;

} // namespace bryx
