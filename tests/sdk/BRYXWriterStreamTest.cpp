#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "mxf/engines/MXFReader.h"
#include "mxf/engines/MXFWriter.h"
#include "mxf/structure/MXFStructureCoder.h"
#include "sdk/BRYXWriter.h"
#include "support/Failure.h"
#include "support/LeastMetadata.h"
#include "support/Recorders.h"
#include "support/Streams.h"
#include "support/WrittenPackages.h"

namespace {

constexpr const char* appends = "stream writes where it stands";

/// A file of one essence container and a generic stream; whether its header partition ends closed and complete.
bool writeFile(BRYXWriter& writer) {
    writer.start(leastMetadata());
    writer.startEssence({});
    writePackages(writer, 3);
    writer.endEssence();
    writer.startGenericStream(9);
    writer.endGenericStream();
    return writer.finish(leastMetadata());
}

std::string findingsIn(std::istream& file) {
    Log log;
    FindingRecorder errors(log);
    MXFReader reader;
    reader.setErrorHandler(&errors);
    reader.read(file);
    return joined(log);
}

} // namespace

TEST(BRYXWriterStream, MustWriteWhereItStands) {
    const auto path = std::filesystem::temp_directory_path() / "bryx_appended.mxf";
    using std::ios;
    for (const std::string content : {"", "what stood there"}) {
        for (const auto mode : {ios::app, ios::app | ios::ate, ios::out | ios::app, ios::in | ios::out | ios::app}) {
            std::ofstream(path, ios::binary | ios::trunc) << content;
            const auto file = std::make_shared<std::fstream>(path, mode | ios::binary);
            ASSERT_TRUE(*file) << mode;
            EXPECT_EQ(failure([&] { writeFile(*createBRYXWriter(file)); }), appends) << content << mode;
            EXPECT_LE(std::filesystem::file_size(path), content.size() + 2 * klvutil::keySize) << content << mode;
        }
    }
    const auto file = std::make_shared<std::ofstream>(path, ios::app | ios::binary);
    EXPECT_EQ(failure([&] { writeFile(*createBRYXWriter(file)); }), appends);
    std::filesystem::remove(path);

    // One whose buffer holds octets back, and has them written at the end whatever it says of its position.
    const auto buffered = std::make_shared<AppendingOutput>();
    EXPECT_EQ(failure([&] { writeFile(*createBRYXWriter(buffered)); }), appends);
    EXPECT_LE(buffered->octets().size(), 2 * klvutil::keySize);

    // Others are not found fault with: those that cannot seek, though they may tell a position; and those that begin at
    // their end, but write where they are told to.
    const auto telling = std::make_shared<TellingOutput>();
    EXPECT_FALSE(writeFile(*createBRYXWriter(telling)));
    EXPECT_TRUE(telling->good());
    std::istringstream told(telling->octets());
    EXPECT_EQ(findingsIn(told), "");
    const auto atEnd = std::make_shared<std::stringstream>("run-in", ios::in | ios::out | ios::app);
    EXPECT_TRUE(writeFile(*createVerifyingBRYXWriter(atEnd)));
    std::istringstream written(atEnd->str());
    EXPECT_EQ(findingsIn(written), "");
}

/// What a stream throws on its own is not what the library promises.
TEST(BRYXWriterStream, MayHaveAnExceptionMask) {
    constexpr auto all = std::ios::badbit | std::ios::failbit | std::ios::eofbit;
    for (const auto mask : {std::ios::badbit, std::ios::failbit, all}) {
        std::size_t failures = 0;
        for (bool isComplete = false; !isComplete; ++failures) {
            const auto file = std::make_shared<FailingOutput>(failures);
            file->exceptions(mask);
            std::string failed;
            EXPECT_NO_THROW(failed = failure([&] { writeFile(*createBRYXWriter(file)); })) << failures;
            ASSERT_FALSE(failed.empty());
            isComplete = failed == "none";
            EXPECT_EQ(failed, isComplete ? "none" : "successful write()") << failures;
            EXPECT_EQ(file->exceptions(), mask);
            EXPECT_EQ(file->writesAfterFailure(), 0U);
        }
        EXPECT_GT(failures, 50U);

        // Streams that cannot seek, or only say where they are; and one that is read back, up to its end.
        const auto pipe = std::make_shared<OutputPipe>();
        const auto telling = std::make_shared<TellingOutput>();
        const auto memory = std::make_shared<std::stringstream>();
        const auto write = [&](std::ostream& stream, const auto& make) {
            stream.exceptions(mask);
            bool isClosed = false;
            EXPECT_NO_THROW(isClosed = writeFile(*make()));
            EXPECT_EQ(stream.exceptions(), mask);
            EXPECT_TRUE(stream.good());
            return isClosed;
        };
        EXPECT_FALSE(write(*pipe, [&] { return createBRYXWriter(pipe); }));
        EXPECT_FALSE(write(*telling, [&] { return createBRYXWriter(telling); }));
        EXPECT_TRUE(write(*memory, [&] { return createBRYXWriter(memory); }));
        memory->str({});
        EXPECT_TRUE(write(*memory, [&] { return createVerifyingBRYXWriter(memory); }));
    }

    // The engine alone.
    FailingOutput full(3);
    full.exceptions(all);
    MXFWriter engine(full);
    MXFStructureCoder& structure = engine.structureReceiver();
    EXPECT_NO_THROW(EXPECT_EQ(failure([&] {
                                  structure.startStructure();
                                  for (int i = 0; i < 4; ++i) {
                                      structure.randomIndex({{1, 2}});
                                  }
                              }),
                              "successful write()"));
    EXPECT_EQ(full.exceptions(), all);
}
