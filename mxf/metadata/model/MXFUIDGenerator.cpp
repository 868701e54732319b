#include "mxf/metadata/model/MXFUIDGenerator.h"

#include "util/fresh_uuid.h"

MXFUIDGenerator::~MXFUIDGenerator() = default;

BRYXDefaultUIDGenerator::~BRYXDefaultUIDGenerator() = default;

MXFUID BRYXDefaultUIDGenerator::generateUID() {
    return {util::freshUUID().octets};
}
