#include "shared/ErrorPrinter.h"

#include <iostream>

#include "klv/Locator.h"

namespace {

constexpr std::uint64_t mostOfAKind = 5;

/// "134,463"
std::string inThousands(std::uint64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3) {
        text.insert(place - 3, 1, ',');
    }
    return text;
}

} // namespace

void ErrorPrinter::error(const util::uuid& id, const std::string& message) {
    if (isAmongFirst(id, message)) {
        error(locator_ == nullptr ? message : message + " at octet " + std::to_string(position()));
    } else {
        ++errors_;
    }
}

void ErrorPrinter::error(const std::string& message) {
    ++errors_;
    remark(message);
}

void ErrorPrinter::readingEnded(const klvutil::parse_error& failure, const std::string& summary) {
    if (summary != failure.what()) {
        remark(summary);
    }
    const auto reported = kinds_.find(failure.id());
    if (reported == kinds_.end() || reported->second.latest != failure.what()) {
        error(failure.what() + (" at octet " + std::to_string(std::streamoff{failure.position()})));
    }
}

void ErrorPrinter::remark(const std::string& message) {
    progress_.clear();
    std::cerr << program_ << ": " << message << '\n';
}

void ErrorPrinter::remark(const util::uuid& id, const std::string& message) {
    if (isAmongFirst(id, message)) {
        remark(message);
    }
}

bool ErrorPrinter::isAmongFirst(const util::uuid& id, const std::string& message) {
    Kind& kind = kinds_[id];
    kind.latest = message;
    if (++kind.count == 1) {
        kind.first = message;
    }
    return kind.count <= mostOfAKind;
}

void ErrorPrinter::finish() {
    for (const auto& [id, kind] : kinds_) {
        if (kind.count > mostOfAKind) {
            remark(kind.first + ": ... and " + inThousands(kind.count - mostOfAKind) + " more like it");
        }
    }
    kinds_.clear();
}

std::uint64_t ErrorPrinter::position() const {
    return locator_ == nullptr ? 0 : static_cast<std::uint64_t>(std::streamoff{locator_->streampos()});
}
