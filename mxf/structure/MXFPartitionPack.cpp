#include "mxf/structure/MXFPartitionPack.h"

#include <stdexcept>

#include "klv/KLVCoding.h"
#include "klv/ValueCoding.h"
#include "util/assertion_failure.h"

namespace bryx::mxfutil {

namespace {

constexpr KLVKey partitionPackPattern{
    {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01, 0x0D, 0x01, 0x02, 0x01, 0x01, 0x00, 0x00, 0x00}};

bool isKindWithStatus(std::uint8_t kind, std::uint8_t status) {
    const auto body = static_cast<std::uint8_t>(MXFPartitionKind::Body);
    const auto genericStream = static_cast<std::uint8_t>(MXFPartitionStatus::GenericStream);
    return kind >= 2 && kind <= 4 && ((status >= 1 && status <= 4) || (status == genericStream && kind == body));
}

} // namespace

bool isPartitionPackKey(const KLVKey& key) noexcept {
    KLVKey pattern = partitionPackPattern;
    pattern[13] = key[13];
    pattern[14] = key[14];
    return key == pattern && key[7] != 0 && isKindWithStatus(key[13], key[14]);
}

MXFPartitionKind partitionKind(const KLVKey& key) {
    util::require(isPartitionPackKey(key), "valid partition key");
    return static_cast<MXFPartitionKind>(key[13]);
}

MXFPartitionStatus partitionStatus(const KLVKey& key) {
    util::require(isPartitionPackKey(key), "valid partition key");
    return static_cast<MXFPartitionStatus>(key[14]);
}

KLVKey partitionPackKey(MXFPartitionKind kind, MXFPartitionStatus status) {
    KLVKey key = partitionPackPattern;
    key[13] = static_cast<std::uint8_t>(kind);
    key[14] = static_cast<std::uint8_t>(status);
    util::require(isPartitionPackKey(key), "valid partition key");
    return key;
}

bool readPartitionPack(const std::uint8_t* data, std::size_t size, MXFPartitionPack& pack) {
    try {
        klvutil::OctetReader(data, size).read(pack);
        return true;
    } catch (const std::length_error&) {
        return false;
    }
}

std::vector<std::uint8_t> writePartitionPack(const MXFPartitionPack& pack) {
    std::vector<std::uint8_t> octets;
    octets.reserve(emptyPartitionPackSize + pack.essenceContainers.size() * klvutil::keySize);
    klvutil::OctetWriter(octets).write(pack);
    return octets;
}

std::string versionText(unsigned majorVersion, unsigned minorVersion) {
    return std::to_string(majorVersion) + "." + std::to_string(minorVersion);
}

} // namespace bryx::mxfutil
