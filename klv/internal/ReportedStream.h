#pragma once

#include "klv/ErrorHandler.h"

namespace bryx {

class Locator;

namespace klvutil {

/// Runs @p read as a stream of @p errorHandler, which may be null: it gets the locator and the start of the stream
/// first, and the end of the stream last, also when an exception leaves.
template <class Read>
void reportedStream(ErrorHandler* errorHandler, const Locator& locator, Read read) {
    if (errorHandler == nullptr) {
        read();
        return;
    }
    errorHandler->setLocator(locator);
    errorHandler->startStream();
    try {
        read();
    } catch (...) {
        errorHandler->endStream();
        throw;
    }
    errorHandler->endStream();
}

} // namespace klvutil

} // namespace bryx
