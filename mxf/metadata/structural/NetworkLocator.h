#pragma once

#include <string>

#include "mxf/metadata/structural/GenericLocator.h"

namespace bryx {

/// A locator that programs can follow.
class BRYX_API NetworkLocator : public GenericLocator {
    BRYX_SET(NetworkLocator, GenericLocator, "060e2b34.02530101.0d010101.01013200");

    /// An absolute URL, or one relative to the folder of the file.
    BRYX_REQUIRED(URLString, urlString, std::wstring, 0x4001);

protected:
    NetworkLocator() = default;
};

using NetworkLocatorFactory = MXFSetFactory<NetworkLocator>;

} // namespace bryx
