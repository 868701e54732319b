#pragma once

#include "klv/Locator.h"

namespace bryx {

/// Reports a position that somebody else keeps. The library's inputs count what they consume, so that no position is
/// ever asked of the stream; an application with an input of its own can do the same.
class BRYX_API InputLocator : public Locator {
public:
    /// @param position kept up to date by the input, which outlives the locator
    explicit InputLocator(const std::streampos& position) : position_(position) {}
    ~InputLocator() override;

    const std::streampos& streampos() const override { return position_; }

private:
    const std::streampos& position_;
};

} // namespace bryx
