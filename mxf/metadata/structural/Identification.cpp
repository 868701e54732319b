#include "mxf/metadata/structural/Identification.h"

#include "util/fresh_uuid.h"

namespace bryx {

Identification::Identification()
    : thisGenerationUID_{util::freshUUID().octets}, modificationDate_(klvutil::currentTimestamp()) {}

} // namespace bryx
