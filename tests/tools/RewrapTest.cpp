#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/index/DullMXFIndexHandler.h"
#include "mxf/index/MXFIndexParser.h"
#include "mxf/metadata/descriptors/WaveAudioDescriptor.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/metadata/structural/SourcePackage.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "support/ExpectLog.h"
#include "support/GoodClip.h"
#include "support/Octets.h"
#include "support/Recorders.h"
#include "tools/Program.h"

namespace {

/// What a file holds, by reading it.
class Content : public DullMXFStructureHandler,
                private DullMXFGCStructureHandler,
                private MXFGCEssenceHandler,
                private DullMXFIndexHandler {
public:
    explicit Content(const std::string& octets) {
        FindingRecorder errors(findings);
        MXFGCSplitter splitter(this, nullptr, this);
        MXFIndexParser index(*this);
        Log events;
        EventRecorder generic(events);
        MXFReader reader;
        reader.setStructureHandler(this);
        reader.setBodyHandler(&splitter);
        reader.setIndexHandler(&index);
        reader.setGenericStreamHandler(&generic);
        reader.setErrorHandler(&errors);
        std::istringstream file(octets);
        try {
            reader.read(file);
        } catch (const klvutil::parse_error& error) {
            findings.emplace_back(error.what());
        }
        genericStream = generic.values.substr(0, generic.values.find('\0')); // the rest is fill
    }

    std::vector<std::string> packages; ///< the octets of their elements
    std::string genericStream;         ///< the octets of its values
    std::vector<MXFPartitionStatus> statuses;
    std::int64_t indexed = 0; ///< edit units, in the segments of the footer partition
    Log findings;

    /// Whether the header partition is, or the footer partition, which is never open, is complete.
    bool isClosed() const {
        return statuses.front() == MXFPartitionStatus::ClosedComplete ||
               statuses.front() == MXFPartitionStatus::ClosedIncomplete ||
               statuses.back() == MXFPartitionStatus::ClosedComplete;
    }

private:
    void startPartition(const KLVKey& key, const MXFPartitionPack& /*pack*/, std::uint64_t /*start*/) override {
        statuses.push_back(mxfutil::partitionStatus(key));
        indexed = 0;
    }
    void indexTableSegment(const MXFIndexTableSegment& segment) override { indexed += segment.indexDuration; }
    void startContentPackage() override { packages.emplace_back(); }
    bool startElement(const KLVKey& /*key*/, std::uint64_t /*length*/, std::uint8_t*& /*buffer*/,
                      std::uint64_t& /*size*/) override {
        return true;
    }
    void startElement(const KLVKey& /*key*/) override {}
    void pictureElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                        std::uint64_t /*offset*/) override {
        packages.back().append(data, data + size);
    }
    void soundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override {
        pictureElement(key, data, size, offset);
    }
    void dataElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) override {
        pictureElement(key, data, size, offset);
    }
    void compoundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                         std::uint64_t offset) override {
        pictureElement(key, data, size, offset);
    }
    void setLengthForm(std::uint8_t /*form*/) override {}
};

/// A clip whose pictures tell where they come from.
GoodClip recordedClip(const ClipOptions& options) {
    GoodClip clip(options);
    for (const GoodClip::Triplet& picture : clip.all(GoodClip::picture)) {
        for (std::uint64_t at = picture.value; at < picture.end; ++at) {
            clip.octets[at] = static_cast<char>(at * 31 % 251);
        }
    }
    return clip;
}

class Rewrap : public testing::Test {
protected:
    /// Writes the first @p size octets of @p file again.
    Outcome rewrap(const std::string& file, std::uint64_t size, const std::string& options = {}) const {
        folder.put("in.mxf", file.substr(0, size));
        return run("rewrap " + folder.path("in.mxf") + ' ' + folder.path("out.mxf") + ' ' + options);
    }
    Content written() const { return Content(folder.get("out.mxf")); }

    Folder folder;
};

} // namespace

