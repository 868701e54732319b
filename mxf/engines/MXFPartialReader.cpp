#include "mxf/engines/MXFPartialReader.h"

#include <istream>

#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/InputLocator.h"
#include "klv/KLVFindings.h"
#include "klv/internal/KLVInput.h"
#include "klv/internal/ReportedStream.h"
#include "klv/internal/StreamAccess.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFSplitter.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFRunInSkipper.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace {

/// Passes one partition on, and stops reading when all that is wanted of it has come.
class SinglePartitionGrabber : public MXFStructureHandler {
public:
    SinglePartitionGrabber(MXFStructureHandler& next, bool& stop) : next_(next), stop_(stop) {}

    bool grabbed() const { return grabbed_; }

    /// Reading was left behind the stop: what has been started is ended.
    void finish() {
        if (partitionOpen_) {
            endPartition(key_);
        }
        if (structureOpen_) {
            endStructure();
        }
    }

    void runIn(std::uint64_t length) override { next_.runIn(length); }
    void startStructure() override {
        structureOpen_ = true;
        next_.startStructure();
    }
    void endStructure() override {
        structureOpen_ = false;
        next_.endStructure();
    }
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override {
        grabbed_ = true;
        partitionOpen_ = true;
        key_ = key;
        stop_ = stop_ || (pack.headerByteCount == 0 && pack.indexByteCount == 0);
        next_.startPartition(key, pack, headerStart);
    }
    void endPartition(const KLVKey& key) override {
        partitionOpen_ = false;
        stop_ = true;
        next_.endPartition(key);
    }
    void randomIndex(const MXFRandomIndex&) override { stop_ = true; }

private:
    MXFStructureHandler& next_;
    bool& stop_;
    bool grabbed_ = false;
    bool structureOpen_ = false;
    bool partitionOpen_ = false;
    KLVKey key_;
};

/// Stops reading where the body begins.
class StartStreamStopper : public DullKLVHandler {
public:
    explicit StartStreamStopper(bool& stop) : stop_(stop) {}
    void startStream(bool) override { stop_ = true; }

private:
    bool& stop_;
};

/// Keeps the head of the first triplet, where that is a random index pack.
class RandomIndexPackHead : public DullKLVHandler {
public:
    /// Octets of the whole pack; 0 if there is none.
    std::uint64_t packSize = 0;

    void berLengthForm(std::uint8_t form) override { form_ = form; }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        if (key == mxfutil::randomIndexPackKey) {
            packSize = mxfutil::randomIndexPackSize(form_, length);
        }
        return false;
    }

private:
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
};

/// A caller's stream for one operation: in a clean state before, and after, however the operation ends.
class CleanStream {
public:
    explicit CleanStream(std::istream& stream) : exceptionsOff_(stream), stream_(stream) { stream_.clear(); }
    ~CleanStream() { stream_.clear(); }
    CleanStream(const CleanStream&) = delete;
    CleanStream& operator=(const CleanStream&) = delete;

    void seek(std::uint64_t position) {
        const bool representable = position <= static_cast<std::uint64_t>(KLVInput::maxPosition);
        if (!representable || !stream_.seekg(static_cast<std::streamoff>(position))) {
            throw klvutil::parse_error(klvutil::findings::unsuccessfulSeek, static_cast<std::streamoff>(position));
        }
    }

    void read(KLVHandler& handler, ErrorHandler* errorHandler, std::uint64_t position, bool& stop) {
        seek(position);
        GenericKLVReader reader;
        reader.setHandler(&handler);
        reader.setErrorHandler(errorHandler);
        reader.parse(stream_, static_cast<std::streamoff>(position), stop);
    }

    /// The position of the random index pack whose overall length ends the stream: where that length leads to the key,
    /// and the length field there leads back to the end.
    bool findRandomIndexPack(std::uint64_t& position) {
        const klvutil::StreamExtent extent = klvutil::extentOf(stream_);
        util::require(extent.known(), "successful seekg()");
        const auto size = static_cast<std::uint64_t>(extent.end);
        std::uint8_t octets[mxfutil::overallLengthSize];
        if (size < sizeof octets) {
            return false;
        }
        seek(size - sizeof octets);
        if (!stream_.read(reinterpret_cast<char*>(octets), sizeof octets)) {
            return false;
        }
        const std::uint64_t overall = util::loadBigEndian<std::uint32_t>(octets);
        if (overall > size) {
            return false;
        }
        position = size - overall;
        RandomIndexPackHead head;
        bool stop = false;
        try {
            read(head, nullptr, position, stop);
        } catch (const klvutil::parse_error&) {
            return false;
        }
        stream_.clear();
        return head.packSize == overall;
    }

private:
    klvutil::StreamExceptionsOff exceptionsOff_;
    std::istream& stream_;
};

} // namespace

void MXFPartialReader::setInputStream(std::istream* stream) {
    stream_ = stream;
    base_ = 0;
}

std::uint64_t MXFPartialReader::skipRunIn() {
    util::require(stream_ != nullptr, "has stream");
    const klvutil::StreamExtent extent = klvutil::extentOf(*stream_);
    if (!extent.known()) {
        const std::streampos position = 0;
        klvutil::reportedStream(errorHandler_, InputLocator(position),
                                [&] { klvutil::fail(errorHandler_, klvutil::findings::unsuccessfulSeek, position); });
    }
    base_ = static_cast<std::uint64_t>(extent.position);
    MXFRunInSkipper skipper;
    skipper.setErrorHandler(errorHandler_);
    skipper.setStructureHandler(structureHandler_);
    return skipper.skip(*stream_);
}

bool MXFPartialReader::readPartition(std::uint64_t position) {
    util::require(stream_ != nullptr, "has stream");
    util::require(position >= base_, "position is in the file");
    CleanStream stream(*stream_);
    DullMXFStructureHandler dullStructure;
    DullKLVHandler dull;
    bool stop = false;
    SinglePartitionGrabber grabber(structureHandler_ != nullptr ? *structureHandler_ : dullStructure, stop);
    StartStreamStopper body(stop);
    MXFSplitter splitter(&grabber, headerMetadataHandler_ != nullptr ? headerMetadataHandler_ : &dull, &dull, &body,
                         false);
    splitter.setErrorHandler(errorHandler_);
    splitter.setBase(base_);
    try {
        stream.read(splitter, errorHandler_, position, stop);
    } catch (const klvutil::parse_error&) {
        // What comes after the partition's own content may be cut off, as in a file that is still being written.
        if (!stop) {
            throw;
        }
    }
    grabber.finish();
    return grabber.grabbed();
}

bool MXFPartialReader::readRandomIndexPack() {
    util::require(stream_ != nullptr, "has stream");
    util::require(structureHandler_ != nullptr, "has structure handler");
    CleanStream stream(*stream_);
    std::uint64_t position = 0;
    if (!stream.findRandomIndexPack(position)) {
        return false;
    }
    DullKLVHandler dull;
    MXFSplitter splitter(structureHandler_, &dull, &dull, &dull, false);
    splitter.setErrorHandler(errorHandler_);
    bool stop = false;
    stream.read(splitter, errorHandler_, position, stop);
    return true;
}
