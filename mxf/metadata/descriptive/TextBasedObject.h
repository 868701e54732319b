#pragma once

#include <string>

#include "mxf/metadata/descriptive/DescriptiveMetadataObject.h"

namespace bryx {

/// A text that describes (RP 2057). Its sets may be coded with BER item lengths, since texts can be long.
class BRYX_API TextBasedObject : public DescriptiveMetadataObject {
    BRYX_ABSTRACT_SET(TextBasedObject, DescriptiveMetadataObject, "060e2b34.02530101.0d010401.04030100");

public:
    static constexpr bool allowsBERLengths = true;

    /// The label of the scheme of what the text says.
    BRYX_REQUIRED(PayloadSchemeID, payloadSchemeID, KLVKey, "060e2b34.0101010d.04060806.00000000");
    /// The media type of the text, such as "text/xml" (RFC 2046).
    BRYX_REQUIRED(TextMIMEMediaType, textMIMEMediaType, std::wstring, "060e2b34.0101010d.04090202.00000000");
    /// The language of the text (RFC 5646).
    BRYX_REQUIRED(TextLanguageCode, textLanguageCode, std::wstring, "060e2b34.0101010d.03010102.02140000");
    BRYX_OPTIONAL(TextDataDescription, textDataDescription, std::wstring, "060e2b34.0101010d.03020106.03020000");

protected:
    TextBasedObject() = default;
};

using TextBasedObjectFactory = MXFSetFactory<TextBasedObject>;

} // namespace bryx
