#include "mxf/structure/MXFRandomIndex.h"

#include "klv/KLVCoding.h"
#include "klv/ValueCoding.h"

namespace bryx::mxfutil {

std::uint64_t randomIndexPackSize(std::uint8_t form, std::uint64_t valueSize) {
    return klvutil::keySize + klvutil::berLengthFieldSize(form) + valueSize;
}

bool readRandomIndex(const std::uint8_t* data, std::size_t size, std::uint8_t form, MXFRandomIndex& index) {
    klvutil::OctetReader octets(data, size);
    index.resize(size / randomIndexEntrySize);
    for (MXFRandomIndexEntry& entry : index) {
        octets.read(entry);
    }
    return octets.left() == overallLengthSize && octets.read<std::uint32_t>() == randomIndexPackSize(form, size);
}

std::vector<std::uint8_t> writeRandomIndex(const MXFRandomIndex& index, std::uint8_t form) {
    std::vector<std::uint8_t> octets;
    const std::size_t size = index.size() * randomIndexEntrySize + overallLengthSize;
    octets.reserve(size);
    klvutil::OctetWriter writer(octets);
    for (const MXFRandomIndexEntry& entry : index) {
        writer.write(entry);
    }
    writer.write(static_cast<std::uint32_t>(randomIndexPackSize(form, size)));
    return octets;
}

} // namespace bryx::mxfutil
