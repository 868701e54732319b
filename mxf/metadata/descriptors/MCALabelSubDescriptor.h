#pragma once

#include <string>

#include "mxf/metadata/descriptors/SubDescriptor.h"

namespace bryx {

/// A label of multichannel audio (ST 377-4).
class BRYX_API MCALabelSubDescriptor : public SubDescriptor {
    BRYX_ABSTRACT_SET(MCALabelSubDescriptor, SubDescriptor, "060e2b34.02530101.0d010101.01016a00");

    /// The label of the channel, soundfield group or group of groups.
    BRYX_REQUIRED(LabelDictionaryID, labelDictionaryID, KLVKey, "060e2b34.0101010e.01030701.01000000");
    /// Identifies this set for links to it.
    BRYX_REQUIRED(LinkID, linkID, MXFUID, "060e2b34.0101010e.01030701.05000000");
    /// The symbol of the label, such as "chL" or "sg51".
    BRYX_REQUIRED(TagSymbol, tagSymbol, std::wstring, "060e2b34.0101010e.01030701.02000000");
    BRYX_OPTIONAL(TagName, tagName, std::wstring, "060e2b34.0101010e.01030701.03000000");
    /// The number of the channel in the essence, from 1.
    BRYX_OPTIONAL(ChannelID, channelID, std::uint32_t, "060e2b34.0101010e.0103040a.00000000");
    /// A language tag (RFC 5646).
    BRYX_OPTIONAL(SpokenLanguage, spokenLanguage, std::string, "060e2b34.0101010d.03010102.03150000");
    BRYX_OPTIONAL(Title, title, std::wstring, "060e2b34.0101010e.01051000.00000000");
    BRYX_OPTIONAL(TitleVersion, titleVersion, std::wstring, "060e2b34.0101010e.01051100.00000000");
    BRYX_OPTIONAL(TitleSubVersion, titleSubVersion, std::wstring, "060e2b34.0101010e.01051200.00000000");
    BRYX_OPTIONAL(Episode, episode, std::wstring, "060e2b34.0101010e.01051300.00000000");
    BRYX_OPTIONAL(PartitionKind, partitionKind, std::wstring, "060e2b34.0101010e.01040105.00000000");
    BRYX_OPTIONAL(PartitionNumber, partitionNumber, std::wstring, "060e2b34.0101010e.01040106.00000000");
    BRYX_OPTIONAL(AudioContentKind, audioContentKind, std::wstring, "060e2b34.0101010e.03020102.20000000");
    BRYX_OPTIONAL(AudioElementKind, audioElementKind, std::wstring, "060e2b34.0101010e.03020102.21000000");
    BRYX_OPTIONAL(Content, content, std::wstring, "060e2b34.0101010e.03020102.22000000");
    BRYX_OPTIONAL(UseClass, useClass, std::wstring, "060e2b34.0101010e.03020102.23000000");
    BRYX_OPTIONAL(ContentSubtype, contentSubtype, std::wstring, "060e2b34.0101010e.03020102.24000000");
    BRYX_OPTIONAL(ContentDifferentiator, contentDifferentiator, std::wstring, "060e2b34.0101010e.03020102.25000000");
    /// Whether the language is the original one, dubbed and so on.
    BRYX_OPTIONAL(SpokenLanguageAttribute, spokenLanguageAttribute, std::string, "060e2b34.0101010e.03020102.26000000");
    /// Language tags with commas between them.
    BRYX_OPTIONAL(AdditionalSpokenLanguages, additionalSpokenLanguages, std::string,
                  "060e2b34.0101010e.03020102.27000000");
    BRYX_OPTIONAL(AdditionalLanguageAttributes, additionalLanguageAttributes, std::string,
                  "060e2b34.0101010e.03020102.28000000");

protected:
    MCALabelSubDescriptor() = default;
};

using MCALabelSubDescriptorFactory = MXFSetFactory<MCALabelSubDescriptor>;

} // namespace bryx
