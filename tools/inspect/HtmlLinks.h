#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "inspect/Inspection.h"
#include "inspect/Layout.h"
#include "inspect/Words.h"

/// In octets from the first of the file.
std::uint64_t positionOf(const MetadataRoot& set);

/// Knows who has which anchor on the page, and makes the links to them.
class HtmlLinks {
public:
    static constexpr std::size_t maxSets = 4000;
    static constexpr std::size_t maxDepth = 100; ///< browsers nest elements some hundred levels deep

    struct Model {
        const FoundModel* found;
        const FoundModel* sameAs; ///< one before that says the same
    };

    using Findings = std::vector<std::size_t>; ///< numbers of findings

    /// @param layout null if the file cannot be read a second time
    HtmlLinks(const Inspection& inspection, const LayoutCollector* layout);

    const std::vector<Model>& models() const { return models_; }
    /// The findings that the page shows; their places are their numbers.
    const std::vector<const ReportedFinding*>& findings() const { return findings_; }
    /// By the positions of the blocks.
    const std::map<std::uint64_t, Findings>& ofBlock() const { return ofBlock_; }
    /// By the numbers of the sets.
    const std::map<std::size_t, Findings>& ofSet() const { return ofSet_; }

    /// The number of a set; none if the page does not show it.
    std::optional<std::size_t> numberOf(const MetadataRoot& set) const;

    /// The number of the set that @p position is in.
    std::optional<std::size_t> setAt(std::uint64_t position) const;

    const LayoutBlock* blockAt(std::uint64_t position) const;

    /// The number that @p position is, as a link to the block that it is in.
    std::string link(std::uint64_t position, const std::string& text) const;
    std::string link(std::uint64_t position) const { return link(position, std::to_string(position)); }

    klvutil::FindingLevel worst(const Findings& numbers) const;

    /// Says that there are findings and leads to the first of them.
    template <class Owner>
    std::string badge(const std::map<Owner, Findings>& owners, const Owner& owner) const {
        const auto found = owners.find(owner);
        if (found == owners.end()) {
            return {};
        }
        const Findings& numbers = found->second;
        return std::string(" <a class=\"badge ") + name(worst(numbers)) + "\" href=\"#finding-" +
               std::to_string(numbers.front()) + "\">" + quantity(numbers.size(), "finding") + "</a>";
    }

    /// The name of a set as a link to where it stands in the tree.
    std::string setLink(const MetadataRoot& set) const;

    /// Calls @p visit with the sets of the header metadata that came last, and that the page shows.
    template <class Visit>
    void forEachShownSet(const Visit& visit) const {
        const auto shown =
            std::find_if(models_.rbegin(), models_.rend(), [](const Model& model) { return model.sameAs == nullptr; });
        if (shown != models_.rend()) {
            for (const auto& root : shown->found->model) {
                forEachSet(*root, visit);
            }
        }
    }

private:
    struct SetPlace {
        std::uint64_t end;
        std::size_t number;
    };

    void numberSets();

    void numberSet(const MetadataRoot& set, std::size_t depth);

    void placeFindings();

    const Inspection& inspection_;
    const LayoutCollector* layout_;
    std::vector<Model> models_;
    std::map<const MetadataRoot*, std::size_t> numbers_; ///< of the sets that the page shows
    std::map<std::uint64_t, SetPlace> places_;           ///< of these, by their positions
    std::vector<const ReportedFinding*> findings_;
    std::map<std::uint64_t, Findings> ofBlock_;
    std::map<std::size_t, Findings> ofSet_;
};
