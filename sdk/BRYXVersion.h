#pragma once

#include <string>

#include "klv/KLVValueTypes.h"
#include "util/Api.h"

namespace bryx {

/// The version of the library: what Identification.toolkitVersion says of files that it writes.
BRYX_API MXFProductVersion getBRYXToolkitVersion();

/// The name of the library and its platform: what Identification.platform says of files that it writes.
BRYX_API std::wstring getBRYXPlatform();

} // namespace bryx
