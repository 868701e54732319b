#include "mxf/structure/internal/HeldLocator.h"

const std::streampos& HeldLocator::streampos() const {
    return held_ || locator_ == nullptr ? position_ : locator_->streampos();
}
