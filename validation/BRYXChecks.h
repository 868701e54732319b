#pragma once

#include <vector>

#include "klv/Finding.h"
#include "util/Api.h"
#include "validation/BRYXValidationMode.h"

/// @file
/// The checks that the public reader makes of a file beyond what its parsers need. Each is declared here, in one row;
/// docs/validation.md is made of these rows.

namespace bryx {

/// One check.
struct BRYXCheck {
    const char* name;              ///< of the constant
    BRYXValidationMode::Enum mode; ///< the lowest that makes it
    klvutil::FindingKind finding;  ///< what is reported when it fails: identifier, level and message
    const char* clause;            ///< what says that it must hold
};

/// A check whose failure is reported as a klvutil::Finding, or as a klvutil::SubjectFinding.
template <class Finding>
struct BRYXCheckOf : BRYXCheck {
    /// Requires of @p check's message what the constructor of @p Finding does.
    constexpr explicit BRYXCheckOf(const BRYXCheck& check) : BRYXCheck(check) { static_cast<void>(report()); }

    /// What is reported when the check fails.
    constexpr Finding report() const { return Finding(finding); }
};

/// Checks of one subject.
struct BRYXCheckGroup {
    const char* subject;
    std::vector<const BRYXCheck*> checks;
};

/// All checks.
BRYX_API const std::vector<BRYXCheckGroup>& getBRYXChecks();

// NOLINTBEGIN(bugprone-macro-parentheses): a name cannot have parentheses

/// Turns one row of a table of checks into the constant of its name.
#define BRYX_DEFINE_CHECK(name, base, index, mode, level, message, clause)                                             \
    inline constexpr ::bryx::BRYXCheckOf<::bryx::klvutil::FindingOf<::bryx::klvutil::countSubjects(message)>> name{    \
        {#name,                                                                                                        \
         ::bryx::BRYXValidationMode::mode,                                                                             \
         {::bryx::klvutil::findingId(base, index), ::bryx::klvutil::FindingLevel::level, message},                     \
         clause}};

// NOLINTEND(bugprone-macro-parentheses)

/// Of partition packs, the regions that they announce, the random index.
namespace BRYXStructureChecks {

/// Of the identifiers.
inline constexpr util::uuid base{
    {0xb3, 0x77, 0x23, 0x35, 0xc1, 0x6a, 0x42, 0xf8, 0x87, 0x48, 0x80, 0xdd, 0x9d, 0x26, 0xbd, 0x00}};

/// The rows: name, base, index, mode, level, message; "%" stands for what the finding is about, clause.
#define BRYX_STRUCTURE_CHECKS(ROW)                                                                                     \
    ROW(invalidOperationalPattern, base, 1, Standard, error, "invalid operationalPattern", "ST 377-1, Partition Pack") \
    ROW(inconsistentOperationalPattern, base, 2, Standard, error,                                                      \
        "operationalPattern differs from that of the header partition", "ST 377-1, Partition Pack")                    \
    ROW(inconsistentEssenceContainers, base, 3, Standard, error,                                                       \
        "essenceContainers differ from those of the partitions before", "ST 377-1, Partition Pack")                    \
    ROW(neverClosed, base, 4, Standard, warning,                                                                       \
        "file was never closed: its last header metadata is in an open partition", "ST 377-1, Partition Status")       \
    ROW(openFooter, base, 5, Standard, error, "open footer partition", "ST 377-1, Partition Status")                   \
    ROW(openAfterClosed, base, 6, Strict, warning, "open partition after a closed header partition",                   \
        "ST 377-1, Partition Status")                                                                                  \
    ROW(incorrectBodyOffset, base, 7, Lenient, error, "incorrect bodyOffset", "ST 377-1, Partition Pack")              \
    ROW(packOffKAG, base, 8, Strict, warning, "partition does not end on its KAG", "ST 377-1, KLV Alignment Grid")     \
    ROW(inconsistentKAGSize, base, 9, Strict, warning, "kagSize differs from that of the header partition",            \
        "ST 377-1, KLV Alignment Grid")                                                                                \
    ROW(randomIndexOrder, base, 10, Standard, warning, "random index is not in the order of the file",                 \
        "ST 377-1, Random Index Pack")                                                                                 \
    ROW(missingHeaderMetadata, base, 11, Lenient, error, "missing header metadata in the header partition",            \
        "ST 377-1, Header Metadata")                                                                                   \
    ROW(genericStreamWithoutSID, base, 12, Standard, error, "generic stream partition without bodySID", "ST 410")      \
    ROW(sharedBodySID, base, 13, Standard, error, "bodySID of both a generic stream and an essence container",         \
        "ST 410")                                                                                                      \
    ROW(sharedSID, base, 14, Strict, warning, "indexSID is a bodySID as well", "ST 377-1, Stream IDs")                 \
    ROW(inconsistentVersions, base, 15, Strict, warning,                                                               \
        "register version in key or labels differs from that in the header partition", "ST 377-1, Partition Pack")     \
    ROW(inconsistentFormatVersion, base, 16, Standard, warning,                                                        \
        "majorVersion and minorVersion differ from those of the header partition", "ST 377-1, Partition Pack")

BRYX_STRUCTURE_CHECKS(BRYX_DEFINE_CHECK)

} // namespace BRYXStructureChecks

/// Of the sets of header metadata and what they say of one another.
namespace BRYXMetadataChecks {

/// Of the identifiers.
inline constexpr util::uuid base{
    {0xee, 0x8a, 0x5a, 0xb4, 0xa0, 0xf3, 0x4a, 0x73, 0xbf, 0xf5, 0x8e, 0xaf, 0x8d, 0x70, 0x45, 0x00}};

/// The rows: name, base, index, mode, level, message; "%" stands for what the finding is about, clause.
#define BRYX_METADATA_CHECKS(ROW)                                                                                      \
    ROW(missingPreface, base, 1, Lenient, error, "first set is not a Preface", "ST 377-1, Preface")                    \
    ROW(missingIdentification, base, 2, Standard, error, "missing Identification", "ST 377-1, Identification")         \
    ROW(missingMaterialPackage, base, 3, Standard, error, "missing MaterialPackage", "ST 377-1, Material Package")     \
    ROW(missingFilePackage, base, 4, Standard, error, "missing file package", "ST 377-1, File Package")                \
    ROW(unresolvedStrongReference, base, 5, Lenient, error, "unresolved strong reference %",                           \
        "ST 377-1, Strong References")                                                                                 \
    ROW(unresolvedWeakReference, base, 6, Standard, error, "unresolved weak reference %", "ST 377-1, Weak References") \
    ROW(unknownGeneration, base, 7, Standard, error, "MetadataObject.generationUID names no Identification",           \
        "ST 377-1, Identification")                                                                                    \
    ROW(inconsistentRepetition, base, 8, Standard, error, "repeated header metadata differs",                          \
        "ST 377-1, Header Metadata Repetition")                                                                        \
    ROW(invalidPackageUID, base, 9, Standard, error, "invalid GenericPackage.packageUID",                              \
        "ST 330; ST 377-1, Generic Package")                                                                           \
    ROW(duplicatePackageUID, base, 10, Lenient, error, "duplicate GenericPackage.packageUID",                          \
        "ST 377-1, Generic Package")                                                                                   \
    ROW(packageWithoutTracks, base, 11, Standard, error, "package without tracks", "ST 377-1, Generic Package")        \
    ROW(invalidTrackID, base, 12, Standard, error, "invalid Track.trackID", "ST 377-1, Track")                         \
    ROW(duplicateTrackID, base, 13, Lenient, error, "duplicate Track.trackID", "ST 377-1, Track")                      \
    ROW(duplicateTrackNumber, base, 14, Standard, error, "duplicate Track.trackNumber in a file package",              \
        "ST 379-1; ST 377-1, Track")                                                                                   \
    ROW(invalidEditRate, base, 15, Lenient, error, "invalid % value", "ST 377-1, Track")                               \
    ROW(invalidOrigin, base, 16, Standard, error, "invalid TimelineTrack.origin value", "ST 377-1, Timeline Track")    \
    ROW(originBeyondDuration, base, 17, Standard, warning, "TimelineTrack.origin lies beyond the track",               \
        "ST 377-1, Timeline Track")                                                                                    \
    ROW(invalidDuration, base, 18, Lenient, error, "invalid Component.duration value",                                 \
        "ST 377-1, Structural Component")                                                                              \
    ROW(unknownDuration, base, 19, Standard, warning, "unknown Component.duration in complete header metadata",        \
        "ST 377-1, Partition Status")                                                                                  \
    ROW(inconsistentSequenceDuration, base, 20, Standard, error, "Sequence.duration is not the sum of its components", \
        "ST 377-1, Sequence")                                                                                          \
    ROW(inconsistentDataDefinition, base, 21, Standard, error,                                                         \
        "Component.dataDefinition differs from that of its Sequence", "ST 377-1, Sequence")                            \
    ROW(unequalTracks, base, 22, Strict, warning, "tracks of a package differ in duration", "ST 378")                  \
    ROW(sourceClipBeyondSource, base, 23, Standard, error, "SourceClip exceeds the track that it leads to",            \
        "ST 377-1, Source Clip")                                                                                       \
    ROW(missingSourcePackage, base, 24, Strict, warning,                                                               \
        "SourceReference.sourcePackageID names no package in the file", "ST 377-1, Source Reference")                  \
    ROW(missingSourceTrack, base, 25, Lenient, error, "SourceReference.sourceTrackID names no track",                  \
        "ST 377-1, Source Reference")                                                                                  \
    ROW(inconsistentSourceTrack, base, 26, Standard, error, "SourceClip leads to a track with other data",             \
        "ST 377-1, Source Clip")                                                                                       \
    ROW(inconsistentSourceEnd, base, 27, Standard, warning,                                                            \
        "SourceClip at the end of its chain names a track or a position", "ST 377-1, Source Clip")                     \
    ROW(cyclicSourceChain, base, 28, Lenient, error, "SourceClip leads back to its own package",                       \
        "ST 377-1, Source Reference Chain")                                                                            \
    ROW(inconsistentTimecodeBase, base, 29, Standard, warning,                                                         \
        "TimecodeComponent.roundedTimecodeBase does not fit the edit rate", "ST 377-1, Timecode Component")            \
    ROW(inconsistentDropFrame, base, 30, Standard, error, "TimecodeComponent.dropFrame does not fit the edit rate",    \
        "ST 12-1; ST 377-1, Timecode Component")                                                                       \
    ROW(invalidStartTimecode, base, 31, Standard, error, "invalid TimecodeComponent.startTimecode value",              \
        "ST 377-1, Timecode Component")                                                                                \
    ROW(unknownLinkedPackage, base, 32, Lenient, error, "EssenceContainerData.linkedPackageUID names no file package", \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(duplicateLinkedPackage, base, 33, Standard, error, "duplicate EssenceContainerData.linkedPackageUID",          \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(invalidBodySID, base, 34, Lenient, error, "invalid EssenceContainerData.bodySID value",                        \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(duplicateBodySID, base, 35, Lenient, error, "duplicate EssenceContainerData.bodySID",                          \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(duplicateIndexSID, base, 36, Lenient, error, "duplicate EssenceContainerData.indexSID",                        \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(unlistedEssenceContainer, base, 37, Standard, error,                                                           \
        "FileDescriptor.essenceContainer is not among Preface.essenceContainers", "ST 377-1, Preface")                 \
    ROW(invalidSampleRate, base, 38, Standard, error, "invalid FileDescriptor.sampleRate value",                       \
        "ST 377-1, File Descriptor")                                                                                   \
    ROW(inconsistentContainerDuration, base, 39, Strict, warning,                                                      \
        "FileDescriptor.containerDuration does not fit the tracks", "ST 377-1, File Descriptor")                       \
    ROW(unknownLinkedTrack, base, 40, Standard, error, "FileDescriptor.linkedTrackID names no track",                  \
        "ST 377-1, File Descriptor")                                                                                   \
    ROW(missingLinkedTrack, base, 41, Standard, warning, "descriptor of a MultipleDescriptor without linkedTrackID",   \
        "ST 377-1, Multiple Descriptor")                                                                               \
    ROW(invalidStoredSize, base, 42, Standard, error, "invalid % value", "ST 377-1, Picture Descriptor")               \
    ROW(invalidRectangle, base, 43, Standard, error, "% rectangle does not fit", "ST 377-1, Picture Descriptor")       \
    ROW(invalidAspectRatio, base, 44, Standard, error, "invalid PictureDescriptor.aspectRatio value",                  \
        "ST 377-1, Picture Descriptor")                                                                                \
    ROW(inconsistentVideoLineMap, base, 45, Standard, warning,                                                         \
        "PictureDescriptor.videoLineMap does not fit the frame layout", "ST 377-1, Picture Descriptor")                \
    ROW(invalidComponentDepth, base, 46, Standard, error, "invalid CDCIPictureDescriptor.componentDepth value",        \
        "ST 377-1, CDCI Picture Descriptor")                                                                           \
    ROW(inconsistentReferenceLevels, base, 47, Strict, warning,                                                        \
        "CDCIPictureDescriptor.blackReferenceLevel is not below whiteReferenceLevel",                                  \
        "ST 377-1, CDCI Picture Descriptor")                                                                           \
    ROW(invalidAudioSamplingRate, base, 48, Standard, error, "invalid SoundDescriptor.audioSamplingRate value",        \
        "ST 377-1, Sound Descriptor")                                                                                  \
    ROW(inconsistentBlockAlign, base, 49, Standard, error,                                                             \
        "WaveAudioDescriptor.blockAlign does not fit channels and bits", "ST 382")                                     \
    ROW(inconsistentAverageBytesPerSecond, base, 50, Standard, warning,                                                \
        "WaveAudioDescriptor.averageBytesPerSecond does not fit blockAlign and sampling rate", "ST 382")               \
    ROW(duplicateMCALink, base, 51, Standard, error, "duplicate MCALabelSubDescriptor.linkID", "ST 377-4")             \
    ROW(invalidMCAChannel, base, 52, Standard, error, "invalid MCALabelSubDescriptor.channelID value", "ST 377-4")     \
    ROW(duplicateMCAChannel, base, 53, Standard, error, "duplicate MCALabelSubDescriptor.channelID", "ST 377-4")       \
    ROW(unknownSoundfieldGroup, base, 54, Standard, error,                                                             \
        "AudioChannelLabelSubDescriptor.soundfieldGroup names no soundfield group", "ST 377-4")                        \
    ROW(unknownGroupOfSoundfieldGroups, base, 55, Standard, error,                                                     \
        "SoundfieldGroupLabelSubDescriptor.groupOfSoundfieldGroups names no such group", "ST 377-4")                   \
    ROW(unlabelledChannels, base, 56, Strict, warning, "channels without AudioChannelLabelSubDescriptor", "ST 377-4")  \
    ROW(duplicateLinkedTrack, base, 57, Strict, warning, "duplicate FileDescriptor.linkedTrackID",                     \
        "ST 377-1, Multiple Descriptor")                                                                               \
    ROW(undescribedTrack, base, 58, Strict, warning,                                                                   \
        "essence track that no descriptor of the MultipleDescriptor is for", "ST 377-1, Multiple Descriptor")          \
    ROW(untimedData, base, 59, Standard, warning, "invalid TimelineTrack.editRate value of data in a MaterialPackage", \
        "ST 377-1, Track")                                                                                             \
    ROW(missingMCAChannel, base, 60, Standard, warning, "missing MCALabelSubDescriptor.channelID", "ST 377-4")

BRYX_METADATA_CHECKS(BRYX_DEFINE_CHECK)

} // namespace BRYXMetadataChecks

/// Of header metadata, partitions, index tables and essence against one another.
namespace BRYXCrossChecks {

/// Of the identifiers.
inline constexpr util::uuid base{
    {0xd4, 0x2f, 0x29, 0x0e, 0x62, 0x43, 0x4d, 0xc6, 0xa0, 0xc5, 0xb1, 0x03, 0x0a, 0xe3, 0x94, 0x00}};

/// The rows: name, base, index, mode, level, message; "%" stands for what the finding is about, clause.
#define BRYX_CROSS_CHECKS(ROW)                                                                                         \
    ROW(inconsistentPrefacePattern, base, 1, Standard, error,                                                          \
        "Preface.operationalPattern differs from that of the partition pack", "ST 377-1, Preface")                     \
    ROW(inconsistentPrefaceContainers, base, 2, Standard, error,                                                       \
        "Preface.essenceContainers differ from those of the partition pack", "ST 377-1, Preface")                      \
    ROW(inconsistentRIPPresent, base, 3, Standard, error, "Preface.ripPresent does not fit the file",                  \
        "ST 377-1, Preface")                                                                                           \
    ROW(unknownBodySID, base, 4, Standard, error, "bodySID of a partition that no EssenceContainerData has",           \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(missingEssence, base, 5, Standard, error, "EssenceContainerData.bodySID that no partition has",                \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(unknownIndexSID, base, 6, Standard, error, "indexSID of a partition that no EssenceContainerData has",         \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(missingIndex, base, 7, Standard, warning, "EssenceContainerData.indexSID that no partition has",               \
        "ST 377-1, Essence Container Data")                                                                            \
    ROW(misplacedSegment, base, 8, Standard, error, "index table segment in a partition with another indexSID",        \
        "ST 377-1, Index Table Segment")                                                                               \
    ROW(unknownIndexTable, base, 9, Standard, error,                                                                   \
        "index table segment with indexSID and bodySID of no EssenceContainerData", "ST 377-1, Index Table Segment")   \
    ROW(inconsistentIndexEditRate, base, 10, Standard, error, "index edit rate is that of no track",                   \
        "ST 377-1, Index Table Segment")                                                                               \
    ROW(incompleteIndexTable, base, 11, Strict, warning, "index table does not cover the tracks",                      \
        "ST 377-1, Index Table")                                                                                       \
    ROW(indexBeyondEssence, base, 12, Lenient, error, "index table leads beyond the essence", "ST 377-1, Index Table") \
    ROW(unknownElement, base, 13, Standard, error, "essence element of no track", "ST 379-1; ST 377-1, Track")         \
    ROW(missingElements, base, 14, Standard, warning, "track without essence elements", "ST 379-1; ST 377-1, Track")   \
    ROW(inconsistentPackageCount, base, 15, Strict, warning, "content packages do not fit the duration of the tracks", \
        "ST 379-1")                                                                                                    \
    ROW(inconsistentSystemLabel, base, 16, Standard, error,                                                            \
        "essence container label of system item is not that of FileDescriptor.essenceContainer", "ST 385")             \
    ROW(inconsistentPackageRate, base, 17, Standard, error,                                                            \
        "content package rate of system item is the edit rate of no track", "ST 385")                                  \
    ROW(inconsistentPrefaceVersion, base, 18, Standard, warning,                                                       \
        "Preface.version differs from that of the partition pack", "ST 377-1, Preface")

BRYX_CROSS_CHECKS(BRYX_DEFINE_CHECK)

} // namespace BRYXCrossChecks

/// Of index table segments.
namespace BRYXIndexChecks {

/// Of the identifiers.
inline constexpr util::uuid base{
    {0x70, 0x26, 0xe4, 0x5a, 0xc3, 0xee, 0x46, 0x9a, 0xbb, 0xe6, 0x66, 0xb9, 0xeb, 0xce, 0x61, 0x00}};

/// The rows: name, base, index, mode, level, message; "%" stands for what the finding is about, clause.
#define BRYX_INDEX_CHECKS(ROW)                                                                                         \
    ROW(invalidIndexEditRate, base, 1, Lenient, error, "invalid indexEditRate value", "ST 377-1, Index Table Segment") \
    ROW(invalidIndexStartPosition, base, 2, Lenient, error, "invalid indexStartPosition value",                        \
        "ST 377-1, Index Table Segment")                                                                               \
    ROW(invalidIndexDuration, base, 3, Lenient, error, "invalid indexDuration value", "ST 377-1, Index Table Segment") \
    ROW(elementDeltaOrder, base, 4, Standard, error, "elementDelta descends", "ST 377-1, Delta Entry Array")           \
    ROW(elementDeltaBeyondEditUnit, base, 5, Lenient, error, "elementDelta leads out of the edit unit",                \
        "ST 377-1, Delta Entry Array")                                                                                 \
    ROW(streamOffsetOrder, base, 6, Lenient, error, "streamOffset descends", "ST 377-1, Index Entry Array")            \
    ROW(sliceOffsetOrder, base, 7, Lenient, error, "sliceOffset descends or leads out of the edit unit",               \
        "ST 377-1, Index Entry Array")                                                                                 \
    ROW(keyFrameOutside, base, 8, Standard, error, "keyFrameOffset leads out of the index table",                      \
        "ST 377-1, Index Entry Array")                                                                                 \
    ROW(noKeyFrame, base, 9, Strict, warning, "keyFrameOffset leads to an edit unit that needs another key frame",     \
        "ST 377-1, Index Entry Array")                                                                                 \
    ROW(temporalOffsetOutside, base, 10, Standard, error, "temporalOffset leads out of the index table",               \
        "ST 377-1, Index Entry Array")                                                                                 \
    ROW(inconsistentRepetition, base, 11, Lenient, error, "repeated index table segment differs",                      \
        "ST 377-1, Index Table")                                                                                       \
    ROW(inconsistentIndexEditRate, base, 12, Standard, error,                                                          \
        "indexEditRate differs from that of the first segment of the table", "ST 377-1, Index Table Segment")          \
    ROW(overlap, base, 13, Standard, error, "index table segments overlap", "ST 377-1, Index Table")                   \
    ROW(gap, base, 14, Standard, warning, "gap before index table segment", "ST 377-1, Index Table")                   \
    ROW(lateStart, base, 15, Strict, warning, "index table does not begin at edit unit 0", "ST 377-1, Index Table")    \
    ROW(inconsistentSliceCount, base, 16, Strict, warning, "sliceCount is more than the slices of deltaEntryArray",    \
        "ST 377-1, Index Table Segment")

BRYX_INDEX_CHECKS(BRYX_DEFINE_CHECK)

} // namespace BRYXIndexChecks

/// Of system items and the content packages that they stand in.
namespace BRYXSystemChecks {

/// Of the identifiers.
inline constexpr util::uuid base{
    {0xa4, 0xd1, 0x7a, 0xa3, 0xe1, 0xe1, 0x46, 0x8d, 0xb2, 0x42, 0x09, 0xac, 0xfd, 0x0d, 0x9b, 0x00}};

/// The rows: name, base, index, mode, level, message; "%" stands for what the finding is about, clause.
#define BRYX_SYSTEM_CHECKS(ROW)                                                                                        \
    ROW(invalidPackageRate, base, 1, Standard, error, "invalid content package rate", "ST 326")                        \
    ROW(inconsistentSystemItem, base, 2, Standard, error, "% of system item differs from that of the first one",       \
        "ST 385")                                                                                                      \
    ROW(discontinuousCount, base, 3, Standard, warning, "discontinuous continuityCount", "ST 326")                     \
    ROW(inconsistentBitmap, base, 4, Standard, error, "bitmap of system item does not fit the % item",                 \
        "ST 326; ST 385")                                                                                              \
    ROW(invalidTimecode, base, 5, Standard, warning, "invalid timecode in system item", "ST 12-1; ST 331")             \
    ROW(discontinuousTimecode, base, 6, Strict, warning, "discontinuous timecode in system items", "ST 331")           \
    ROW(incorrectElementCount, base, 7, Strict, warning,                                                               \
        "element count in essence element key is not that of the item", "ST 379-1")                                    \
    ROW(missingSystemItem, base, 8, Strict, warning,                                                                   \
        "content package with essence of several kinds and no system item", "ST 379-1")

BRYX_SYSTEM_CHECKS(BRYX_DEFINE_CHECK)

} // namespace BRYXSystemChecks

} // namespace bryx
