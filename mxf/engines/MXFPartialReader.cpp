#include "mxf/engines/MXFPartialReader.h"

#include <algorithm>
#include <istream>
#include <optional>
#include <vector>

#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/InputLocator.h"
#include "klv/KLVFindings.h"
#include "klv/internal/KLVInput.h"
#include "klv/internal/ReportedStream.h"
#include "klv/internal/StreamAccess.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFSplitter.h"
#include "mxf/index/MXFIndexParser.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFPackLimits.h"
#include "mxf/structure/MXFRunInSkipper.h"
#include "mxf/structure/MXFTripletPosition.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"
#include "util/internal/octets.h"

namespace bryx {

namespace {

/// Passes the first partition on, and nothing of what follows.
class SinglePartitionGrabber : public DullMXFStructureHandler {
public:
    SinglePartitionGrabber(MXFStructureHandler& next, bool& stop) : next_(next), stop_(stop) {}

    bool grabbed() const { return grabbed_; }

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

/// Looks at a partition pack and the fill that follows it.
class PackSurvey : public DullKLVHandler {
public:
    explicit PackSurvey(bool& stop) : stop_(stop) {}

    /// The stream position at which the body begins, if a partition pack that can be read was met; else 0.
    std::uint64_t bodyStart() const {
        MXFPartitionPack pack;
        if (!mxfutil::readPartitionPack(octets_.data(), octets_.size(), pack)) {
            return 0;
        }
        const std::uint64_t most = static_cast<std::uint64_t>(KLVInput::maxPosition) - headerStart_;
        const std::uint64_t header = std::min(pack.headerByteCount, most);
        return headerStart_ + header + std::min(pack.indexByteCount, most - header);
    }

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void berLengthForm(std::uint8_t form) override { form_ = form; }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        const bool first =
            headerStart_ == 0 && mxfutil::isPartitionPackKey(key) && length <= mxfutil::maxPartitionPackSize;
        stop_ = stop_ || !first;
        position_ = MXFTripletPosition::of(*locator_, form_, length);
        return first;
    }
    void endFixedLengthPack(const KLVKey&) override { reached(); }
    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override {
        stop_ = stop_ || key != klvutil::fillKey;
        position_ = MXFTripletPosition::of(*locator_, form_, length);
        return false;
    }
    void endIndividualItem(const KLVKey&) override { reached(); }
    bool startLabel(const KLVKey&) override { return stop(); }
    bool startUniversalSet(const KLVKey&, std::uint64_t) override { return stop(); }
    bool startLocalSet(const KLVKey&, std::uint64_t, KLVFieldForm, KLVFieldForm) override { return stop(); }
    bool startVariableLengthPack(const KLVKey&, std::uint64_t, KLVFieldForm) override { return stop(); }
    bool startWrapper(const KLVKey&, std::uint64_t, KLVWrapperKind) override { return stop(); }
    bool getValueBuffer(std::uint64_t, std::uint64_t&, std::uint64_t&, std::uint8_t*&) override { return true; }
    void value(const std::uint8_t* data, std::uint64_t size) override { util::append(octets_, data, size); }

private:
    bool stop() {
        stop_ = true;
        return false;
    }
    void reached() {
        if (!stop_) {
            headerStart_ = position_.end;
        }
    }

    bool& stop_;
    const Locator* locator_ = nullptr;
    std::uint8_t form_ = klvutil::automaticBERLengthForm;
    MXFTripletPosition position_;
    std::vector<std::uint8_t> octets_;
    std::uint64_t headerStart_ = 0;
};

/// Keeps the size of a random index pack.
class RandomIndexPackSurvey : public DullKLVHandler {
public:
    std::uint64_t packSize = 0; ///< octets of the whole pack; 0 if there is none