TEST_F(Rewrap, KeepsWhatIsWholeOfAFileThatBreaksOff) {
    ClipOptions withSound;
    withSound.frames = 3;
    withSound.pictureSize = 30;
    withSound.partitionDuration = 2;
    withSound.hasGenericStream = true;
    for (const ClipOptions& options : {smallClip(), withSound}) {
        const GoodClip clip = recordedClip(options);
        const Content whole(clip.octets);
        ASSERT_EQ(whole.packages.size(), static_cast<std::size_t>(options.frames));
        const auto last = clip.all(options.hasSound ? GoodClip::sound2 : GoodClip::picture);
        const GoodClip::Triplet generic = clip.all(keys::item).front();
        // From the generic stream on: all places where a triplet begins or ends, those beside them, and some more.
        std::set<std::uint64_t> places;
        for (std::uint64_t at = clip.packs().at(1).position; at < clip.octets.size(); at += 149) {
            places.insert(at);
        }
        for (const auto& triplets :
             {clip.packs(), last, clip.all(GoodClip::picture), clip.all(klvutil::fillKey), clip.all(keys::item)}) {
            for (const GoodClip::Triplet& triplet : triplets) {
                places.insert({triplet.position + 1, triplet.end - 1, triplet.end});
            }
        }
        places.erase(places.begin(), places.lower_bound(clip.packs().at(1).position));
        places.erase(places.lower_bound(clip.packs().back().position), places.end());
        for (const std::uint64_t place : places) {
            const std::string what = "cut at " + std::to_string(place) + ": ";
            const Outcome result = rewrap(clip.octets, place);
            ASSERT_EQ(result.status, 1) << what << result.text;
            ASSERT_EQ(result.text.find("assertion failure"), std::string::npos) << what << result.text;
            const Content content = written();
            ASSERT_LOG(content.findings, "") << what;
            const auto packages = static_cast<std::size_t>(std::count_if(
                last.begin(), last.end(), [&](const GoodClip::Triplet& element) { return element.end <= place; }));
            ASSERT_EQ(content.packages,
                      std::vector<std::string>(whole.packages.begin(),
                                               whole.packages.begin() + static_cast<std::ptrdiff_t>(packages)))
                << what << result.text;
            ASSERT_FALSE(content.isClosed()) << what;
            ASSERT_EQ(content.genericStream, generic.end <= place ? "abc" : "") << what << result.text;
        }
    }
}

TEST_F(Rewrap, KeepsTheWholeEditUnitsOfAClip) {
    ClipOptions options;
    options.frames = 20;
    options.pictureSize = 1000;
    options.hasSystemItems = options.hasSound = false;
    options.isClip = options.isConstant = true;
    options.placement = ClipOptions::Placement::BeforeEssence;
    const GoodClip clip = recordedClip(options);
    const GoodClip::Triplet element = clip.all(GoodClip::picture).front();
    for (const std::uint64_t size : {20000U, 19999U, 19000U, 10500U, 1000U, 999U, 0U}) {
        const std::string what = std::to_string(size) + " octets: ";
        const Outcome result = rewrap(clip.octets, element.value + size);
        EXPECT_EQ(result.status, 1) << what << result.text;
        const std::uint64_t units = size / 1000;
        const Content content = written();
        EXPECT_LOG(content.findings, "") << what;
        EXPECT_FALSE(content.isClosed()) << what;
        ASSERT_EQ(content.packages.size(), units == 0 ? 0U : 1U) << what << result.text;
        if (units != 0) {
            EXPECT_TRUE(content.packages.front() == clip.octets.substr(element.value, units * 1000)) << what;
            EXPECT_EQ(content.indexed, static_cast<std::int64_t>(units)) << what;
        }
    }
}

