#pragma once

#include <cstdint>
#include <map>

#include "klv/KLVHandler.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "util/Api.h"

namespace bryx {

/// Codes primed sets as local sets, with the tags of a primer that stands nowhere in the stream: as sets outside the
/// header metadata are coded. MXFFormatMetadataCoder codes header metadata.
///
/// Calls come in the order startMetadata, primer, primedSet for each set, endMetadata. The stream that the coder sends
/// its triplets to is started and ended by others.
class BRYX_API MXFMetadataCoder : public MXFMetadataHandler {
public:
    /// @param next not owned
    explicit MXFMetadataCoder(KLVHandler& next);
    ~MXFMetadataCoder() override;
    MXFMetadataCoder(const MXFMetadataCoder&) = delete;
    MXFMetadataCoder& operator=(const MXFMetadataCoder&) = delete;

    /// The BER form of the lengths of triplets, and of item lengths where those are BER lengths: 0x83 unless set.
    /// Longer values get 0x87. Requires "valid BER length form".
    void setBERLengthForm(std::uint8_t form);

    /// Requires "before start".
    void startMetadata() override;
    void endMetadata() override;
    /// Requires "before primer".
    void primer(const Primer& primer) override;
    /// True: all sets can be coded.
    bool handlesSet(const KLVKey& key) override;
    /// Requires "before primed set", "valid property key" of each property, and "supported tag type" of the key: tags
    /// of two octets.
    void primedSet(MXFPrimedSet& set) override;

protected:
    /// Codes the primer itself; here it is not coded.
    virtual void codePrimer(const Primer& primer);

    /// Tells the BER form of a length that comes next.
    void sendLengthForm(std::uint64_t length);

    KLVHandler& next() noexcept { return next_; }

private:
    enum class State : std::uint8_t { BeforeStart, BeforePrimer, BeforePrimedSet };

    KLVHandler& next_;
    State state_ = State::BeforeStart;
    std::uint8_t form_ = 0x83;
    std::map<KLVKey, std::uint16_t> tags_;
};

/// Codes header metadata: the primer pack and the sets (ST 377-1 §9).
class BRYX_API MXFFormatMetadataCoder : public MXFMetadataCoder {
public:
    using MXFMetadataCoder::MXFMetadataCoder;
    ~MXFFormatMetadataCoder() override;

private:
    /// Requires "consistent primer key -> tag" and "consistent primer tag -> key": that no label and no tag occurs
    /// twice.
    void codePrimer(const Primer& primer) override;
};

} // namespace bryx
