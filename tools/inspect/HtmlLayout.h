#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "inspect/HtmlSection.h"

/// The file drawn to scale.
class HtmlLayout final : public HtmlSection {
public:
    using HtmlSection::HtmlSection;

    void write();

private:
    void writeFileBar();

    void writeBar(const std::vector<LayoutBlock>& blocks, const char* cssClass, bool links = true);

    void writeLegend();

    static std::string swatch(Region region, const std::string& style = {});

    static std::string swatch(const LayoutBlock& block);

    static std::string shortHeading(const LayoutPart& part, std::uint64_t number);

    /// What stands between one partition pack and the next, each to its own scale.
    void writeParts();

    void writePart(const LayoutPart& part, std::uint64_t number, bool unfolded);

    std::string contents(const LayoutPart& part, const LayoutBlock& block) const;
};
