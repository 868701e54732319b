#pragma once

#include "klv/Finding.h"

/// @file
/// The findings about sets of header metadata and the model that they make.

namespace bryx::mxfutil::findings {

/// Sets, and references between them.
inline constexpr util::uuid metadataBase{
    {0x5b, 0x0e, 0x9d, 0x61, 0x2c, 0x7a, 0x4f, 0x1d, 0x8e, 0x44, 0xb7, 0x3a, 0x90, 0x16, 0x5c, 0x00}};

/// The rows of the table: name, base, index, level, message; "%" stands for what the finding is about
#define BRYX_METADATA_FINDINGS(ROW)                                                                                    \
    ROW(missingProperty, metadataBase, 1, error, "missing %")                                                          \
    ROW(invalidProperty, metadataBase, 2, error, "invalid % value")                                                    \
    ROW(invalidReferenceDarkProperty, metadataBase, 3, error, "invalid reference dark property (%) value")             \
    ROW(unrecognizedMetadata, metadataBase, 4, warning, "unrecognized (dark) metadata")                                \
    ROW(duplicateInstanceUID, metadataBase, 5, error, "duplicate MetadataRoot.instanceUID")                            \
    ROW(alreadyOwned, metadataBase, 6, error, "referenced object is already owned")                                    \
    ROW(backwardReference, metadataBase, 7, warning, "backward strong reference")                                      \
    ROW(danglingReferences, metadataBase, 8, warning, "model has dangling references")                                 \
    ROW(notModelRoot, metadataBase, 9, error, "first object is not model root")                                        \
    ROW(unreferencedObjects, metadataBase, 10, warning, "unreferenced objects")                                        \
    ROW(unexpectedClass, metadataBase, 11, error, "referenced object is of an unexpected class")                       \
    ROW(cyclicReference, metadataBase, 12, error, "referenced object owns the referencing object")                     \
    ROW(ownedTooDeeply, metadataBase, 13, error, "referenced object is owned too deeply")

BRYX_METADATA_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace bryx::mxfutil::findings
