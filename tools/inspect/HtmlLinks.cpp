#include "inspect/HtmlLinks.h"

#include <iterator>

#include "inspect/HtmlText.h"

std::uint64_t positionOf(const MetadataRoot& set) {
    return static_cast<std::uint64_t>(std::streamoff{set.getStartStreampos()});
}

HtmlLinks::HtmlLinks(const Inspection& inspection, const LayoutCollector* layout)
    : inspection_(inspection), layout_(layout) {
    numberSets();
    placeFindings();
}

std::optional<std::size_t> HtmlLinks::numberOf(const MetadataRoot& set) const {
    const auto number = numbers_.find(&set);
    return number == numbers_.end() ? std::nullopt : std::optional<std::size_t>(number->second);
}

std::optional<std::size_t> HtmlLinks::setAt(std::uint64_t position) const {
    const auto next = places_.upper_bound(position);
    if (next == places_.begin() || std::prev(next)->second.end <= position) {
        return std::nullopt;
    }
    return std::prev(next)->second.number;
}

const LayoutBlock* HtmlLinks::blockAt(std::uint64_t position) const {
    return layout_ == nullptr ? nullptr : layout_->blockAt(position);
}

std::string HtmlLinks::link(std::uint64_t position, const std::string& text) const {
    const LayoutBlock* const block = blockAt(position);
    return block == nullptr ? escaped(text)
                            : "<a href=\"#at-" + std::to_string(block->begin) + "\">" + escaped(text) + "</a>";
}

klvutil::FindingLevel HtmlLinks::worst(const Findings& numbers) const {
    klvutil::FindingLevel level = klvutil::FindingLevel::warning;
    for (const std::size_t number : numbers) {
        level = std::max(level, findings_[number]->level);
    }
    return level;
}

std::string HtmlLinks::setLink(const MetadataRoot& set) const {
    const auto number = numberOf(set);
    const char* const text = set.getDescription().name();
    return !number ? text : "<a href=\"#set-" + std::to_string(*number) + "\">" + text + "</a>";
}

void HtmlLinks::numberSets() {
    const FoundModel* previous = nullptr;
    inspection_.metadata.models().forEach([&](const FoundModel& found) {
        const bool same = previous != nullptr && repeats(found, *previous);
        models_.push_back({&found, same ? previous : nullptr});
        if (!same) {
            previous = &found;
            for (const auto& set : found.model) {
                numberSet(*set, 0);
            }
        }
    });
}

void HtmlLinks::numberSet(const MetadataRoot& set, std::size_t depth) {
    if (numbers_.size() == maxSets || depth == maxDepth) {
        return;
    }
    const std::size_t number = numbers_.size();
    numbers_.emplace(&set, number);
    if (set.hasStartStreampos() && set.hasEndStreampos()) {
        places_[positionOf(set)] = {static_cast<std::uint64_t>(std::streamoff{set.getEndStreampos()}), number};
    }
    for (const MXFProperty* property : set.getDescription().properties()) {
        for (const auto& owned : ownedBy(set, *property)) {
            numberSet(*owned, depth + 1);
        }
    }
}

void HtmlLinks::placeFindings() {
    inspection_.findings.forEach([&](const ReportedFinding& finding) {
        const std::size_t number = findings_.size();
        findings_.push_back(&finding);
        if (const LayoutBlock* block = blockAt(finding.position)) {
            ofBlock_[block->begin].push_back(number);
        }
        if (const auto set = setAt(finding.position)) {
            ofSet_[*set].push_back(number);
        }
    });
}
