#include "sdk/BRYXWriter.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "klv/VerifyingKLVHandler.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCStructureHandler.h"
#include "mxf/index/MXFIndexCalculator.h"
#include "mxf/index/MXFIndexParser.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "support/BuiltModel.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/LeastMetadata.h"
#include "support/Models.h"
#include "support/PackagePlaces.h"
#include "support/Streams.h"
#include "support/WrittenPackages.h"

namespace {

using Placement = BRYXWriterConfiguration::IndexPlacement;

class CountingUIDs : public MXFUIDGenerator {
public:
    MXFUID generateUID() override { return uid(++count_); }

private:
    std::uint32_t count_ = 0;
};

/// A stream that stands behind @p octets.
std::shared_ptr<std::stringstream> startedWith(const std::string& octets) {
    return std::make_shared<std::stringstream>(octets, std::ios::in | std::ios::out | std::ios::ate);
}

BRYXHeaderMetadata metadata() {
    static const std::shared_ptr<Preface> model = builtModel();
    return toBRYXHeaderMetadata(model);
}

/// A file of two essence containers, the first of which goes on behind the second, and a generic stream.
bool writeFile(BRYXWriter& writer, BRYXWriterConfiguration configuration = {},
               std::vector<std::uint64_t>* ends = nullptr, const BRYXHeaderMetadata& what = metadata()) {
    configuration.uidGenerator = std::make_shared<CountingUIDs>();
    writer.setConfiguration(configuration);
    writer.start(what);
    writer.startEssence({1, 2, {25, 1}, false, {}, {}});
    writePackages(writer, 10, ends);
    writer.endEssence();
    writer.startEssence({3, 4, {25, 1}, true, {}, {}});
    writePackages(writer, 1, ends);
    writer.endEssence();
    KLVHandler& stream = writer.startGenericStream(5);
    stream.berLengthForm(0x83);
    stream.startIndividualItem(keys::item, 3);
    stream.value(reinterpret_cast<const std::uint8_t*>("abc"), 3);
    stream.endIndividualItem(keys::item);
    writer.endGenericStream();
    writer.startEssence({1, 2, {25, 1}, false, {}, {}});
    writePackages(writer, 5, ends);
    writer.endEssence();
    return writer.finish(what);
}

/// What reading a file tells.
struct Reading {
    explicit Reading(std::istream& file) {
        MXFIndexParser parser(index);
        FindingRecorder errors(log);
        MXFReader reader;
        reader.setStructureHandler(&body.partitions);
        reader.setIndexHandler(&parser);
        reader.setBodyHandler(&body);
        reader.setErrorHandler(&errors);
        try {
            reader.read(file);
        } catch (const klvutil::parse_error& error) {
            log.emplace_back(error.what());
        }
    }

    PackagePlaces body;
    MXFIndexCalculator::Collector index;
    Log log; ///< findings

    /// Whether the index tables lead to all content packages.
    void checkIndex(const std::string& what) {
        for (const auto& [bodySID, packages] : body.packages) {
            MXFIndexCalculator calculator;
            for (const MXFIndexCalculator::Table table : index.tables()) {
                if (table.bodySID == bodySID) {
                    EXPECT_EQ(table.indexSID, bodySID + 1);
                    calculator.setSegments(index, table);
                }
            }
            for (std::size_t unit = 0; unit < packages.size(); ++unit) {
                const auto position = static_cast<std::int64_t>(unit);
                ASSERT_TRUE(calculator.contains(position)) << what << unit;
                for (std::size_t element = 0; element < packages[unit].size(); ++element) {
                    EXPECT_EQ(calculator.elementOffset(position, element).value_or(~0ULL), packages[unit][element])
                        << what << unit;
                }
            }
        }
    }
};

} // namespace

