#include "mxf/structure/MXFPartitionFilter.h"

#include <algorithm>

#include "klv/internal/KLVValueDelivery.h"
#include "mxf/structure/MXFPackLimits.h"
#include "mxf/structure/MXFStructureFindings.h"

namespace findings = mxfutil::findings;

namespace {

/// A value in memory, for klvutil::deliverValue.
class CollectedValue {
public:
    static constexpr std::uint64_t pieceSize = mxfutil::maxRandomIndexPackSize;

    explicit CollectedValue(const std::vector<std::uint8_t>& octets) : next_(octets.data()) {}

    void skip(std::uint64_t size) { next_ += size; }
    void read(std::uint8_t* to, std::uint64_t size) {
        std::copy(next_, next_ + size, to);
        next_ += size;
    }
    const std::uint8_t* readPiece(std::uint64_t size) {
        next_ += size;
        return next_ - size;
    }

private:
    const std::uint8_t* next_;
};

} // namespace

MXFPartitionFilter::MXFPartitionFilter(MXFStructureHandler* structureHandler)
    : structureHandler_(
          (util::require(structureHandler != nullptr, "structure handler is present"), *structureHandler)) {}

MXFPartitionFilter::~MXFPartitionFilter() = default;

void MXFPartitionFilter::setLocator(const Locator& locator) {
    locator_ = &locator;
    next().setLocator(locator);
}

void MXFPartitionFilter::startStream(bool accurateLengths) {
    util::require(accurateLengths, "has accurate lengths");
    util::require(locator_ != nullptr, "has locator");
    form_ = klvutil::automaticBERLengthForm;
    depth_ = 0;
    collecting_ = Pack::None;
    partitionOpen_ = false;
    structureHandler_.startStructure();
    next().startStream(accurateLengths);
}

void MXFPartitionFilter::endStream(bool stopped) {
    next().endStream(stopped);
    closePartition();
    structureHandler_.endStructure();
    locator_ = nullptr;
}

void MXFPartitionFilter::berLengthForm(std::uint8_t form) {
    form_ = form;
    next().berLengthForm(form);
}

template <class Start>
bool MXFPartitionFilter::enter(Start forward) {
    ++depth_;
    return forward(next());
}

template <class End>
void MXFPartitionFilter::leave(End forward) {
    --depth_;
    forward(next());
}

bool MXFPartitionFilter::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    const bool wanted = enter([&](KLVHandler& h) { return h.startFixedLengthPack(key, length); });
    const bool partition = mxfutil::isPartitionPackKey(key);
    if (depth_ != 1 || !(partition || key == mxfutil::randomIndexPackKey)) {
        return wanted;
    }
    closePartition();
    if (length > (partition ? mxfutil::maxPartitionPackSize : mxfutil::maxRandomIndexPackSize)) {
        klvutil::report(errorHandler_, partition ? findings::invalidPartitionPack : findings::invalidRandomIndexPack);
        return wanted;
    }
    collecting_ = partition ? Pack::Partition : Pack::RandomIndex;
    packPosition_ = MXFTripletPosition::of(*locator_, form_, length);
    nextWantsPack_ = wanted;
    octets_.clear();
    return true;
}

void MXFPartitionFilter::endFixedLengthPack(const KLVKey& key) {
    if (depth_ == 1 && collecting_ != Pack::None) {
        if (collecting_ == Pack::Partition) {
            partitionPack(key);
        } else {
            randomIndexPack();
        }
        collecting_ = Pack::None;
        if (nextWantsPack_) {
            CollectedValue source(octets_);
            klvutil::deliverValue(source, next(), octets_.size());
        }
    }
    leave([&](KLVHandler& h) { h.endFixedLengthPack(key); });
}

void MXFPartitionFilter::partitionPack(const KLVKey& key) {
    MXFPartitionPack pack;
    if (!mxfutil::readPartitionPack(octets_.data(), octets_.size(), pack)) {
        return klvutil::report(errorHandler_, findings::invalidPartitionPack);
    }
    partitionKey_ = key;
    partitionOpen_ = true;
    structureHandler_.startPartition(key, pack, packPosition_.end);
}

void MXFPartitionFilter::randomIndexPack() {
    MXFRandomIndex index;
    if (!mxfutil::readRandomIndex(octets_.data(), octets_.size(), form_, index)) {
        klvutil::report(errorHandler_, findings::incorrectRandomIndexPackLength);
    }
    if (!index.empty()) {
        structureHandler_.randomIndex(index);
    }
}

void MXFPartitionFilter::closePartition() {
    if (partitionOpen_) {
        partitionOpen_ = false;
        structureHandler_.endPartition(partitionKey_);
    }
}

bool MXFPartitionFilter::getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                                        std::uint8_t*& buffer) {
    return collecting_ != Pack::None || next().getValueBuffer(length, offset, size, buffer);
}

void MXFPartitionFilter::value(const std::uint8_t* data, std::uint64_t size) {
    if (collecting_ != Pack::None) {
        octets_.insert(octets_.end(), data, data + size);
    } else {
        next().value(data, size);
    }
}

bool MXFPartitionFilter::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    return enter([&](KLVHandler& h) { return h.startIndividualItem(key, length); });
}
void MXFPartitionFilter::endIndividualItem(const KLVKey& key) {
    leave([&](KLVHandler& h) { h.endIndividualItem(key); });
}
bool MXFPartitionFilter::startUniversalSet(const KLVKey& key, std::uint64_t length) {
    return enter([&](KLVHandler& h) { return h.startUniversalSet(key, length); });
}
void MXFPartitionFilter::endUniversalSet(const KLVKey& key) {
    leave([&](KLVHandler& h) { h.endUniversalSet(key); });
}
bool MXFPartitionFilter::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                                       KLVFieldForm lengthForm) {
    return enter([&](KLVHandler& h) { return h.startLocalSet(key, length, tagForm, lengthForm); });
}
void MXFPartitionFilter::endLocalSet(const KLVKey& key) {
    leave([&](KLVHandler& h) { h.endLocalSet(key); });
}
bool MXFPartitionFilter::startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) {
    return enter([&](KLVHandler& h) { return h.startVariableLengthPack(key, length, itemLengthForm); });
}
void MXFPartitionFilter::endVariableLengthPack(const KLVKey& key) {
    leave([&](KLVHandler& h) { h.endVariableLengthPack(key); });
}
bool MXFPartitionFilter::startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) {
    return enter([&](KLVHandler& h) { return h.startWrapper(key, length, kind); });
}
void MXFPartitionFilter::endWrapper(const KLVKey& key) {
    leave([&](KLVHandler& h) { h.endWrapper(key); });
}
