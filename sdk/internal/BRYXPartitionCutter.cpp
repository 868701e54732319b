#include "sdk/internal/BRYXPartitionCutter.h"

#include "util/assertion_failure.h"

namespace bryx {

MXFGCStructureHandler& BRYXPartitionCutter::next() const {
    util::require(next_ != nullptr, "in essence");
    return *next_;
}

void BRYXPartitionCutter::startStream(std::uint64_t /*kagSize*/) {}

void BRYXPartitionCutter::endStream() {}

void BRYXPartitionCutter::startContentPackage() {
    MXFGCStructureHandler& receiver = next();
    const std::shared_ptr<void> held = beforePackage_();
    receiver.startContentPackage();
}

void BRYXPartitionCutter::endContentPackage() {
    next().endContentPackage();
}

void BRYXPartitionCutter::startElement(const KLVKey& key) {
    next().startElement(key);
}

void BRYXPartitionCutter::endElement(const KLVKey& key) {
    next().endElement(key);
}

void BRYXPartitionCutter::startPad(std::uint64_t extraSize) {
    next().startPad(extraSize);
}

void BRYXPartitionCutter::endPad() {
    next().endPad();
}

void BRYXPartitionCutter::startAlign(std::uint64_t alignment) {
    next().startAlign(alignment);
}

void BRYXPartitionCutter::endAlign() {
    next().endAlign();
}

} // namespace bryx