TEST(BRYXWriter, WritesFilesInAllLayouts) {
    for (const std::uint32_t kagSize : {0U, 1U, 512U, 65536U}) {
        for (const Placement placement : {Placement::Footer, Placement::AfterEssence}) {
            for (const int form : {1, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88}) {
                BRYXWriterConfiguration configuration;
                configuration.kagSize = kagSize;
                configuration.indexPlacement = placement;
                configuration.packLengthForm = configuration.metadataLengthForm = static_cast<std::uint8_t>(form);
                configuration.essenceLengthForm = static_cast<std::uint8_t>(form);
                configuration.fillKeyVersion = form == 0x84 ? 2 : 1;
                configuration.partitionDuration = form == 0x83 ? 3 : 0;
                configuration.partitionSize = form == 0x84 ? 2000 : 0;
                const std::string what = std::to_string(kagSize) + ' ' + std::to_string(form) + ' ';
                const std::string runIn = kagSize == 512 ? "run-in" : "";
                const auto file = startedWith(runIn);
                EXPECT_TRUE(writeFile(*createVerifyingBRYXWriter(file), configuration)) << what;
                const std::string octets = file->str().substr(runIn.size());
                std::istringstream written(octets);
                Reading reading(written);
                EXPECT_LOG(reading.log, "") << what;
                EXPECT_EQ(reading.body.packages[1].size(), 15U) << what;
                EXPECT_EQ(reading.body.packages[3].size(), 1U) << what;
                reading.checkIndex(what);
                const MXFPartitionPack& footer = reading.body.partitions.pack;
                EXPECT_EQ(footer.footerPartition, footer.thisPartition);

                // The same again; and to a pipe, where the header partition stays open, and no partition but the footer
                // knows where that is.
                const auto again = startedWith(runIn);
                writeFile(*createBRYXWriter(again), configuration);
                EXPECT_TRUE(again->str() == file->str()) << what;
                const auto pipe = std::make_shared<OutputPipe>();
                EXPECT_FALSE(writeFile(*createBRYXWriter(pipe), configuration)) << what;
                const std::string piped = pipe->octets();
                ASSERT_EQ(piped.size(), octets.size()) << what;
                EXPECT_EQ(piped[14], 1) << "open and incomplete";
                EXPECT_EQ(octets[14], 4) << "closed and complete";
                std::istringstream input(piped);
                Reading ofPipe(input);
                EXPECT_LOG(ofPipe.log, "") << what;
                EXPECT_TRUE(ofPipe.body.packages == reading.body.packages) << what;
            }
        }
    }
}

TEST(BRYXWriter, PlacesHeaderMetadataAndIndex) {
    // Room for what header metadata may become; what does not fit leaves the header partition as it was.
    const auto preface = builtModel();
    preface->setVersion(0x0103); // which is what is written
    for (const std::uint64_t space : {0U, 1000U}) {
        const auto file = startedWith("run-in");
        const auto writer = createBRYXWriter(file);
        BRYXWriterConfiguration configuration;
        configuration.headerSpace = space;
        configuration.indexPlacement = Placement::BeforeEssence;
        writer->setConfiguration(configuration);
        writer->start(toBRYXHeaderMetadata(preface));
        MXFIndexTableSegment segment;
        segment.editUnitByteCount = 20 + 700 + 20 + 192;
        segment.indexDuration = 1;
        segment.deltaEntryArray = {{0, 0, 0}, {0, 0, 720}};
        writer->startEssence({1, 2, {25, 1}, false, {}, {segment}});
        writePackages(*writer, 1);
        writer->endEssence();
        const auto identification = Identification::create();
        identification->setCompanyName(std::wstring(100, L'x'));
        preface->addIdentification(identification);
        EXPECT_EQ(writer->finish(toBRYXHeaderMetadata(preface)), space != 0);
        const std::string octets = file->str();
        EXPECT_EQ(octets.substr(0, 6), "run-in");
        EXPECT_EQ(octets[6 + 14], space == 0 ? 1 : 4);
        std::istringstream input(octets.substr(6));
        Reading reading(input);
        EXPECT_LOG(reading.log, "");
        reading.checkIndex("");
        EXPECT_GE(reading.body.partitions.pack.previousPartition, space);

        BRYXMetadataFactory factory;
        ModelReader models(factory);
        std::istringstream again(octets.substr(6));
        models.readFile(again);
        ASSERT_EQ(models.models.size(), 2U);
        EXPECT_EQ(mxfutil::firstDifference(*models.models[1].front(), *preface), "");
        preface->removeIdentificationAt(1);
    }
}