TEST_F(Rewrap, KeepsTheWholeEditUnitsOfSoundWithoutIndex) {
    const auto octetsLeft = [&](Rational sampleRate, const KLVKey& container, std::uint64_t size) {
        ClipOptions options;
        options.frames = 20;
        options.pictureSize = 1000;
        options.hasSystemItems = options.hasSound = false;
        options.isClip = options.isConstant = true;
        options.placement = ClipOptions::Placement::Footer;
        options.change = [&](Preface& preface) {
            const auto sound = WaveAudioDescriptor::create();
            sound->setSampleRate(sampleRate);
            sound->setAudioSamplingRate({48000, 1});
            sound->setBlockAlign(6);
            sound->setEssenceContainer(container);
            std::dynamic_pointer_cast<SourcePackage>(preface.getContentStorage()->getPackageAt(1))
                ->setDescriptor(sound);
        };
        const GoodClip clip = recordedClip(options);
        rewrap(clip.octets, clip.all(GoodClip::picture).front().value + size);
        const Content content = written();
        return content.packages.empty() ? 0 : content.packages.front().size();
    };
    constexpr KLVKey clips = klvutil::key("060e2b34.04010101.0d010301.02060200");
    EXPECT_EQ(octetsLeft({48000, 1}, GoodClip::waves, 13000), 12996U); // an edit unit is a sample
    EXPECT_EQ(octetsLeft({48, 1}, clips, 13000), 12000U);
    EXPECT_EQ(octetsLeft({48, 1}, GoodClip::waves, 13000), 0U); // the first content package
    EXPECT_EQ(octetsLeft({30000, 1001}, clips, 13000), 12996U); // edit units differ in size
    EXPECT_EQ(octetsLeft({0, 0}, clips, 13000), 12996U);
}

TEST_F(Rewrap, SaysWhatIsMeantWhenFilesCannotBeUsed) {
    const GoodClip clip;
    const std::string in = folder.put("in.mxf", clip.octets);
    const std::string out = folder.path("out.mxf");
    const auto expect = [&](const std::string& line, int status, const std::string& text) {
        const Outcome result = run("cd " + folder.path("") + " && " + line);
        EXPECT_EQ(result.status, status) << line;
        EXPECT_EQ(result.text.substr(0, result.text.find('\n')), text) << line << '\n' << result.text;
    };
    expect("cat in.mxf | rewrap /dev/stdin out.mxf", 1,
           "rewrap: /dev/stdin: cannot seek, and is to be read twice; make it a file first");
    expect("rewrap in.mxf -", 2, "rewrap: OUT must be a file, not standard output");
    EXPECT_FALSE(folder.has("-"));
    expect("rewrap in.mxf nowhere/out.mxf", 1, "rewrap: nowhere/out.mxf: No such file or directory");
    expect("rewrap in.mxf /dev/full", 1, "rewrap: /dev/full: No space left on device");
    ClipOptions options;
    options.frames = 100;
    options.pictureSize = 2000;
    const GoodClip large(options);
    folder.put("in.mxf", large.octets);
    for (const int blocks : {1, 16, 64, 100, 300}) {
        expect("trap '' XFSZ; ulimit -f " + std::to_string(blocks) + "; rewrap in.mxf out.mxf", 1,
               "rewrap: out.mxf: File too large");
    }
    expect("trap '' XFSZ; ulimit -f 64; rewrap in.mxf out.mxf --verify", 1, "rewrap: out.mxf: File too large");
    folder.put("in.mxf", "what is no MXF file, and long enough to be looked through for the key of a partition pack");
    EXPECT_EQ(run("rewrap " + in + ' ' + out).status, 1);
}

