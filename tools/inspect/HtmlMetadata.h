#pragma once

#include <cstddef>
#include <string>

#include "inspect/HtmlSection.h"

/// The header metadata as a tree.
class HtmlMetadata final : public HtmlSection {
public:
    using HtmlSection::HtmlSection;

    void write();

private:
    static constexpr std::size_t maxMetadata = std::size_t{8} << 20U; ///< octets of properties in the page

    /// The name of a set and what tells it from others of its class.
    static std::string heading(const MetadataRoot& set);

    /// @param depth those on the uppermost levels are unfolded
    template <class Sets>
    void writeSets(const Sets& sets, std::size_t depth) {
        std::uint64_t omitted = 0;
        for (const auto& set : sets) {
            const auto number = links_.numberOf(*set);
            if (!number) {
                ++omitted;
            } else {
                writeSet(*set, *number, depth);
            }
        }
        writeOmitted(omitted, "sets");
    }

    /// A set that has a number is written in any case, as there may be links to it.
    void writeSet(const MetadataRoot& set, std::size_t number, std::size_t depth);

    void property(const std::string& term, const std::string& value, const char* cssClass = "");

    void writeProperty(const MetadataRoot& set, const MXFProperty& each, std::size_t depth);

    std::size_t metadataSize_ = 0; ///< octets of properties written
};
