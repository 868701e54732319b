#include "mxf/metadata/descriptors/PictureDescriptor.h"

namespace bryx {

std::string toString(const MXFChromaticity& chromaticity) {
    return std::to_string(chromaticity.x) + "," + std::to_string(chromaticity.y);
}

std::string toString(const MXFThreeChromaticities& primaries) {
    return toString(primaries.red) + " " + toString(primaries.green) + " " + toString(primaries.blue);
}

} // namespace bryx
