#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "mxf/essence/MXFGCStructureHandler.h"

namespace bryx {

/// The structure receiver: has the writer told where a content package starts, which is where a partition may end before it,
/// and passes calls on as long as essence is written.
class BRYXPartitionCutter final : public MXFGCStructureHandler {
public:
    /// @param beforePackage called before a content package starts; what it returns is held until then
    explicit BRYXPartitionCutter(std::function<std::shared_ptr<void>()> beforePackage)
        : beforePackage_(std::move(beforePackage)) {}

    void open(MXFGCStructureHandler& next) { next_ = &next; }
    void close() { next_ = nullptr; }

    // The stream is the writer's.
    void startStream(std::uint64_t kagSize) override;
    void endStream() override;
    void startContentPackage() override;
    void endContentPackage() override;
    void startElement(const KLVKey& key) override;
    void endElement(const KLVKey& key) override;
    void startPad(std::uint64_t extraSize) override;
    void endPad() override;
    void startAlign(std::uint64_t alignment) override;
    void endAlign() override;

private:
    /// Requires "in essence".
    MXFGCStructureHandler& next() const;

    std::function<std::shared_ptr<void>()> beforePackage_;
    MXFGCStructureHandler* next_ = nullptr;
};

} // namespace bryx
