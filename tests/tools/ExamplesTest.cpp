#include <string>

#include <gtest/gtest.h>

#include "support/GoodClip.h"
#include "tools/Program.h"

namespace {

class Examples : public testing::Test {
protected:
    /// What a line of shell prints, run where clip.mxf is.
    std::string outputOf(const std::string& line) const { return run("cd " + folder.path("") + " && " + line).text; }

    Folder folder;
    const GoodClip clip;
    const std::string path = folder.put("clip.mxf", clip.octets);
};

/// The lines of @p text that have @p part.
std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

} // namespace

TEST_F(Examples, TellOfAFile) {
    const std::string tracks = outputOf("tracks clip.mxf");
    EXPECT_EQ(count(tracks, "MaterialPackage urn:smpte:umid:"), 2U) << tracks;
    EXPECT_EQ(count(tracks, ", 25/1 edit units a second, 10 of them"), 16U) << tracks;

    EXPECT_EQ(outputOf("findings clip.mxf"), "");
    folder.put("cut.mxf", clip.octets.substr(0, clip.all(GoodClip::picture).at(2).value + 10));
    EXPECT_EQ(count(outputOf("findings cut.mxf"), "not read to the end: unsuccessful"), 1U);

    const std::string essence = outputOf("essence clip.mxf");
    EXPECT_EQ(count(essence, ": 10 elements, "), 3U) << essence;
    EXPECT_EQ(count(essence, "16020101: 10 elements, 1920 octets, "), 1U) << essence;
    EXPECT_EQ(count(outputOf("essence cut.mxf"), "15010201: 2 elements, "), 1U);
}

TEST_F(Examples, FindEditUnits) {
    const std::string places = outputOf("edit_units clip.mxf");
    EXPECT_EQ(count(places, "essence container 1\n"), 1U) << places;
    EXPECT_EQ(count(places, " at "), 10U) << places;
    EXPECT_EQ(count(places, "  0 at 0\n"), 1U) << places;
}

TEST_F(Examples, WrapSound) {
    // A second, and the beginning of a further content package.
    std::string samples(std::size_t{48000} * 4 + 100, '\0');
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<char>(i * 7 % 256);
    }
    folder.put("samples", samples);
    EXPECT_EQ(outputOf("wrap_sound samples out.mxf && findings out.mxf"), "");
    EXPECT_EQ(outputOf("extract out.mxf 0x16010101 essence"), "");
    EXPECT_TRUE(folder.get("essence") == samples + std::string(1920 * 4 - 100, '\0'));
    EXPECT_EQ(count(outputOf("tracks out.mxf"), ", 26 of them"), 4U);
    EXPECT_EQ(count(outputOf("inspect out.mxf"), "closed, complete"), 3U);
}
