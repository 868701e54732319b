#include "inspect/Findings.h"

#include <utility>

#include "klv/Locator.h"

const char* name(klvutil::FindingLevel level) {
    switch (level) {
    case klvutil::FindingLevel::warning:
        return "warning";
    case klvutil::FindingLevel::error:
        return "error";
    case klvutil::FindingLevel::fatal:
        break;
    }
    return "fatal";
}

void FindingCollector::endStream() {
    lastPosition_ = position();
    locator_ = nullptr;
}

void FindingCollector::warning(const util::uuid& id, const std::string& message) {
    add({klvutil::FindingLevel::warning, position(), id, message});
}

void FindingCollector::error(const util::uuid& id, const std::string& message) {
    add({klvutil::FindingLevel::error, position(), id, message});
}

void FindingCollector::fatalError(const util::uuid& id, const std::string& message) {
    add({klvutil::FindingLevel::fatal, position(), id, message});
}

void FindingCollector::readingEnded(const klvutil::parse_error& failure, const std::string& summary) {
    if (latest_ && latest_->id == failure.id() && latest_->message == failure.what()) {
        --counter(latest_->level);
        latest_.reset();
    }
    const std::streamoff position = failure.position();
    add({klvutil::FindingLevel::fatal, static_cast<std::uint64_t>(position), failure.id(), failure.what()});
    summary_ = summary == failure.what() ? std::string() : summary;
}

void FindingCollector::readingEnded(const klvutil::Finding& finding, const std::string& detail) {
    add({finding.level, position(), finding.id, klvutil::describe(finding, detail)});
}

std::uint64_t FindingCollector::position() const {
    return locator_ == nullptr ? lastPosition_ : static_cast<std::uint64_t>(std::streamoff{locator_->streampos()});
}

void FindingCollector::add(ReportedFinding finding) {
    ++counter(finding.level);
    if (latest_) {
        earlier_.add(*std::move(latest_));
    }
    latest_ = std::move(finding);
}
