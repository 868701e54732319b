#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "klv/KLVCoding.h"
#include "klv/KLVKey.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFRandomIndex.h"

/// Octets of test streams, as std::string so that they go straight into std::istringstream.
namespace octets {

inline std::string of(std::initializer_list<int> values) {
    std::string result;
    for (const int value : values) {
        result += static_cast<char>(value);
    }
    return result;
}

inline std::string of(const std::vector<std::uint8_t>& values) {
    return {values.begin(), values.end()};
}

inline std::string key(const KLVKey& key) {
    return {key.octets.begin(), key.octets.end()};
}

inline std::string length(std::uint64_t length, std::uint8_t form = 0x83) {
    std::uint8_t field[9];
    return {field, field + klvutil::storeBERLength(field, form, length)};
}

/// A whole triplet.
inline std::string klv(const KLVKey& k, const std::string& value, std::uint8_t form = 0x83) {
    return key(k) + length(value.size(), form) + value;
}

} // namespace octets

/// Keys that tests use: what matters of them is octets 4 and 5.
namespace keys {

constexpr KLVKey make(std::uint8_t category, std::uint8_t structure, std::uint8_t last = 0) {
    return KLVKey{{0x06, 0x0E, 0x2B, 0x34, category, structure, 0x01, 0x01, 0x0F, 0, 0, 0, 0, 0, 0, last}};
}

inline constexpr KLVKey item = make(1, 1, 1);
inline constexpr KLVKey universalSet = make(2, 0x01);
inline constexpr KLVKey localSet = make(2, 0x53);
inline constexpr KLVKey variablePack = make(2, 0x44);
inline constexpr KLVKey fixedPack = make(2, 0x05);
inline constexpr KLVKey wrapper = make(3, 0x01);
inline constexpr KLVKey label = make(4, 0x01);
inline constexpr KLVKey primer{{0x06, 0x0E, 0x2B, 0x34, 2, 5, 1, 1, 0x0D, 1, 2, 1, 1, 5, 1, 0}};
inline constexpr KLVKey picture{{0x06, 0x0E, 0x2B, 0x34, 1, 2, 1, 1, 0x0D, 1, 3, 1, 0x15, 1, 5, 0}};
inline constexpr KLVKey op1a{{0x06, 0x0E, 0x2B, 0x34, 4, 1, 1, 1, 0x0D, 1, 2, 1, 1, 1, 9, 0}};

} // namespace keys

/// Puts an MXF file together, partition after partition, with the offsets that go with it.
class FileBuilder {
public:
    MXFPartitionPack pack; ///< what the next partition's pack says; offsets and byte counts are filled in

    FileBuilder() {
        pack.minorVersion = 3;
        pack.operationalPattern = keys::op1a;
        pack.essenceContainers = {keys::op1a};
    }

    FileBuilder& partition(MXFPartitionKind kind, const std::string& header = {}, const std::string& index = {},
                           const std::string& body = {},
                           MXFPartitionStatus status = MXFPartitionStatus::ClosedComplete) {
        pack.previousPartition = pack.thisPartition;
        pack.thisPartition = file.size();
        if (kind == MXFPartitionKind::Footer) {
            pack.footerPartition = file.size();
        }
        pack.headerByteCount = header.size();
        pack.indexByteCount = index.size();
        pack.indexSID = index.empty() ? 0 : 2;
        pack.bodySID = body.empty() ? 0 : 1;
        randomIndex.push_back({pack.bodySID, pack.thisPartition});
        file += octets::klv(mxfutil::partitionPackKey(kind, status), octets::of(mxfutil::writePartitionPack(pack)));
        file += fillAfterPack + header + index + body;
        return *this;
    }

    FileBuilder& randomIndexPack() {
        file += octets::klv(mxfutil::randomIndexPackKey, octets::of(mxfutil::writeRandomIndex(randomIndex, 0x83)));
        return *this;
    }

    /// A header, a body and a footer partition with header metadata, index and essence, and the random index.
    static FileBuilder whole() { return whole(whole(1).randomIndex.back().byteOffset); }

    std::string file;
    std::string fillAfterPack;
    MXFRandomIndex randomIndex;

private:
    static FileBuilder whole(std::uint64_t footer) {
        const std::string header = octets::klv(keys::primer, octets::of({0, 0, 0, 0, 0, 0, 0, 18})) +
                                   octets::klv(keys::localSet, octets::of({0x3C, 0x0A, 0, 2, 7, 7}));
        const std::string index = octets::klv(keys::localSet, octets::of({0x3F, 0x05, 0, 4, 0, 0, 0, 1}));
        const std::string body = octets::klv(keys::picture, "ABC") + octets::klv(keys::picture, "DE");
        FileBuilder b;
        b.fillAfterPack = octets::klv(klvutil::fillKey, std::string(5, '\0'));
        b.pack.footerPartition = footer;
        b.partition(MXFPartitionKind::Header, header).partition(MXFPartitionKind::Body, {}, {}, body);
        return b.partition(MXFPartitionKind::Footer, header, index).randomIndexPack();
    }
};