TEST_F(Rewrap, SaysThatSomethingIsCopiedWhenItIs) {
    const GoodClip clip(smallClip());
    const auto expect = [&](std::uint64_t size, const std::string& options, const std::string& otherwise) {
        std::filesystem::remove(folder.path("out.mxf"));
        const Outcome result = rewrap(clip.octets, size, options);
        EXPECT_EQ(result.status, 1) << size << ": " << result.text;
        const bool isSaid = result.text.find("rewrap: what is whole up to there is copied\n") != std::string::npos;
        EXPECT_EQ(isSaid, folder.has("out.mxf")) << size << ": " << result.text;
        if (!isSaid) {
            EXPECT_EQ(result.text.find(" copied") != std::string::npos, otherwise.find(" copied") != std::string::npos)
                << size << ": " << result.text;
            EXPECT_NE(result.text.find("rewrap: " + otherwise + '\n'), std::string::npos)
                << size << ": " << result.text;
        }
        return isSaid;
    };
    expect(0, "", "the file is empty");
    const std::uint64_t body = clip.packs().at(1).position;
    for (std::uint64_t size = 1; size < body; size += 53) {
        expect(size, "", "there is no whole header metadata; nothing can be copied");
    }
    for (const KLVKey& key : {keys::primer, klvutil::fillKey}) {
        expect(clip.all(key).front().end, "", "there is no whole header metadata; nothing can be copied");
    }
    EXPECT_TRUE(expect(body, "", ""));
    EXPECT_TRUE(expect(body + 30, "", ""));
    EXPECT_FALSE(expect(body + 30, "--keep-layout", "what breaks off cannot keep its layout"));
}

TEST_F(Rewrap, RefusesHeaderMetadataWithMorePropertiesThanTags) {
    // Each primer gives the same tags to properties of its own.
    std::string header;
    for (const int family : {1, 2}) {
        std::string primer = octets::of({0, 0, 0x50, 0, 0, 0, 0, 18});
        std::string items[2];
        for (int tag = 0x8000; tag < 0xD000; ++tag) {
            const std::string octets = octets::of({tag >> 8, tag & 0xFF});
            primer += octets + octets::key(keys::make(1, 1)).substr(0, 12) + octets::of({0, family}) + octets;
            items[tag & 1] += octets + octets::of({0, 0});
        }
        header += octets::klv(keys::primer, primer);
        for (const std::string& properties : items) {
            header += octets::klv(keys::localSet, properties);
        }
    }
    FileBuilder file;
    file.partition(MXFPartitionKind::Header, header).partition(MXFPartitionKind::Footer);
    folder.put("in.mxf", file.file);
    const Outcome result = run("timeout 60 rewrap " + folder.path("in.mxf") + ' ' + folder.path("out.mxf"));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.text.find("rewrap: the header metadata has more properties than there are tags\n"),
              std::string::npos)
        << result.text.substr(0, 3000);
    EXPECT_FALSE(folder.has("out.mxf"));
}

TEST_F(Rewrap, TellsOfEachIndexTableOnce) {
    GoodClip clip;
    const std::size_t segments = clip.all(mxfutil::indexTableSegmentKey).size();
    for (std::size_t i = 0; i < segments; ++i) {
        clip.setSegment(i, 0x3F0B, Rational{0, 0});
    }
    const std::string remark = "has the edit rate 0/0; that of the track is written, 25/1\n";
    const Outcome mended = rewrap(clip.octets, clip.octets.size());
    EXPECT_EQ(mended.status, 0);
    EXPECT_EQ(mended.text, "rewrap: the index table of essence container 1 " + remark);

    // Ten essence containers in turn, of two edit units each, whose index tables know of one.
    const auto item = [](int tag, const std::string& value) {
        return octets::of({0x3F, tag, 0, static_cast<int>(value.size())}) + value;
    };
    const std::string four(3, '\0');
    const std::string eight(7, '\0');
    FileBuilder file;
    file.partition(MXFPartitionKind::Header, octets::klv(keys::primer, octets::of({0, 0, 0, 0, 0, 0, 0, 18})) +
                                                 octets::klv(keys::localSet, octets::of({0x3C, 0x0A, 0, 2, 7, 7})));
    std::string index;
    for (int i = 0; i < 20; ++i) {
        const char bodySID = static_cast<char>(1 + i % 10);
        file.partition(MXFPartitionKind::Body, {}, {}, octets::klv(keys::picture, "ABC"));
        file.file[file.pack.thisPartition + 83] = bodySID;
        if (i < 10) {
            index += octets::klv(mxfutil::indexTableSegmentKey,
                                 octets::of({0x3C, 0x0A, 0, 16}) + std::string(16, bodySID) +
                                     item(0x0B, four + '\x19' + four + '\1') + item(0x0C, eight + '\0') +
                                     item(0x0D, eight + '\1') + item(0x05, four + '\x17') +
                                     item(0x06, four + static_cast<char>(100 + bodySID)) + item(0x07, four + bodySID) +
                                     item(0x08, std::string(1, '\0')));
        }
    }
    file.partition(MXFPartitionKind::Footer, {}, index);
    const std::string text = rewrap(file.file, file.file.size()).text;
    std::size_t lines = 0;
    for (std::size_t at = 0; (at = text.find(" ends at edit unit 1 of 2;", at)) != std::string::npos; ++at) {
        ++lines;
    }
    EXPECT_EQ(lines, 6U) << text;
    EXPECT_NE(text.find(": ... and 5 more like it\n"), std::string::npos) << text;
}

