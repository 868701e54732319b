#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "mxf/index/MXFIndexTableSegment.h"
#include "support/GoodClip.h"
#include "support/Octets.h"
#include "tools/Program.h"

TEST(Tools, TakeNoOptionForAFile) {
    const Folder folder;
    folder.put("in.mxf", GoodClip().octets);
    const auto expect = [&](const std::string& line, int status, const std::string& begin) {
        const Outcome result = run("cd " + folder.path("") + " && " + line);
        EXPECT_EQ(result.status, status) << line;
        EXPECT_EQ(result.text.substr(0, begin.size()), begin) << line;
    };
    expect("make_clip --help", 0, "Writes a clip from nothing");
    expect("extract --help", 0, "Writes the essence of one track");
    expect("inspect --help", 0, "Tells what an MXF file holds");
    expect("rewrap --help", 0, "Writes an MXF file again");
    for (const std::string line :
         {"make_clip -x", "make_clip a b", "make_clip a 70000", "make_clip -", "extract in.mxf 1",
          "inspect in.mxf --html -", "rewrap in.mxf --such", "rewrap in.mxf"}) {
        expect(line, 2, line.substr(0, line.find(' ')) + ": ");
    }
    for (const char* const name : {"--help", "-x", "-", "a", "--such"}) {
        EXPECT_FALSE(folder.has(name)) << name;
    }
}

TEST(Tools, NameTheFileThatCannotBeWritten) {
    const Folder folder;
    folder.put("in.mxf", GoodClip().octets);
    const auto expect = [&](const std::string& line, const std::string& text) {
        const Outcome result = run("cd " + folder.path("") + " && " + line);
        EXPECT_EQ(result.status, 1) << line;
        EXPECT_EQ(result.text, text + '\n') << line;
    };
    expect("make_clip nowhere/a", "make_clip: nowhere/a: No such file or directory");
    expect("make_clip /dev/full", "make_clip: /dev/full: No space left on device");
    expect("extract in.mxf 0x15010201 nowhere/a", "extract: nowhere/a: No such file or directory");
    expect("extract in.mxf 0x15010201 /dev/full", "extract: /dev/full: No space left on device");
    expect("extract in.mxf 0x15010201 - >/dev/full", "extract: standard output: No space left on device");
    expect("inspect in.mxf --html nowhere/a >/dev/null", "inspect: nowhere/a: No such file or directory");
    expect("inspect in.mxf >/dev/full", "inspect: standard output: No space left on device");
    for (const char* const line : {"extract nowhere/a 1 out", "inspect nowhere/a", "rewrap nowhere/a out"}) {
        expect(line, std::string(line, std::string(line).find(' ')) + ": nowhere/a: No such file or directory");
    }
}

TEST(Tools, TellPeopleFirstHowAFileEnds) {
    const Folder folder;
    const GoodClip clip;
    const GoodClip::Triplet third = clip.all(GoodClip::picture).at(2);
    folder.put("in.mxf", clip.octets.substr(0, third.value + 10));
    const std::string end = "the file ends within a picture element; 2 whole content packages before it\n";
    const std::string place = " at octet " + std::to_string(third.position) + '\n';
    const auto outputOf = [&](const std::string& line) { return run("cd " + folder.path("") + " && " + line).text; };
    EXPECT_EQ(outputOf("extract in.mxf 0x15010201 out"), "extract: " + end + "extract: unsuccessful read()" + place);
    EXPECT_EQ(outputOf("rewrap in.mxf out"), "rewrap: " + end + "rewrap: unsuccessful seekg()" + place +
                                                 "rewrap: what is whole up to there is copied\n");
    const std::string report = outputOf("inspect in.mxf");
    const std::string beginning = "File: in.mxf\nNot read to its end: " + end;
    EXPECT_EQ(report.substr(0, beginning.size()), beginning);
    EXPECT_NE(report.find("unsuccessful seekg()"), std::string::npos);

    // What is wrong with a file that does not end early is told once.
    folder.put("in.mxf", clip.octets + "what is no key");
    for (const char* const tool : {"extract in.mxf 0x15010201 out", "rewrap in.mxf out"}) {
        const std::string text = outputOf(tool);
        const std::string line = text.substr(text.find(": ") + 2, text.find(" at octet") - text.find(": ") - 2);
        EXPECT_EQ(text.find(line, text.find(line) + 1), std::string::npos) << text;
    }
}

TEST(Tools, SayWithinWhatAFileEnds) {
    const Folder folder;
    const std::string octets = GoodClip().octets;
    const auto place = [&](const KLVKey& key, int count) {
        std::size_t found = octets.find(octets::key(key));
        for (; count > 1; --count) {
            found = octets.find(octets::key(key), found + 1);
        }
        return found;
    };
    const auto expect = [&](std::size_t size, const std::string& within, int packages) {
        folder.put("cut.mxf", octets.substr(0, size));
        const std::string before = "; " + (packages == 0 ? "no" : std::to_string(packages)) + " whole content package" +
                                   (packages == 1 ? "" : "s") + " before it\n";
        const auto begins = [&](const std::string& line, const std::string& text) {
            const Outcome result = run("cd " + folder.path("") + " && " + line);
            EXPECT_EQ(result.status, 1) << line;
            EXPECT_EQ(result.text.substr(0, text.size()), text) << line;
        };
        begins("extract cut.mxf 0x15010201 essence", "extract: the file ends within " + within + before);
        begins("inspect cut.mxf", "File: cut.mxf\nNot read to its end: the file ends within " + within + before);
        // Of a pipe it is known for elements alone.
        const bool isElement = within.find("element") != std::string::npos;
        begins("cat cut.mxf | inspect /dev/stdin", "File: /dev/stdin\nNot read to its end: the file ends within " +
                                                       (isElement ? within : "a KLV triplet") + before);
    };
    expect(place(GoodClip::picture, 8) + 50, "a picture element", 7);
    expect(place(GoodClip::sound1, 1) + 30, "a sound element", 0);
    expect(place(mxfutil::sdtiCPSystemMetadataKey, 9) + 30, "a system element", 8);
    expect(place(klvutil::key("060e2b34.02530101.0d010101.01012f00"), 1) + 30, "header metadata", 0);
    expect(place(klvutil::key("060e2b34.02050101.0d010201.01030400"), 2) + 30, "a partition pack", 5);
    expect(place(mxfutil::randomIndexPackKey, 1) + 30, "the random index pack", 10);
    expect(place(mxfutil::indexTableSegmentKey, 1) + 30, "an index table segment", 5);
    // Within the key of the next content package, and of an element.
    expect(place(mxfutil::sdtiCPSystemMetadataKey, 4) + 8, "a KLV triplet", 3);
    expect(place(GoodClip::picture, 8) + 8, "a KLV triplet", 7);
}
