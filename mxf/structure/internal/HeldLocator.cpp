#include "mxf/structure/internal/HeldLocator.h"

const std::streampos& HeldLocator::streampos() const {
    if (held_) {
        return heldPosition_;
    }
    return locator_ == nullptr ? position_ : locator_->streampos();
}
