#pragma once

#include "klv/ErrorHandler.h"

namespace bryx {

/// Does nothing: findings are ignored and reading goes on where it can. Derive from it to override only what matters.
class BRYX_API DullErrorHandler : public ErrorHandler {
public:
    void setLocator(const Locator& locator) override;
    void startStream() override;
    void endStream() override;
    void warning(const util::uuid& id, const std::string& message) override;
    void error(const util::uuid& id, const std::string& message) override;
    void fatalError(const util::uuid& id, const std::string& message) override;
};

} // namespace bryx
