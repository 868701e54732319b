#include "mxf/engines/MXFPartialReader.h"

#include <algorithm>
#include <istream>

#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/KLVFindings.h"
#include "klv/internal/KLVInput.h"
#include "mxf/engines/MXFSplitter.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFPackLimits.h"
#include "mxf/structure/MXFRunInSkipper.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace {

/// Passes one partition on, and stops reading when it ends.
class SinglePartitionGrabber : public MXFStructureHandler {
public:
    SinglePartitionGrabber(MXFStructureHandler& next, bool& stop) : next_(next), stop_(stop) {}

    bool grabbed() const { return grabbed_; }

    void runIn(std::uint64_t length) override { next_.runIn(length); }
    void startStructure() override { next_.startStructure(); }
    void endStructure() override { next_.endStructure(); }

    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override {
        grabbed_ = true;
        next_.startPartition(key, pack, headerStart);
    }
    void endPartition(const KLVKey& key) override {
        stop_ = true;
        next_.endPartition(key);
    }
    void randomIndex(const MXFRandomIndex&) override { stop_ = true; }

private:
    MXFStructureHandler& next_;
    bool& stop_;
    bool grabbed_ = false;
};

/// Stops reading where the body begins.
class StartStreamStopper : public DullKLVHandler {
public:
    explicit StartStreamStopper(bool& stop) : stop_(stop) {}
    void startStream(bool) override { stop_ = true; }

private:
    bool& stop_;
};

void seek(std::istream& stream, std::uint64_t position) {
    stream.clear();
    if (position > static_cast<std::uint64_t>(KLVInput::maxPosition) ||
        !stream.seekg(static_cast<std::streamoff>(position))) {
        stream.clear();
        throw klvutil::parse_error(klvutil::findings::unsuccessfulSeek, static_cast<std::streamoff>(position));
    }
}

/// The position of the random index pack whose overall length ends the stream: where that length leads to the key, and
/// the length field there leads back to the end.
bool findRandomIndexPack(std::istream& stream, std::uint64_t& position) {
    stream.clear();
    stream.seekg(0, std::ios::end);
    const std::streamoff end = stream.tellg();
    util::require(end >= 0, "successful seekg()");
    std::uint8_t octets[klvutil::keySize + 9] = {};
    const auto size = static_cast<std::uint64_t>(end);
    const auto readAt = [&](std::uint64_t from, std::uint64_t count) {
        seek(stream, from);
        stream.read(reinterpret_cast<char*>(octets), static_cast<std::streamsize>(count));
        return stream.good();
    };
    constexpr std::uint64_t smallest = klvutil::keySize + 1 + mxfutil::overallLengthSize;
    if (size < smallest || !readAt(size - mxfutil::overallLengthSize, mxfutil::overallLengthSize)) {
        return false;
    }
    const std::uint64_t overall = util::loadBigEndian<std::uint32_t>(octets);
    if (overall < smallest || overall > size || overall > mxfutil::maxRandomIndexPackSize ||
        !readAt(size - overall, std::min<std::uint64_t>(overall, sizeof octets))) {
        return false;
    }
    position = size - overall;
    KLVKey key;
    std::copy(octets, octets + klvutil::keySize, key.octets.begin());
    const std::uint8_t first = octets[klvutil::keySize];
    const std::uint8_t form = first < 0x80 ? std::uint8_t{1} : first;
    if (key != mxfutil::randomIndexPackKey || !klvutil::isValidBERLengthForm(form)) {
        return false;
    }
    std::uint64_t length = first;
    if (form != 1) {
        std::uint8_t wide[8] = {};
        const std::size_t count = form & 0x7FU;
        std::copy(octets + klvutil::keySize + 1, octets + klvutil::keySize + 1 + count, wide + 8 - count);
        length = util::loadBigEndian<std::uint64_t>(wide);
    }
    return length <= overall && mxfutil::randomIndexPackSize(form, length) == overall;
}

} // namespace

void MXFPartialReader::setInputStream(std::istream* stream) {
    stream_ = stream;
    base_ = 0;
}

std::uint64_t MXFPartialReader::skipRunIn() {
    util::require(stream_ != nullptr, "has stream");
    const std::streamoff base = klvutil::tell(*stream_);
    if (base < 0) {
        throw klvutil::parse_error(klvutil::findings::unsuccessfulSeek, 0);
    }
    base_ = static_cast<std::uint64_t>(base);
    MXFRunInSkipper skipper;
    skipper.setErrorHandler(errorHandler_);
    skipper.setStructureHandler(structureHandler_);
    return skipper.skip(*stream_);
}

bool MXFPartialReader::readPartition(std::uint64_t position) {
    util::require(stream_ != nullptr, "has stream");
    seek(*stream_, position);
    DullMXFStructureHandler dullStructure;
    DullKLVHandler dull;
    bool stop = false;
    SinglePartitionGrabber grabber(structureHandler_ != nullptr ? *structureHandler_ : dullStructure, stop);
    StartStreamStopper body(stop);
    MXFSplitter splitter(&grabber, headerMetadataHandler_ != nullptr ? headerMetadataHandler_ : &dull, &dull, &body,
                         false);
    splitter.setErrorHandler(errorHandler_);
    splitter.setBase(base_);
    GenericKLVReader reader;
    reader.setHandler(&splitter);
    reader.setErrorHandler(errorHandler_);
    reader.parse(*stream_, static_cast<std::streamoff>(position), stop);
    stream_->clear();
    return grabber.grabbed();
}

bool MXFPartialReader::readRandomIndexPack() {
    util::require(stream_ != nullptr, "has stream");
    util::require(structureHandler_ != nullptr, "has structure handler");
    std::uint64_t position = 0;
    const bool found = findRandomIndexPack(*stream_, position);
    if (found) {
        seek(*stream_, position);
        DullKLVHandler dull;
        MXFSplitter splitter(structureHandler_, &dull, &dull, &dull, false);
        splitter.setErrorHandler(errorHandler_);
        GenericKLVReader reader;
        reader.setHandler(&splitter);
        reader.setErrorHandler(errorHandler_);
        reader.parse(*stream_, static_cast<std::streamoff>(position));
    }
    stream_->clear();
    return found;
}
