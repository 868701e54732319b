#pragma once

#include "klv/Locator.h"

namespace bryx {

/// Shows the position of the locator it follows, or the last one that it was given; or else one that it holds: that of a
/// pack which is dealt with after it has been passed. When it follows none any more, the last position stays.
class HeldLocator final : public Locator {
public:
    const std::streampos& streampos() const override;

    void follow(const Locator& locator) {
        locator_ = &locator;
        held_ = false;
    }
    void unfollow() {
        position_ = streampos();
        locator_ = nullptr;
    }

    /// For whom the end of what could be followed is not told. It must not follow a locator.
    void show(std::streampos position) { position_ = position; }

    void hold(std::streampos position) {
        heldPosition_ = position;
        held_ = true;
    }
    void release() { held_ = false; }

private:
    const Locator* locator_ = nullptr;
    bool held_ = false;
    std::streampos heldPosition_ = 0;
    std::streampos position_ = 0;
};

} // namespace bryx
