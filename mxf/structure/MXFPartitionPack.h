#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

/// The kind of a partition: octet 13 of the key of its pack.
enum class MXFPartitionKind : std::uint8_t { Header = 2, Body = 3, Footer = 4 };

/// The status of a partition: octet 14 of the key of its pack (ST 377-1 §7.1, ST 410 for generic streams).
///
/// Open: values of the header metadata may still change in later partitions. Incomplete: values may be missing.
enum class MXFPartitionStatus : std::uint8_t {
    OpenIncomplete = 0x01,
    ClosedIncomplete = 0x02,
    OpenComplete = 0x03,
    ClosedComplete = 0x04,
    GenericStream = 0x11 ///< body partitions only: the partition holds one generic stream
};

/// A partition pack: the octets at the start of each partition that say what the partition holds (ST 377-1 §7.1).
///
///     key (16)  length  | majorVersion 2 | minorVersion 2 | kagSize 4 | thisPartition 8 | previousPartition 8
///                       | footerPartition 8 | headerByteCount 8 | indexByteCount 8 | indexSID 4 | bodyOffset 8
///                       | bodySID 4 | operationalPattern 16 | count 4 | 16 (size of a label) 4 | labels 16 each
struct MXFPartitionPack {
    std::uint16_t majorVersion = 1;
    std::uint16_t minorVersion = 2;
    std::uint32_t kagSize = 0;           ///< octets of the KLV alignment grid; 0 and 1 for none
    std::uint64_t thisPartition = 0;     ///< offset of this pack, in octets from the end of the run-in
    std::uint64_t previousPartition = 0; ///< offset of the pack before; 0 in the header partition
    std::uint64_t footerPartition = 0;   ///< offset of the footer partition's pack; 0 while it is not known
    std::uint64_t headerByteCount = 0;   ///< octets of header metadata, its fill included
    std::uint64_t indexByteCount = 0;    ///< octets of index table segments, their fill included
    std::uint32_t indexSID = 0;          ///< identifies the index table in this partition; 0 for none
    std::uint64_t bodyOffset = 0;        ///< offset in its essence container of the first octet of essence here
    std::uint32_t bodySID = 0;           ///< identifies the essence container in this partition; 0 for none
    KLVKey operationalPattern;
    std::vector<KLVKey> essenceContainers; ///< the labels of all essence containers of the file

    /// Visits the fields in their order on the wire, with their names.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("majorVersion", self.majorVersion);
        visit("minorVersion", self.minorVersion);
        visit("kagSize", self.kagSize);
        visit("thisPartition", self.thisPartition);
        visit("previousPartition", self.previousPartition);
        visit("footerPartition", self.footerPartition);
        visit("headerByteCount", self.headerByteCount);
        visit("indexByteCount", self.indexByteCount);
        visit("indexSID", self.indexSID);
        visit("bodyOffset", self.bodyOffset);
        visit("bodySID", self.bodySID);
        visit("operationalPattern", self.operationalPattern);
        visit("essenceContainers", self.essenceContainers);
    }
};

namespace mxfutil {

/// Octets of a partition pack's value that holds no essence container label.
inline constexpr std::size_t emptyPartitionPackSize = 88;

/// Whether @p key is that of a partition pack: of any register version, any kind, and a status that goes with it.
BRYX_API bool isPartitionPackKey(const KLVKey& key) noexcept;

/// The kind of the partition whose pack has @p key. Requires "valid partition key".
BRYX_API MXFPartitionKind partitionKind(const KLVKey& key);

/// The status of the partition whose pack has @p key. Requires "valid partition key".
BRYX_API MXFPartitionStatus partitionStatus(const KLVKey& key);

/// The key of the pack of a partition. Requires "valid partition key": a generic stream is a body partition.
BRYX_API KLVKey partitionPackKey(MXFPartitionKind kind, MXFPartitionStatus status);

/// Reads the value of a partition pack. Octets after the batch of essence containers are ignored.
/// @return false, with @p pack in no particular state, if the octets are too few or the batch does not fit them
BRYX_API bool readPartitionPack(const std::uint8_t* data, std::size_t size, MXFPartitionPack& pack);

/// The value of a partition pack as it is written.
BRYX_API std::vector<std::uint8_t> writePartitionPack(const MXFPartitionPack& pack);

/// A version of ST 377-1 as messages show it: "1.3".
BRYX_API std::string versionText(unsigned majorVersion, unsigned minorVersion);

} // namespace mxfutil

} // namespace bryx