    void berLengthForm(std::uint8_t form) override { form_ = form; }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        if (key == mxfutil::randomIndexPackKey && length <= mxfutil::maxRandomIndexPackSize) {
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
    explicit CleanStream(std::istream& stream) : exceptionsOff_(stream), stream_(stream) {
        stream_.clear();
        extent_ = klvutil::extentOf(stream_);
    }
    ~CleanStream() { stream_.clear(); }
    CleanStream(const CleanStream&) = delete;
    CleanStream& operator=(const CleanStream&) = delete;

    const klvutil::StreamExtent& extent() const { return extent_; }

    /// Whether a seek beyond the end fails is up to the stream buffer, so that the end decides.
    void seek(std::uint64_t position) {
        const auto end = static_cast<std::uint64_t>(std::max<std::streamoff>(extent_.end, 0));
        if (position > end || !stream_.seekg(static_cast<std::streamoff>(position))) {
            const auto shown = std::min(position, static_cast<std::uint64_t>(KLVInput::maxPosition));
            throw klvutil::parse_error(klvutil::findings::unsuccessfulSeek, static_cast<std::streamoff>(shown));
        }
    }

    /// Reads from @p position up to the first triplet boundary at or beyond @p end.
    void read(KLVHandler& handler, ErrorHandler* errorHandler, std::uint64_t position, std::uint64_t end, bool& stop) {
        stream_.clear();
        seek(position);
        GenericKLVReader reader;
        reader.setHandler(&handler);
        reader.setErrorHandler(errorHandler);
        reader.parse(stream_, static_cast<std::streamoff>(position), static_cast<std::streamoff>(end), stop);
    }

    /// The same, for what has no say in whether there is anything to report.
    void survey(KLVHandler& handler, std::uint64_t position, std::uint64_t end, bool& stop) {
        try {
            read(handler, nullptr, position, end, stop);
        } catch (const klvutil::parse_error&) {
            stop = true;
        }
    }

    /// The position of the random index pack whose overall length ends the stream: where that length leads to the key,
    /// and the length field there leads back to the end.
    bool findRandomIndexPack(std::uint64_t& position) {
        util::require(extent_.canSeek(), "successful seekg()");
        const auto size = static_cast<std::uint64_t>(extent_.end);
        std::uint8_t octets[mxfutil::overallLengthSize];
        if (size < sizeof octets) {
            return false;
        }
        seek(size - sizeof octets);
        stream_.read(reinterpret_cast<char*>(octets), sizeof octets);
        const std::uint64_t overall = util::loadBigEndian<std::uint32_t>(octets);
        if (!stream_ || overall == 0 || overall > size) {
            return false;
        }
        position = size - overall;
        RandomIndexPackSurvey head;
        bool stop = false;
        survey(head, position, position + 1, stop);
        return !stop && head.packSize == overall;
    }

private:
    klvutil::StreamExceptionsOff exceptionsOff_;
    std::istream& stream_;
    klvutil::StreamExtent extent_;
};

} // namespace

void MXFPartialReader::setInputStream(std::istream* stream) {
    stream_ = stream;
    base_ = 0;
}

std::uint64_t MXFPartialReader::skipRunIn() {
    util::require(stream_ != nullptr, "has stream");
    const CleanStream stream(*stream_);
    if (!stream.extent().canSeek()) {
        const std::streampos position = 0;
        klvutil::reportedStream(errorHandler_, InputLocator(position),
                                [&] { klvutil::fail(errorHandler_, klvutil::findings::unsuccessfulSeek, position); });
    }
    base_ = static_cast<std::uint64_t>(stream.extent().position);
    MXFRunInSkipper skipper;
    skipper.setErrorHandler(errorHandler_);
    skipper.setStructureHandler(structureHandler_);
    return skipper.skip(*stream_);
}

bool MXFPartialReader::readPartition(std::uint64_t position) {
    util::require(stream_ != nullptr, "has stream");
    util::require(position >= base_, "position is in the file");
    CleanStream stream(*stream_);
    bool stop = false;
    // Where the body begins is looked up first, so that nothing of it is touched: in a file that is still being
    // written, its first triplet need not be whole.
    PackSurvey survey(stop);
    stream.survey(survey, position, static_cast<std::uint64_t>(KLVInput::maxPosition), stop);
    stop = false;
    DullMXFStructureHandler dullStructure;
    DullKLVHandler dull;
    SinglePartitionGrabber grabber(structureHandler_ != nullptr ? *structureHandler_ : dullStructure, stop);
    std::optional<MXFIndexParser> indexParser;
    KLVHandler* indexHandler = &dull;
    if (indexHandler_ != nullptr) {
        indexParser.emplace(*indexHandler_).setErrorHandler(errorHandler_);
        indexHandler = &*indexParser;
    }
    MXFSplitter splitter(&grabber, headerMetadataHandler_ != nullptr ? headerMetadataHandler_ : &dull, indexHandler,
                         &dull, false);
    splitter.setErrorHandler(errorHandler_);
    splitter.setBase(base_);
    stream.read(splitter, errorHandler_, position, std::max(survey.bodyStart(), position + 1), stop);
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
    stream.read(splitter, errorHandler_, position, position + 1, stop);
    return true;
}

} // namespace bryx
