#pragma once

#include <cstdint>
#include <optional>

#include "klv/KLVKey.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"

/// Knows which element of a Generic Container is read, and how many content packages were before it.
class PackageCounter : public DullMXFGCStructureHandler {
public:
    void endContentPackage() override { ++wholePackages_; }
    void startElement(const KLVKey& key) override { element_ = key; }
    void endElement(const KLVKey& /*key*/) override { element_.reset(); }

    /// Those that have ended.
    std::uint64_t wholePackages() const { return wholePackages_; }
    /// The key of the element that has started and not ended.
    const std::optional<KLVKey>& element() const { return element_; }

private:
    std::uint64_t wholePackages_ = 0;
    std::optional<KLVKey> element_;
};
