#pragma once

#include "mxf/essence/MXFGCStructureHandler.h"
#include "util/Api.h"

namespace bryx {

/// Forwards every call to the next handler. Derive from it to do more at some of them.
class BRYX_API MXFGCStructureFilter : public MXFGCStructureHandler {
public:
    /// @param next not owned
    explicit MXFGCStructureFilter(MXFGCStructureHandler& next) : next_(next) {}
    ~MXFGCStructureFilter() override;

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

protected:
    MXFGCStructureHandler& next() const noexcept { return next_; }

private:
    MXFGCStructureHandler& next_;
};

} // namespace bryx
