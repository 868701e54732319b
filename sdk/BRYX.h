#pragma once

/// @file
/// The interfaces of the public layer in one header. Programs that look into sets, or make them, include
/// mxf/metadata/MXFMetadataSets.h as well.

#include "klv/DullErrorHandler.h"
#include "klv/parse_error.h"
#include "mxf/essence/DullMXFGCEssenceHandler.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/essence/DullMXFSDTICPSystemHandler.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFSDTICPSystemCoder.h"
#include "mxf/index/DullMXFIndexHandler.h"
#include "mxf/metadata/model/DullMXFMetadataHandler.h"
#include "mxf/metadata/model/DullMXFMetadataModelHandler.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
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
#include "validation/BRYXChecks.h"
#include "validation/BRYXOverridableLocator.h"
#include "validation/BRYXValidationMode.h"
