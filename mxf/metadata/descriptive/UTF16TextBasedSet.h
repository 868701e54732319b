#pragma once

#include <string>

#include "mxf/metadata/descriptive/TextBasedObject.h"

namespace bryx {

/// A text that stands in the set itself, in UTF-16 (RP 2057).
class BRYX_API UTF16TextBasedSet : public TextBasedObject {
    BRYX_SET(UTF16TextBasedSet, TextBasedObject, "060e2b34.02530101.0d010401.04020300");

    BRYX_REQUIRED(TextData, textData, std::wstring, "060e2b34.0101010d.03010220.03020000");

protected:
    UTF16TextBasedSet() = default;
};

using UTF16TextBasedSetFactory = MXFSetFactory<UTF16TextBasedSet>;

} // namespace bryx
