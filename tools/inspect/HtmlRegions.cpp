#include "inspect/HtmlRegions.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>

#include "inspect/HtmlText.h"

namespace {

constexpr std::array<RegionStyle, 16> regionStyles{{{Region::RunIn, "run-in", "run-in"},
                                                    {Region::PartitionPack, "pack", "partition pack"},
                                                    {Region::HeaderMetadata, "header", "header metadata"},
                                                    {Region::Index, "index", "index"},
                                                    {Region::System, "system", "system"},
                                                    {Region::Picture, "picture", "picture"},
                                                    {Region::Sound, "sound", "sound"},
                                                    {Region::Data, "data", "data"},
                                                    {Region::Compound, "compound", "compound"},
                                                    {Region::GenericStream, "stream", "generic stream"},
                                                    {Region::Other, "other", "other"},
                                                    {Region::Fill, "fill", "fill"},
                                                    {Region::RandomIndex, "rip", "random index"},
                                                    {Region::Mixed, "mixed", "interleaved"},
                                                    {Region::Omitted, "omitted", "left out"},
                                                    {Region::Unread, "unread", "not readable"}}};

} // namespace

const RegionStyle& styleOf(Region region) {
    return *std::find_if(regionStyles.begin(), regionStyles.end(),
                         [&](const RegionStyle& style) { return style.region == region; });
}

std::string shares(const LayoutBlock& block) {
    std::string text;
    for (const auto& [region, octets] : block.octets) {
        text += (text.empty() ? "" : ", ") + std::string(styleOf(region).name) + " " + percentage(octets, block.size());
    }
    return text;
}

std::string stripes(const LayoutBlock& block) {
    constexpr double thinnest = 0.06;
    const auto thickness = [&](std::uint64_t octets) {
        return std::max(thinnest, static_cast<double>(octets) / static_cast<double>(block.size()));
    };
    double whole = 0;
    for (const auto& share : block.octets) {
        whole += thickness(share.second);
    }
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << "linear-gradient(";
    double end = 0;
    for (const auto& [region, octets] : block.octets) {
        const double begin = end;
        end += 100 * thickness(octets) / whole;
        text << (begin > 0 ? "," : "") << "var(--" << styleOf(region).cssClass << ") " << begin << "% " << end << '%';
    }
    text << ')';
    return text.str();
}
