#pragma once

#include <string>

#include "mxf/metadata/descriptive/TextBasedObject.h"

namespace bryx {

/// A text that stands in the set itself, in UTF-8 (RP 2057).
class BRYX_API UTF8TextBasedSet : public TextBasedObject {
    BRYX_SET(UTF8TextBasedSet, TextBasedObject, "060e2b34.02530101.0d010401.04020200");

    /// In UTF-8.
    BRYX_REQUIRED(TextData, textData, std::string, "060e2b34.0101010d.03010220.03010000");

protected:
    UTF8TextBasedSet() = default;
};

using UTF8TextBasedSetFactory = MXFSetFactory<UTF8TextBasedSet>;

} // namespace bryx
