#include "mxf/structure/internal/HeldLocator.h"

namespace bryx {

const std::streampos& HeldLocator::streampos() const {
    if (held_) {
        return heldPosition_;
    }
    return locator_ == nullptr ? position_ : locator_->streampos();
}

} // namespace bryx
