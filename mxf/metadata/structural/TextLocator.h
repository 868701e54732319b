#pragma once

#include <string>

#include "mxf/metadata/structural/GenericLocator.h"

namespace bryx {

/// A locator for people.
class BRYX_API TextLocator : public GenericLocator {
    BRYX_SET(TextLocator, GenericLocator, "060e2b34.02530101.0d010101.01013300");

    BRYX_REQUIRED(LocatorName, locatorName, std::wstring, 0x4101);

protected:
    TextLocator() = default;
};

using TextLocatorFactory = MXFSetFactory<TextLocator>;

} // namespace bryx