TEST_F(Rewrap, TakesTracksWithoutANumber) {
    ClipOptions options;
    options.change = [](Preface& preface) {
        for (std::size_t i = 0; i < preface.getContentStorage()->getPackageCount(); ++i) {
            const auto package = preface.getContentStorage()->getPackageAt(i);
            for (std::size_t j = 0; j < package->getTrackCount(); ++j) {
                package->getTrackAt(j)->removeTrackNumber();
            }
        }
    };
    const GoodClip clip(options);
    const Outcome copied = rewrap(clip.octets, clip.octets.size());
    EXPECT_EQ(copied.status, 0) << copied.text;
    EXPECT_EQ(written().packages.size(), static_cast<std::size_t>(options.frames));
}

TEST_F(Rewrap, CountsWhatRepeats) {
    // Labels have no place in header metadata.
    std::string labels;
    for (int i = 0; i < 2500; ++i) {
        labels += octets::key(keys::label);
    }
    FileBuilder file;
    file.partition(MXFPartitionKind::Header, octets::klv(keys::primer, octets::of({0, 0, 0, 0, 0, 0, 0, 18})) + labels);
    file.partition(MXFPartitionKind::Footer);
    const Outcome result = rewrap(file.file, file.file.size());
    EXPECT_EQ(result.status, 1);
    EXPECT_LT(std::count(result.text.begin(), result.text.end(), '\n'), 20) << result.text.substr(0, 3000);
    EXPECT_NE(result.text.find(" more like it"), std::string::npos) << result.text.substr(0, 3000);
}

TEST_F(Rewrap, LosesSystemElementsThatCannotBeWritten) {
    // Content packages begin with a system element, which in one of them has more items than any; another element has
    // lengths of four octets.
    constexpr KLVKey metadata = klvutil::key("060e2b34.02430101.0d010301.04010201");
    constexpr KLVKey control = klvutil::key("060e2b34.02630101.0d010301.04010601");
    const std::string item = octets::of({1, 0, 0});
    std::string items;
    for (int i = 0; i < 70000; ++i) {
        items += item;
    }
    const std::string header = octets::klv(keys::primer, octets::of({0, 0, 0, 0, 0, 0, 0, 18})) +
                               octets::klv(keys::localSet, octets::of({0x3C, 0x0A, 0, 2, 7, 7}));
    FileBuilder file;
    file.partition(MXFPartitionKind::Header, header);
    file.partition(MXFPartitionKind::Body, {}, {},
                   octets::klv(metadata, item) + octets::klv(keys::picture, "A") + octets::klv(metadata, items) +
                       octets::klv(keys::picture, "B") + octets::klv(metadata, item) +
                       octets::klv(control, octets::of({0, 0, 0, 0, 1, 'x'})) + octets::klv(keys::picture, "C"));
    file.partition(MXFPartitionKind::Footer).randomIndexPack();
    const Outcome result = rewrap(file.file, file.file.size(), "--verify");
    EXPECT_EQ(result.status, 1);
    for (const KLVKey& key : {metadata, control}) {
        EXPECT_NE(result.text.find("the system element with key " + toString(key) + " is not copied"),
                  std::string::npos)
            << result.text;
    }
    // The second package begins with its picture now, and so does not begin for who reads it again.
    EXPECT_EQ(written().packages, (std::vector<std::string>{"AB", "C"}));
}
