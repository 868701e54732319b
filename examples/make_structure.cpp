/// Writes the frame of an MXF file: partitions with some sound in the body, and a random index.
///
///     make_structure OUT
///
/// A header partition holds no header metadata here, so that the file shows how MXF is framed but is not one that can
/// be played. Octets, from the first of the file:
///
///     header partition pack  fill item | body partition pack  sound elements | footer partition pack | random index

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "klv/KLVCoding.h"
#include "klv/KLVKey.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFRandomIndex.h"

namespace {

/// Operational pattern 1a (ST 378): one item, made of one package, whose essence is in the file and can be streamed.
constexpr KLVKey operationalPattern1a{
    {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01, 0x0D, 0x01, 0x02, 0x01, 0x01, 0x01, 0x09, 0x00}};

/// Broadcast Wave audio in the Generic Container, wrapped frame by frame (ST 382).
constexpr KLVKey waveFrameWrapped{
    {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01, 0x0D, 0x01, 0x03, 0x01, 0x02, 0x06, 0x01, 0x00}};

/// The one sound element of each content package (ST 382).
constexpr KLVKey soundElement{
    {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02, 0x01, 0x01, 0x0D, 0x01, 0x03, 0x01, 0x16, 0x01, 0x01, 0x00}};

constexpr std::size_t elementCount = 12;

/// A frame of silence: 1/25 s of 16-bit mono at 48 kHz.
constexpr std::size_t elementSize = sizeof(std::int16_t) * 48000 / 25;

/// Octets that keep room for header metadata, to be written in place of the fill item later on.
constexpr std::size_t reservedSize = 4096;

/// The length fields are all in the four-octet long form, so that a triplet's size follows from that of its value.
constexpr std::uint8_t lengthForm = 0x83;

std::uint64_t tripletSize(std::size_t valueSize) {
    return klvutil::keySize + klvutil::berLengthFieldSize(lengthForm) + valueSize;
}

void writeTriplet(std::ostream& out, const KLVKey& key, const std::vector<std::uint8_t>& value) {
    std::uint8_t length[9];
    const std::uint8_t lengthSize = klvutil::storeBERLength(length, lengthForm, value.size());
    const auto write = [&](const std::uint8_t* octets, std::size_t size) {
        out.write(reinterpret_cast<const char*>(octets), static_cast<std::streamsize>(size));
    };
    write(key.octets.data(), key.octets.size());
    write(length, lengthSize);
    write(value.data(), value.size());
}

void writePartition(std::ostream& out, MXFPartitionKind kind, const MXFPartitionPack& pack) {
    const KLVKey key = mxfutil::partitionPackKey(kind, MXFPartitionStatus::ClosedComplete);
    writeTriplet(out, key, mxfutil::writePartitionPack(pack));
}

void writeFile(std::ostream& out) {
    // What all partition packs say.
    MXFPartitionPack pack;
    pack.majorVersion = 1;
    pack.minorVersion = 3;
    pack.kagSize = 1;
    pack.operationalPattern = operationalPattern1a;
    pack.essenceContainers = {waveFrameWrapped};

    // The size of a pack depends on its essence containers alone, so that all offsets are known beforehand. Who does
    // not know how much essence will come, writes 0 for the footer partition and goes back to set it in the end.
    const std::uint64_t packSize = tripletSize(mxfutil::writePartitionPack(pack).size());
    const std::uint64_t bodyStart = packSize + tripletSize(reservedSize);
    const std::uint64_t footerStart = bodyStart + packSize + elementCount * tripletSize(elementSize);
    pack.footerPartition = footerStart;

    writePartition(out, MXFPartitionKind::Header, pack);
    writeTriplet(out, klvutil::fillKey, std::vector<std::uint8_t>(reservedSize));

    // A partition with a stream identifier holds essence of the container with that identifier.
    MXFPartitionPack body = pack;
    body.thisPartition = bodyStart;
    body.bodySID = 1;
    writePartition(out, MXFPartitionKind::Body, body);
    const std::vector<std::uint8_t> silence(elementSize);
    for (std::size_t i = 0; i < elementCount; ++i) {
        writeTriplet(out, soundElement, silence);
    }

    MXFPartitionPack footer = pack;
    footer.thisPartition = footerStart;
    footer.previousPartition = bodyStart;
    writePartition(out, MXFPartitionKind::Footer, footer);

    const MXFRandomIndex index{{0, 0}, {body.bodySID, bodyStart}, {0, footerStart}};
    writeTriplet(out, mxfutil::randomIndexPackKey, mxfutil::writeRandomIndex(index, lengthForm));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '-') {
        std::cerr << "Writes the frame of an MXF file.\n\n  make_structure OUT\n";
        return 2;
    }
    const std::string name = argv[1];
    std::ofstream file(name, std::ios::binary);
    writeFile(file);
    file.close();
    if (!file) {
        std::cerr << "make_structure: " << name << " could not be written\n";
        return 1;
    }
    return 0;
}
