#include "mxf/metadata/factories/MXFMetadataFactory.h"

MXFMetadataFactory::~MXFMetadataFactory() = default;
