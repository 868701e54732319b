#include "validation/BRYXOverridableLocator.h"

#include <utility>

#include "util/assertion_failure.h"

namespace bryx {

using util::require;

BRYXOverridableLocator::~BRYXOverridableLocator() = default;

void BRYXOverridableLocator::setLocator(const Locator& locator) {
    current_ = &locator;
}

const std::streampos& BRYXOverridableLocator::streampos() const {
    if (isOverridden_) {
        return override_;
    }
    if (current_ == nullptr && hasLast_) {
        return last_;
    }
    require(current_ != nullptr, "has locator");
    return current_->streampos();
}

void BRYXOverridableLocator::overrideLocator(std::streampos position) {
    override_ = position;
    isOverridden_ = true;
}

void BRYXOverridableLocator::restoreLocator() {
    isOverridden_ = false;
}

void BRYXOverridableLocator::startStream() {
    try {
        streams_.push_back(current_);
    } catch (...) {
        leaveStream();
        throw;
    }
}

void BRYXOverridableLocator::endStream() {
    require(!streams_.empty(), "has locator");
    if (current_ != nullptr) {
        last_ = current_->streampos();
        hasLast_ = true;
    }
    streams_.pop_back();
    leaveStream();
}

void BRYXOverridableLocator::leaveStream() {
    current_ = streams_.empty() ? nullptr : streams_.back();
}

BRYXOverridableLocator::ErrorHandler::ErrorHandler(std::shared_ptr<bryx::ErrorHandler> handler,
                                                   std::shared_ptr<BRYXOverridableLocator> locator)
    : handler_(std::move(handler)), locator_(std::move(locator)) {
    require(handler_ != nullptr, "error handler is present");
    require(locator_ != nullptr, "has locator");
}

BRYXOverridableLocator::ErrorHandler::~ErrorHandler() = default;

template <class Call>
void BRYXOverridableLocator::ErrorHandler::beforeStream(Call call) {
    try {
        call();
    } catch (...) {
        // The stream does not start: its locator must not be asked any more.
        locator_->startStream();
        locator_->endStream();
        throw;
    }
}

void BRYXOverridableLocator::ErrorHandler::setLocator(const Locator& locator) {
    locator_->setLocator(locator);
    beforeStream([&] { handler_->setLocator(*locator_); });
}

void BRYXOverridableLocator::ErrorHandler::startStream() {
    beforeStream([&] { handler_->startStream(); });
    try {
        locator_->startStream();
    } catch (...) {
        handler_->endStream();
        throw;
    }
}

void BRYXOverridableLocator::ErrorHandler::endStream() {
    try {
        handler_->endStream();
    } catch (...) {
        locator_->endStream();
        throw;
    }
    locator_->endStream();
}

void BRYXOverridableLocator::ErrorHandler::warning(const util::uuid& id, const std::string& message) {
    handler_->warning(id, message);
}

void BRYXOverridableLocator::ErrorHandler::error(const util::uuid& id, const std::string& message) {
    handler_->error(id, message);
}

void BRYXOverridableLocator::ErrorHandler::fatalError(const util::uuid& id, const std::string& message) {
    handler_->fatalError(id, message);
}

} // namespace bryx
