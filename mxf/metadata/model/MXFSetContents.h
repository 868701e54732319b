#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <vector>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"

namespace bryx {

class MetadataRoot;
class dangling_ref_base;

/// The values of the properties of one set, as they are coded, by label.
using MXFProperties = std::map<KLVKey, std::vector<std::uint8_t>>;

/// The pending references of a set, by the instance UIDs of their targets.
using MXFPendingReferences = std::multimap<MXFUID, std::shared_ptr<dangling_ref_base>>;

/// Sets that another set owns, in the order of its references.
using MXFOwnedSets = std::list<std::shared_ptr<const MetadataRoot>>;

} // namespace bryx
