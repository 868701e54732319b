#include "mxf/metadata/model/MXFUIDGenerator.h"

#include <algorithm>

#include "util/fresh_uuid.h"

namespace bryx {

MXFUIDGenerator::~MXFUIDGenerator() = default;

BRYXDefaultUIDGenerator::~BRYXDefaultUIDGenerator() = default;

MXFUID BRYXDefaultUIDGenerator::generateUID() {
    return {util::freshUUID().octets};
}

UMID mxfutil::generateUMID(MXFUIDGenerator& generator) {
    // Label, material type unidentified, number made as a UUID, then the octets that follow and the instance number.
    UMID umid{{0x06, 0x0A, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x05, 0x01, 0x01, 0x0F, 0x20, 0x13, 0x00, 0x00, 0x00}};
    const MXFUID number = generator.generateUID();
    std::copy(number.octets.begin(), number.octets.end(), umid.octets.begin() + 16);
    return umid;
}

} // namespace bryx