TEST(BRYXWriter, RefusesCallsOutOfOrder) {
    const auto file = std::make_shared<std::stringstream>();
    const auto writer = createVerifyingBRYXWriter(file); // also what fails must leave its notion of the file alone
    const auto failed = [](const auto& call) { return failure(call); };
    const auto refused = [&](const BRYXEssenceContainer& container) {
        return failure([&] { writer->startEssence(container); });
    };
    BRYXWriterConfiguration configuration;
    configuration.metadataLengthForm = 2;
    EXPECT_EQ(failed([&] { writer->setConfiguration(configuration); }), "valid BER length form");
    configuration = {};
    configuration.headerStatus = MXFPartitionStatus::GenericStream;
    EXPECT_EQ(failed([&] { writer->setConfiguration(configuration); }), "valid partition status");
    configuration = {};
    configuration.kagSize = (1U << 20U) + 1;
    EXPECT_EQ(failed([&] { writer->setConfiguration(configuration); }), "valid KAG size");
    configuration = {};
    configuration.headerSpace = ~0ULL;
    EXPECT_EQ(failed([&] { writer->setConfiguration(configuration); }), "valid header space");
    EXPECT_EQ(failed([&] { writer->start(toBRYXHeaderMetadata(Preface::create())); }),
              "Preface.contentStorage is present");
    EXPECT_EQ(failed([&] { writer->essenceReceiver(); }), "after start");
    EXPECT_EQ(failed([&] { writer->startEssence({}); }), "after start");
    EXPECT_EQ(failed([&] { writer->finish(metadata()); }), "after start");
    writer->start(metadata());
    EXPECT_EQ(failed([&] { writer->start(metadata()); }), "before start");
    EXPECT_EQ(failed([&] { writer->setConfiguration({}); }), "before start");
    EXPECT_EQ(failed([&] { writer->structureReceiver().startContentPackage(); }), "in essence");
    EXPECT_EQ(failed([&] { writer->essenceReceiver().pictureElement(keys::picture, nullptr, 0, 0); }), "in essence");
    EXPECT_EQ(failed([&] { writer->endEssence(); }), "in essence");
    EXPECT_EQ(refused({0, 2, {25, 1}, false, {}, {}}), "unique body SID");
    EXPECT_EQ(refused({1, 1, {25, 1}, false, {}, {}}), "unique index SID");
    for (const Rational rate : {Rational{0, 0}, {25, 0}, {0, 1}, {-25, 1}, {25, -1}, {-25, -1}}) {
        EXPECT_EQ(refused({1, 2, rate, false, {}, {}}), "valid edit rate");
    }
    MXFIndexTableSegment wrong;
    wrong.indexEntryArray.resize(2); // one of them has slices that the segment does not announce
    wrong.indexEntryArray.back().sliceOffsets = {1};
    EXPECT_NE(refused({1, 2, {25, 1}, false, {}, {wrong}}), "none");
    EXPECT_EQ(writer->position(), file->str().size());
    writer->startEssence({});
    MXFGCStructureHandler& structure = writer->structureReceiver();
    EXPECT_EQ(failed([&] { structure.startElement(keys::picture); }), "in content package");
    EXPECT_EQ(failed([&] { structure.endContentPackage(); }), "in content package");
    structure.startContentPackage();
    EXPECT_EQ(failed([&] { structure.endContentPackage(); }), "content package has elements");
    EXPECT_EQ(failed([&] { writer->essenceReceiver().pictureElement(keys::picture, nullptr, 0, 0); }), "in element");
    EXPECT_EQ(failed([&] { writer->systemReceiver().fixedLengthPack(keys::fixedPack, nullptr, 0); }), "in element");
    for (const KLVKey& none :
         {KLVKey{}, klvutil::fillKey, keys::primer, mxfutil::randomIndexPackKey, mxfutil::indexTableSegmentKey,
          mxfutil::partitionPackKey(MXFPartitionKind::Body, MXFPartitionStatus::ClosedComplete)}) {
        EXPECT_EQ(failed([&] { structure.startElement(none); }), "valid element key");
    }
    EXPECT_EQ(failed([&] { structure.endContentPackage(); }), "content package has elements");
    structure.startElement(keys::picture);
    EXPECT_EQ(failed([&] { structure.endElement(keys::picture); }), "complete element");
    std::uint64_t size = 0;
    std::uint8_t* buffer = nullptr;
    dynamic_cast<MXFGCChunkedEssenceHandler&>(writer->essenceReceiver())
        .startChunkedElement(keys::picture, 1, 0, size, buffer);
    EXPECT_EQ(failed([&] { structure.endElement(keys::picture); }), "complete element");
    EXPECT_EQ(failed([&] { structure.endContentPackage(); }), "complete element");
    const std::uint8_t octet = 1;
    writer->essenceReceiver().pictureElement(keys::picture, &octet, 1, 0);
    structure.endElement(keys::picture);
    EXPECT_EQ(failed([&] { structure.startContentPackage(); }), "not in content package");
    EXPECT_EQ(failed([&] { writer->startBodyPartition(); }), "not in content package");
    EXPECT_EQ(failed([&] { writer->endEssence(); }), "not in content package");
    structure.endContentPackage();
    EXPECT_EQ(failed([&] { writer->startEssence({}); }), "not in essence");
    EXPECT_EQ(failed([&] { writer->startGenericStream(9); }), "not in essence");
    EXPECT_EQ(failed([&] { writer->finish(metadata()); }), "not in essence");
    writer->endEssence();
    EXPECT_EQ(failed([&] { writer->startGenericStream(1); }), "unique body SID");
    EXPECT_EQ(failed([&] { writer->startGenericStream(2); }), "unique body SID");
    EXPECT_EQ(refused({2, 5, {25, 1}, false, {}, {}}), "unique body SID");
    EXPECT_EQ(refused({3, 2, {25, 1}, false, {}, {}}), "unique index SID");
    EXPECT_EQ(refused({3, 1, {25, 1}, false, {}, {}}), "unique index SID");
    writer->startEssence({3, 4, {25, 1}, false, {}, {}}); // what was refused is free
    writer->endEssence();
    KLVHandler& stream = writer->startGenericStream(7);
    writer->endGenericStream();
    EXPECT_EQ(failed([&] { stream.startLabel(keys::label); }), "in essence");
    writer->finish(metadata());
    EXPECT_EQ(failed([&] { writer->finish(metadata()); }), "not finished");
    std::istringstream input(file->str());
    EXPECT_LOG(Reading(input).log, "");

    const auto other = createBRYXWriter(std::make_shared<std::stringstream>());
    EXPECT_EQ(failed([&] { other->start({}); }), "header metadata is present");
    other->start(metadata());
    EXPECT_EQ(failed([&] { other->finish({}); }), "header metadata is present");
    EXPECT_TRUE(other->finish(metadata()));
}

