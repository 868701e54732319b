#pragma once

#include <cstdint>

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx {

/// Receives the essence elements of a Generic Container (ST 379-1). Whoever writes a container makes the same calls.
///
/// An element that is wanted is delivered by the operation of its kind: at once, or in pieces that follow one another
/// if the handler is an MXFGCChunkedEssenceHandler as well and asks for that. An empty element comes as a null pointer
/// and no octets; so does, with its length, one that is too long to be delivered at once into the reader's memory.
class BRYX_API MXFGCEssenceHandler {
public:
    virtual ~MXFGCEssenceHandler();

    /// An element begins.
    ///
    /// @param[out] buffer preset to null. If set, the whole element is read straight into it, and it is needed until the
    ///     element has been delivered. Elements of up to 64 KiB are delivered more quickly without one.
    /// @param[out] size preset to 0; the octets of @p buffer, at least @p length
    /// @return false to skip the element
    virtual bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& buffer, std::uint64_t& size) = 0;

    /// The octets of a picture element, or a piece of it.
    ///
    /// @param data valid during the call, unless it is the handler's own buffer
    /// @param offset of the piece in the element
    virtual void pictureElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                                std::uint64_t offset) = 0;
    /// The same of a sound element.
    virtual void soundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                              std::uint64_t offset) = 0;
    /// The same of a data element.
    virtual void dataElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) = 0;
    /// The same of a compound element.
    virtual void compoundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                                 std::uint64_t offset) = 0;

    /// The BER form of the lengths of the elements that follow: what a writer needs to repeat it.
    virtual void setLengthForm(std::uint8_t form) = 0;
};

} // namespace bryx
