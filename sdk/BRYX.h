#pragma once

/// @file
/// The whole public layer in one header.

#include "klv/DullErrorHandler.h"
#include "klv/parse_error.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/metadata/MXFMetadataSets.h"
#include "mxf/metadata/parsing/DullMXFMetadataModelHandler.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "sdk/BRYXEssenceSplitter.h"
#include "sdk/BRYXMetadataFactory.h"
#include "sdk/BRYXMetadataParser.h"
#include "sdk/BRYXPackageMetadata.h"
#include "sdk/BRYXPartialReader.h"
#include "sdk/BRYXReader.h"
#include "sdk/BRYXSystemParser.h"
#include "sdk/BRYXVersion.h"
#include "sdk/BRYXWriter.h"
#include "timecode/TimecodeCalculator.h"
#include "util/assertion_failure.h"
#include "validation/BRYXOverridableLocator.h"
#include "validation/BRYXValidationMode.h"
