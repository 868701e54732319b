#pragma once

#include "mxf/metadata/descriptive/TextBasedObject.h"

namespace bryx {

/// A text that stands in a generic stream partition (RP 2057, ST 410).
class BRYX_API GenericStreamTextBasedSet : public TextBasedObject {
    BRYX_SET(GenericStreamTextBasedSet, TextBasedObject, "060e2b34.02530101.0d010401.04020100");

    /// The body stream ID of the partition.
    BRYX_REQUIRED(GenericStreamSID, genericStreamSID, std::uint32_t, "060e2b34.0101010d.01030408.00000000");

protected:
    GenericStreamTextBasedSet() = default;
};

using GenericStreamTextBasedSetFactory = MXFSetFactory<GenericStreamTextBasedSet>;

} // namespace bryx