/// A table that comes before its essence is held to what comes.
TEST(BRYXWriter, ComparesEssenceWithATableBeforeIt) {
    constexpr std::uint32_t first = 20 + 700 + 20 + 192;
    const auto write = [](const std::vector<std::uint32_t>& sizes, std::int64_t duration, int packages) {
        std::vector<MXFIndexTableSegment> segments;
        for (const std::uint32_t size : sizes) {
            MXFIndexTableSegment segment;
            segment.indexStartPosition = static_cast<std::int64_t>(segments.size());
            segment.indexDuration = duration;
            segment.editUnitByteCount = size;
            segments.push_back(segment);
        }
        const auto writer = createBRYXWriter(std::make_shared<std::stringstream>());
        BRYXWriterConfiguration configuration;
        configuration.indexPlacement = Placement::BeforeEssence;
        writer->setConfiguration(configuration);
        writer->start(metadata());
        writer->startEssence({1, 2, {25, 1}, false, {}, segments});
        writePackages(*writer, packages);
        return failure([&] { writer->endEssence(); });
    };
    const std::string wrong = "edit units have the size announced";
    EXPECT_EQ(write({first}, 1, 1), "none");
    EXPECT_EQ(write({first + 1}, 1, 1), wrong);
    EXPECT_EQ(write({100}, 9, 1), "none"); // they are wrapped as a clip
    EXPECT_EQ(write({first, first + 37}, 1, 2), "none");
    EXPECT_EQ(write({first, first + 36}, 1, 2), wrong);
    EXPECT_EQ(write({first + 37, first}, 1, 2), wrong); // as much in all
    EXPECT_EQ(write({first + 37}, 0, 3), wrong);        // the same
}

TEST(BRYXWriter, LeavesAReadableFileWhereverItIsStopped) {
    BRYXWriterConfiguration configuration;
    configuration.partitionDuration = 4;
    const auto pipe = std::make_shared<OutputPipe>();
    std::vector<std::uint64_t> ends;
    writeFile(*createBRYXWriter(pipe), configuration, &ends);
    const std::string file = pipe->octets();

    // At whatever octet it is cut, and where triplets begin.
    std::vector<std::size_t> cuts;
    std::mt19937 random(3);
    for (int i = 0; i < 300; ++i) {
        cuts.push_back(1 + random() % (file.size() - 1));
    }
    for (std::size_t at = file.find("\x06\x0e\x2b\x34", 1); at != std::string::npos;
         at = file.find("\x06\x0e\x2b\x34", at + 1)) {
        cuts.push_back(at);
    }
    std::sort(cuts.begin(), cuts.end());
    for (const std::size_t cut : cuts) {
        std::istringstream input(file.substr(0, cut));
        Reading reading(input);
        EXPECT_FALSE(reading.log.empty()) << cut;
        std::size_t found = 0;
        for (const auto& [bodySID, read] : reading.body.packages) {
            found += read.size();
        }
        const auto whole = std::count_if(ends.begin(), ends.end(), [&](std::uint64_t end) { return end <= cut; });
        EXPECT_GE(found, static_cast<std::size_t>(whole)) << cut;
        EXPECT_LE(found, static_cast<std::size_t>(whole) + 1) << cut; // one may have begun
    }
    EXPECT_EQ(ends.size(), 16U);
}

