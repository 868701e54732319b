#pragma once

#include <cstddef>
#include <cstdint>

#include "mxf/essence/MXFGCSystemHandler.h"
#include "mxf/essence/MXFSystemMetadataPack.h"
#include "util/Api.h"

namespace bryx {

/// Receives SDTI-CP compatible system items (ST 326, ST 385): for each content package the pack, then the sets that it
/// has, then the control data that the pack announces. Whoever writes system items makes the same calls.
class BRYX_API MXFSDTICPSystemHandler {
public:
    virtual ~MXFSDTICPSystemHandler();

    /// The pack, with which the system item begins.
    virtual void systemMetadata(const MXFSystemMetadataPack& pack) = 0;

    /// Metadata of the content package as a whole. Tags are those of ST 331, here and in the sets that follow.
    virtual void packageMetadata(const MXFGCItems& items) = 0;
    /// Metadata of its picture item.
    virtual void pictureMetadata(const MXFGCItems& items) = 0;
    /// Metadata of its sound item.
    virtual void soundMetadata(const MXFGCItems& items) = 0;
    /// Metadata of its data item.
    virtual void dataMetadata(const MXFGCItems& items) = 0;

    /// The control data.
    ///
    /// @param data valid during the call; null if there are no octets
    virtual void controlData(const std::uint8_t* data, std::size_t size) = 0;
};

namespace mxfutil {

/// The key of a system metadata pack. Octet 7 is not compared.
inline constexpr KLVKey sdtiCPSystemMetadataKey = klvutil::key("060e2b34.02050101.0d010301.04010100");

/// The kinds of elements that follow the pack, as octet 14 of their keys tells.
enum class SDTICPElement : std::uint8_t { None = 0, Package = 2, Picture, Sound, Data, Control };

/// The key of a set of metadata or of control data with that many items, at most 255.
BRYX_API KLVKey sdtiCPElementKey(SDTICPElement element, std::uint8_t items) noexcept;

/// Whether @p key is that of a set of metadata or of control data, of a kind known or not.
BRYX_API bool isSDTICPElementKey(const KLVKey& key) noexcept;

/// The kind of element that @p key is of; None if it is of none.
BRYX_API SDTICPElement sdtiCPElement(const KLVKey& key) noexcept;

} // namespace mxfutil

} // namespace bryx
