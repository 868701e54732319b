#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <vector>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "mxf/index/MXFIndexTableSegment.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "util/Api.h"

namespace bryx {

class KLVHandler;
class MXFGCEssenceHandler;
class MXFGCStructureHandler;
class MXFGCSystemHandler;
class MXFMetadataFactory;
class MXFUIDGenerator;
class Preface;

/// Header metadata as it is written: what goes into partition packs, and who sends the sets.
struct BRYXHeaderMetadata {
    KLVKey operationalPattern;
    std::vector<KLVKey> essenceContainers;

    /// Sends primer and primed sets, between startMetadata and endMetadata. May be called more than once, and sends the
    /// same each time.
    std::function<void(MXFMetadataHandler&)> send;
};

/// The model that @p root owns. It is looked at when it is written, so that what changes until then counts; what cannot be
/// coded fails as MXFMetadataModelCoder says.
/// @param factory of the sets; null for that of all sets that the library knows
BRYX_API BRYXHeaderMetadata toBRYXHeaderMetadata(std::shared_ptr<Preface> root,
                                                 std::shared_ptr<MXFMetadataFactory> factory = nullptr);

/// How a file is laid out.
struct BRYXWriterConfiguration {
    /// Where the segments of an index table stand. All of them stand together at the end as well, but for None: in the
    /// footer partition, or in a partition in front of it where there are several essence containers.
    enum class IndexPlacement : std::uint8_t {
        None,
        Footer,       ///< nowhere else
        AfterEssence, ///< those with entries in the partition after their essence
        BeforeEssence ///< in the first partition of their essence, which must have been given a table
    };

    /// Octets of the KLV alignment grid, at most 2^20; 0 and 1 for none.
    std::uint32_t kagSize = 1;
    /// Octets that the header partition keeps free behind its header metadata at least, for what that becomes until the
    /// end; at most 2^32. 4 KiB are enough for some hundred properties that are added, each of which takes 4 octets and
    /// its value, and 18 more if the file has no other of its name: such as durations, or an identification. 0 where
    /// nothing is to be added.
    std::uint64_t headerSpace = 4096;

    // What the caller says of the status of partitions. A weaker one is written if less holds: complete means that no
    // best-effort property of the header metadata has its value for "unknown", such as a duration of -1, and that all
    // timeline tracks have durations; closed, that the durations of tracks and descriptors of the file packages are those
    // of the essence that has been written, as far as the writer knows that. (ST 377-1, Partition Status)

    /// Of the header partition until it is rewritten, which happens at the end if the stream can seek.
    MXFPartitionStatus headerStatus = MXFPartitionStatus::OpenIncomplete;
    MXFPartitionStatus bodyStatus = MXFPartitionStatus::ClosedComplete;
    /// Of what finish() is given: in the header partition when that is rewritten, and in the footer partition, which is
    /// closed and incomplete where this would be open.
    MXFPartitionStatus footerStatus = MXFPartitionStatus::ClosedComplete;
    /// Of ST 377-1: in partition packs, and in the Preface whatever that says.
    std::uint16_t minorVersion = 3;

    // BER forms of lengths. What a form cannot hold gets a longer one.

    std::uint8_t packLengthForm = 0x83;     ///< of packs and the fill behind them
    std::uint8_t metadataLengthForm = 0x83; ///< of sets and index table segments
    std::uint8_t essenceLengthForm = 0x80;  ///< of elements; 0x80 for the form that they come with

    /// Octet 7 of the key of fill items, 1 or 2; 0 for what comes, which is 1 unless the caller sends fill.
    std::uint8_t fillKeyVersion = 0;

    IndexPlacement indexPlacement = IndexPlacement::AfterEssence;

    // A partition ends where a content package starts, when it has as much. 0 for any number.

    std::uint64_t partitionSize = 0;     ///< octets of essence
    std::uint64_t partitionDuration = 0; ///< content packages

    /// Makes the instance UIDs of index table segments; random ones if it is empty.
    std::shared_ptr<MXFUIDGenerator> uidGenerator;
};

/// An essence container that is written.
struct BRYXEssenceContainer {
    std::uint32_t bodySID = 1;
    std::uint32_t indexSID = 2; ///< 0 for no index table
    Rational editRate{25, 1};   ///< of the index table: content packages a second

    /// Whether all edit units have one size, so that one index table segment without entries will do. If it turns out
    /// that they do not, there are entries all the same.
    bool isConstant = false;

    /// Sets flags, temporal and key frame offset of the index entry of an edit unit; if it is empty, those of pictures that
    /// are coded on their own. Called for each edit unit several times, when segments are measured, written and repeated,
    /// and must say the same each time.
    std::function<void(std::int64_t editUnit, MXFIndexEntry& entry)> describe;