TEST(BRYXWriter, HidesNoFailureOfTheStream) {
    std::size_t failures = 0;
    for (bool isComplete = false; !isComplete; ++failures) {
        const auto file = std::make_shared<FailingOutput>(failures);
        const std::string failed = failure([&] { writeFile(*createBRYXWriter(file), {}, nullptr, leastMetadata()); });
        isComplete = failed == "none";
        if (!isComplete) {
            EXPECT_EQ(failed, "successful write()") << failures;
            EXPECT_EQ(file->writesAfterFailure(), 0U) << failures;
        }
    }
    EXPECT_GT(failures, 200U);

    // A device that changes what it is given is found out, when that is written or at the end.
    const auto lying = std::make_shared<std::stringstream>();
    const auto writer = createVerifyingBRYXWriter(lying);
    writer->start(metadata());
    writer->startEssence({});
    writePackages(*writer, 3);
    writer->endEssence();
    std::string octets = lying->str();
    octets[octets.rfind(octets::key(writtenSound))] = 7;
    lying->str(octets);
    lying->seekp(0, std::ios::end);
    EXPECT_THROW(writer->finish(metadata()), VerifyingKLVHandler::exception);
}

/// Index entries are described when segments are measured, and again when they are written.
TEST(BRYXWriter, BearsADescriptionThatFails) {
    const auto write = [](BRYXWriter& writer, int failing) {
        BRYXWriterConfiguration configuration;
        configuration.partitionDuration = 2;
        writer.setConfiguration(configuration);
        writer.start(metadata());
        int calls = 0;
        const auto describe = [&](std::int64_t /*editUnit*/, MXFIndexEntry& entry) {
            entry.flags = MXFIndexEntryFlags::randomAccess;
            if (calls++ == failing) {
                throw std::runtime_error("no description");
            }
        };
        writer.startEssence({1, 2, {25, 1}, false, describe, {}});
        int failures = 0;
        const auto insist = [&](auto call) {
            try {
                call();
            } catch (const std::runtime_error&) {
                ++failures;
                call();
            }
        };
        for (int i = 0; i < 5; ++i) {
            insist([&] { writePackages(writer, 1); });
        }
        writer.endEssence();
        insist([&] { writer.finish(metadata()); });
        return failures;
    };
    int survived = 0;
    for (int failing = 0;; ++failing) {
        const auto file = std::make_shared<std::stringstream>();
        const auto writer = createVerifyingBRYXWriter(file);
        int failures = 0;
        const std::string failed = failure([&] { failures = write(*writer, failing); });
        if (failed == "none" && failures == 0) {
            EXPECT_EQ(failing, 2 * 2 + 2 * 2 + 2 * 5);
            break; // it was not called so often
        }
        if (failed == "none") {
            ++survived; // nothing had been written yet
            continue;
        }
        const std::size_t size = file->str().size();
        EXPECT_NE(failure([&] { writer->endEssence(); }), "none");
        EXPECT_EQ(failure([&] { writer->finish(metadata()); }), "no failure before");
        EXPECT_EQ(file->str().size(), size);
    }
    EXPECT_EQ(survived, 2 + 2 + 5);
}

