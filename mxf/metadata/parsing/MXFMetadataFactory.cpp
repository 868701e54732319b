#include "mxf/metadata/parsing/MXFMetadataFactory.h"

MXFMetadataFactory::~MXFMetadataFactory() = default;
