#pragma once

#include <cstdint>
#include <optional>

#include "klv/KLVKey.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"

/// Knows which element of a Generic Container is read, and how many content packages were before it.
class PackageCounter : public DullMXFGCStructureHandler {
public:
    void startContentPackage() override { elements_ = 0; }
    void endContentPackage() override {
        ++ended_;
        elementsBefore_ = elements_;
        elements_ = 0;
    }
    void startElement(const KLVKey& key) override { element_ = key; }
    void endElement(const KLVKey& /*key*/) override {
        element_.reset();
        ++elements_;
    }

    /// Those that have ended, and the last one if it has as many elements as the one before.
    std::uint64_t wholePackages() const {
        return ended_ + (!element_ && elements_ > 0 && elements_ == elementsBefore_ ? 1 : 0);
    }
    /// The key of the element that has started and not ended.
    const std::optional<KLVKey>& element() const { return element_; }

private:
    std::uint64_t ended_ = 0;
    std::uint64_t elements_ = 0; ///< that have ended of the content package that is read
    std::uint64_t elementsBefore_ = 0;
    std::optional<KLVKey> element_;
};