TEST(BRYXWriter, WritesFilesBeyond4GiB) {
    // Octets that are zero are left out of the file, and it is far larger than what it takes.
    const auto path = std::filesystem::temp_directory_path() / "bryx_large.mxf";
    const auto file = std::make_shared<SparseFile>(path);
    const auto writer = createBRYXWriter(file);
    BRYXWriterConfiguration configuration;
    configuration.partitionDuration = 2;
    writer->setConfiguration(configuration);
    writer->start(metadata());
    writer->startEssence({});
    MXFGCStructureHandler& structure = writer->structureReceiver();
    auto& chunks = dynamic_cast<MXFGCChunkedEssenceHandler&>(writer->essenceReceiver());
    const std::vector<std::uint8_t> zeros(std::size_t{1} << 24U);
    constexpr std::uint64_t length = std::uint64_t{1} << 30U;
    for (int i = 0; i < 6; ++i) {
        structure.startContentPackage();
        structure.startElement(keys::picture);
        std::uint64_t size = 0;
        std::uint8_t* buffer = nullptr;
        const std::uint64_t announced = i % 2 == 0 ? length : MXFGCChunkedEssenceHandler::UNKNOWN_KLV_LENGTH;
        for (std::uint64_t offset = 0; offset < length; offset += zeros.size()) {
            chunks.startChunkedElement(keys::picture, announced, offset, size, buffer);
            writer->essenceReceiver().pictureElement(keys::picture, zeros.data(), zeros.size(), offset);
        }
        if (announced != length) {
            chunks.startChunkedElement(keys::picture, length, length, size, buffer);
        }
        structure.endElement(keys::picture);
        structure.endContentPackage();
    }
    writer->endEssence();
    EXPECT_TRUE(writer->finish(metadata()));
    file->flush();
    std::ifstream input(path, std::ios::binary);
    std::filesystem::remove(path); // the open file stays
    Reading reading(input);
    EXPECT_LOG(reading.log, "");
    ASSERT_EQ(reading.body.packages[1].size(), 6U);
    EXPECT_EQ(reading.body.packages[1][5][0], 5 * (length + 24));
    EXPECT_GT(reading.body.partitions.pack.thisPartition, 6 * length);
    reading.checkIndex("");
}

TEST(BRYXWriter, LivesAsLongAsItsCalls) {
    // Whatever the writer asks the caller, the answer may drop the last reference to it.
    const auto dropAt = [](int call, auto create) {
        auto stream = std::make_shared<std::stringstream>();
        const std::weak_ptr<std::stringstream> left = stream;
        std::shared_ptr<BRYXWriter> writer = create(stream);
        stream.reset();
        const auto called = [&] {
            if (--call == 0) {
                writer.reset();
            }
            EXPECT_FALSE(left.expired());
        };
        BRYXHeaderMetadata asking = metadata();
        asking.send = [&, send = asking.send](MXFMetadataHandler& handler) {
            called();
            send(handler);
        };
        const auto describe = [&](std::int64_t /*editUnit*/, MXFIndexEntry& /*entry*/) { called(); };
        const std::function<void(BRYXWriter&)> steps[] = {
            [&](BRYXWriter& w) { w.start(asking); },
            [&](BRYXWriter& w) {
                w.startEssence({1, 2, {25, 1}, false, describe, {}});
            },
            [&](BRYXWriter& w) { writePackages(w, 2); },
            [&](BRYXWriter& w) { w.structureReceiver().startContentPackage(); },
            [&](BRYXWriter& w) {
                w.structureReceiver().startElement(keys::picture);
                w.essenceReceiver().pictureElement(keys::picture, nullptr, 0, 0);
                w.structureReceiver().endElement(keys::picture);
                w.structureReceiver().endContentPackage();
            },
            [&](BRYXWriter& w) { w.startBodyPartition(); },
            [&](BRYXWriter& w) { writePackages(w, 1); },
            [&](BRYXWriter& w) { w.endEssence(); },
            [&](BRYXWriter& w) {
                w.startEssence({3, 4, {25, 1}, false, describe, {}});
            },
            [&](BRYXWriter& w) { writePackages(w, 1); },
            [&](BRYXWriter& w) { w.endEssence(); },
            [&](BRYXWriter& w) { w.finish(asking); },
        };
        BRYXWriterConfiguration configuration;
        configuration.partitionDuration = 2;
        writer->setConfiguration(configuration);
        for (const auto& step : steps) {
            if (writer != nullptr) {
                step(*writer);
            }
        }
        EXPECT_EQ(writer == nullptr, left.expired());
        return call <= 0;
    };
    const auto plain = [](auto stream) { return createBRYXWriter(stream); };
    const auto verifying = [](auto stream) { return createVerifyingBRYXWriter(stream); };
    int calls = 0;
    while (dropAt(calls + 1, plain)) {
        ++calls;
        EXPECT_TRUE(dropAt(calls, verifying));
    }
    EXPECT_GT(calls, 20);
}
