#include "mxf/metadata/factories/MXFMetadataFactory.h"

namespace bryx {

MXFMetadataFactory::~MXFMetadataFactory() = default;

} // namespace bryx