    /// If not empty, the index table as it is to be: for essence wrapped as a clip, whose edit units the writer does not
    /// see, and for BeforeEssence. SIDs, edit rate and instance UIDs are filled in.
    std::vector<MXFIndexTableSegment> segments;
};

/// Writes an MXF file in one pass. The stream need not be able to seek; if it is, the header partition is rewritten at the
/// end, with what is known by then, and body partitions learn where the footer partition is.
///
/// @code
/// auto writer = createBRYXWriter(stream);
/// writer->start(toBRYXHeaderMetadata(preface));
/// writer->startEssence({1, 2, {25, 1}});
/// for each edit unit: the calls that an MXFGCSplitter makes, on the receivers
/// writer->endEssence();
/// writer->finish(toBRYXHeaderMetadata(preface)); // with durations that are known by now
/// @endcode
///
/// Calls out of this order fail: "before start", "after start", "in essence", "not in essence", "in generic stream", "not
/// finished", and those that MXFGCMuxer refuses; and so does a partition that would end within an element, "complete
/// element". What was written is a readable file whenever a partition ends. A write that fails throws
/// util::assertion_failure "successful write()", whatever the stream's exception mask; nothing is written after it. A
/// writer that has thrown anything but a call out of order must not be used afterwards; after a failure within a
/// partition's pack, metadata or index table, further calls fail "no failure before". It is used by one thread at a time.
class BRYX_API BRYXWriter {
public:
    virtual ~BRYXWriter();

    /// Before start(). Requires "valid BER length form" of each form, "valid fill item key version", "valid KAG size",
    /// "valid header space", and "valid partition status": none that of a generic stream.
    virtual void setConfiguration(const BRYXWriterConfiguration& configuration) = 0;

    /// Writes the header partition, from where the stream stands. Requires "header metadata is present", and of a stream
    /// that can seek "stream writes where it stands", which one opened for appending does not: to find out, the first key
    /// is written twice. Metadata that is absent or cannot be coded fails before anything is written.
    virtual void start(const BRYXHeaderMetadata& metadata) = 0;

    /// Begins an essence container with a partition of its own; or goes on in another partition with one that was begun
    /// before, of which only the body SID counts then. Requires "unique body SID", which is not 0, and "unique index SID":
    /// none that is that of any essence, index table or generic stream of the file; "valid edit rate", both parts of which
    /// are above 0; "index table segments are given" for BeforeEssence; and that segments which are given can be coded.
    /// What fails so has begun nothing.
    virtual void startEssence(const BRYXEssenceContainer& container) = 0;

    // For the calls that an MXFGCSplitter makes: a content package starts, its elements come and end, it ends. Stream
    // events are the writer's own. Receivers exist from start() on, are valid as long as the writer is, and take calls in
    // essence alone.

    /// Told where content packages and elements begin and end.
    virtual MXFGCStructureHandler& structureReceiver() = 0;
    /// Takes system elements.
    virtual MXFGCSystemHandler& systemReceiver() = 0;
    /// Takes essence elements, in chunks as well: it is an MXFGCChunkedEssenceHandler.
    virtual MXFGCEssenceHandler& essenceReceiver() = 0;

    /// Takes the triplets of essence as they are, fill included, in place of the three receivers above. The writer then
    /// knows no edit units: the index table is what the container says.
    virtual KLVHandler& bodyReceiver() = 0;

    /// Ends the partition that is written, and goes on in another one. Not within a content package.
    virtual void startBodyPartition() = 0;

    /// Requires "edit units have the size announced" where a table for BeforeEssence said so: each content package begins
    /// where the table has it, and the last one ends there. A single one, where the table has more edit units, is taken
    /// for essence wrapped as a clip, and not compared.
    virtual void endEssence() = 0;

    /// Begins a partition with a generic stream (ST 410), and takes its triplets until endGenericStream(). Requires
    /// "unique body SID": such a stream is in one partition.
    virtual KLVHandler& startGenericStream(std::uint32_t bodySID) = 0;
    virtual void endGenericStream() = 0;

    /// Writes the footer partition with @p metadata, and the random index; rewrites the header partition. Metadata that
    /// cannot be coded fails before anything is written.
    ///
    /// The header partition stays as it was, but for the offset of the footer partition, if @p metadata does not fit the
    /// space in it or has another number of essence containers: it is open then, since the footer partition says more. It
    /// stays as it was altogether if the stream cannot seek.
    ///
    /// @return whether the header partition has been rewritten, and is closed and complete now
    virtual bool finish(const BRYXHeaderMetadata& metadata) = 0;

    /// Where the next octet goes, in octets from the header partition pack.
    virtual std::uint64_t position() const = 0;
};

/// Writes a file and reads back all that it writes, triplet by triplet, and at the end as a whole: partitions, header
/// metadata, and whether the index entries of its making lead to elements. What differs, and what is wrong with the file,
/// throws VerifyingKLVHandler::exception.
class BRYX_API VerifyingBRYXWriter : public BRYXWriter {
public:
    ~VerifyingBRYXWriter() override;
};

/// @param stream written to from where it stands
BRYX_API std::shared_ptr<BRYXWriter> createBRYXWriter(std::shared_ptr<std::ostream> stream);

/// @param stream written to from where it stands, and read from; it can seek
BRYX_API std::shared_ptr<VerifyingBRYXWriter> createVerifyingBRYXWriter(std::shared_ptr<std::iostream> stream);

} // namespace bryx
