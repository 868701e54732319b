#pragma once

#include <cstdint>

#include "klv/KLVCoding.h"
#include "klv/KLVKey.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "util/Api.h"

namespace bryx {

class KLVHandler;

/// Writes essence elements as KLV triplets: whole, or in chunks that come one after the other. What a splitter calls
/// when it reads is what this takes.
///
/// A failed requirement writes nothing.
class BRYX_API MXFGCEssenceCoder : public MXFGCEssenceHandler, public MXFGCChunkedEssenceHandler {
public:
    /// @param receiver of the triplets, such as the body receiver of an MXFWriter; not owned
    explicit MXFGCEssenceCoder(KLVHandler& receiver) : receiver_(receiver) {}
    ~MXFGCEssenceCoder() override;

    /// True: every element is written, and comes in chunks from whoever has it in chunks.
    bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& buffer, std::uint64_t& size) override;

    // An element, or with a chunked element in progress its next chunk. Requires "element has data" if there are octets;
    // of a chunk "correct chunked essence key", and "correct chunked length": that it stays within the length.

    void pictureElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void soundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void dataElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override;
    void compoundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                         std::uint64_t offset) override;

    /// The BER form of the lengths that follow, where it can hold them; 0x80 leaves the choice: 0x83 up to 0xFFFFFF
    /// octets, else 0x87. Requires "valid BER length form".
    void setLengthForm(std::uint8_t form) override;

    /// From now on @p form is preferred whatever setLengthForm() says. Requires "valid BER length form".
    void setFixedLengthForm(std::uint8_t form);

    /// The form that is preferred now.
    std::uint8_t lengthForm() const noexcept { return form_; }

    /// Begins an element at offset 0, and tells of its next chunk at another one; true. The offset that equals the length
    /// ends it.
    ///
    /// A length of UNKNOWN_KLV_LENGTH is supplied by a later call, or at the latest by the one that ends the element; the
    /// receiver must be able to correct it in place. Requires "not in chunked essence" and "wants essence" at offset 0;
    /// later "in chunked essence", "correct chunk offset" and "correct chunked length".
    bool startChunkedElement(const KLVKey& key, std::uint64_t length, std::uint64_t offset, std::uint64_t& size,
                             std::uint8_t*& buffer) override;

private:
    void element(const KLVKey& key, const std::uint8_t* data, std::uint64_t size);
    void startTriplet(const KLVKey& key, std::uint64_t length);
    void endChunkedElement();

    KLVHandler& receiver_;
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
    bool isFormFixed_ = false;

    // The chunked element in progress.
    bool isChunked_ = false;
    KLVKey key_;
    std::uint64_t length_ = 0;
    std::uint64_t offset_ = 0; ///< of the next chunk
};

} // namespace bryx
