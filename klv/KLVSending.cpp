#include "klv/KLVSending.h"

#include <algorithm>
#include <limits>

#include "klv/internal/KLVValueDelivery.h"

namespace bryx::klvutil {

namespace {

/// Octets in memory as deliverValue() takes them.
class MemorySource {
public:
    static constexpr std::uint64_t pieceSize = std::numeric_limits<std::uint64_t>::max();

    explicit MemorySource(const std::uint8_t* data) : next_(data) {}

    void skip(std::uint64_t size) { next_ += size; }
    void read(std::uint8_t* to, std::uint64_t size) { std::copy_n(readPiece(size), size, to); }
    const std::uint8_t* readPiece(std::uint64_t size) {
        const std::uint8_t* const piece = next_;
        next_ += size;
        return piece;
    }

private:
    const std::uint8_t* next_;
};

} // namespace

void sendValue(KLVHandler& handler, const std::uint8_t* data, std::uint64_t size) {
    MemorySource source(data);
    deliverValue(source, handler, size);
}

void sendIndividualItem(KLVHandler& handler, const KLVKey& key, const std::uint8_t* data, std::uint64_t size) {
    if (handler.startIndividualItem(key, size)) {
        sendValue(handler, data, size);
    }
    handler.endIndividualItem(key);
}

void sendLocalItem(KLVHandler& handler, std::uint32_t tag, const std::vector<std::uint8_t>& value) {
    if (handler.startLocalItem(tag, value.size())) {
        sendValue(handler, value.data(), value.size());
    }
    handler.endLocalItem(tag);
}

} // namespace bryx::klvutil
