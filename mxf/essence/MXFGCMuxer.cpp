#include "mxf/essence/MXFGCMuxer.h"

#include <algorithm>
#include <iterator>

#include "klv/KLVFilter.h"
#include "mxf/essence/MXFGCEssenceCoder.h"
#include "mxf/essence/MXFGCIndexer.h"
#include "mxf/essence/MXFGCKeys.h"
#include "mxf/essence/MXFGCStructurePadder.h"
#include "mxf/essence/MXFGCSystemCoder.h"
#include "mxf/index/MXFIndexTableSegment.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFPrimer.h"
#include "mxf/structure/MXFRandomIndex.h"

namespace bryx {

using util::require;

namespace {

/// Whether a triplet with @p key may be an element. Essence of private and of encrypted kinds has keys of its own, so any
/// SMPTE key may be that of one, except those that mean something else wherever they stand.
bool isElementKey(const KLVKey& key) {
    constexpr std::uint8_t smpte[] = {0x06, 0x0E, 0x2B, 0x34};
    return mxfutil::isGCEssenceElement(key) || mxfutil::isGCSystemElement(key) ||
           (std::equal(std::begin(smpte), std::end(smpte), key.octets.begin()) && key != klvutil::fillKey &&
            key != mxfutil::primerPackKey && key != mxfutil::randomIndexPackKey &&
            key != mxfutil::indexTableSegmentKey && !mxfutil::isPartitionPackKey(key));
}

/// Where the calls stand that write a container. They come as a splitter makes them, or are refused: what an index table
/// says follows from them.
class Order {
public:
    bool isInPackage() const noexcept { return state_ != State::BetweenPackages; }
    void requireBetweenPackages() const { require(!isInPackage(), "not in content package"); }

    void startContentPackage() {
        requireBetweenPackages();
        state_ = State::BetweenElements;
        hasElements_ = false;
    }
    void endContentPackage() {
        requireBetweenElements();
        require(hasElements_, "content package has elements"); // else its index entry would lead to what comes next
        state_ = State::BetweenPackages;
    }
    void startElement(const KLVKey& key) {
        requireBetweenElements();
        require(isElementKey(key), "valid element key");
        state_ = State::BeforeTriplet;
        hasElements_ = true;
        key_ = key;
    }
    void endElement(const KLVKey& key) {
        require(isInPackage(), "in content package");
        require(state_ != State::BetweenElements, "in element");
        require(key == key_, "correct element key");
        require(state_ == State::AfterTriplet, "complete element");
        state_ = State::BetweenElements;
    }

    void requireTriplet(const KLVKey& key) const {
        require(isInPackage() && state_ != State::BetweenElements, "in element");
        require(state_ == State::BeforeTriplet, "one triplet in element");
        require(key == key_, "correct element key");
    }
    void startTriplet() { state_ = State::InTriplet; }
    void endTriplet() { state_ = State::AfterTriplet; }

private:
    enum class State : std::uint8_t { BetweenPackages, BetweenElements, BeforeTriplet, InTriplet, AfterTriplet };

    void requireBetweenElements() const {
        require(isInPackage(), "in content package");
        require(state_ == State::BetweenElements, "complete element");
    }

    State state_ = State::BetweenPackages;
    bool hasElements_ = false; ///< in the content package
    KLVKey key_;               ///< of the element
};

/// Passes the triplets of elements on to the body.
class Triplets final : public DullKLVFilter {
public:
    Triplets(KLVHandler& body, Order& order) : order_(order) { setHandler(&body); }

    bool startIndividualItem(const KLVKey& key, std::uint64_t length) override {
        return start(key, [&] { return next().startIndividualItem(key, length); });
    }
    void endIndividualItem(const KLVKey& key) override {
        next().endIndividualItem(key);
        order_.endTriplet();
    }
    bool startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                       KLVFieldForm lengthForm) override {
        return start(key, [&] { return next().startLocalSet(key, length, tagForm, lengthForm); });
    }
    void endLocalSet(const KLVKey& key) override {
        next().endLocalSet(key);
        order_.endTriplet();
    }
    bool startFixedLengthPack(const KLVKey& key, std::uint64_t length) override {
        return start(key, [&] { return next().startFixedLengthPack(key, length); });
    }
    void endFixedLengthPack(const KLVKey& key) override {
        next().endFixedLengthPack(key);
        order_.endTriplet();
    }
    bool startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) override {
        return start(key, [&] { return next().startVariableLengthPack(key, length, itemLengthForm); });
    }
    void endVariableLengthPack(const KLVKey& key) override {
        next().endVariableLengthPack(key);
        order_.endTriplet();
    }

private:
    template <class Start>
    bool start(const KLVKey& key, Start forward) {
        order_.requireTriplet(key);
        const bool wanted = forward();
        order_.startTriplet();
        return wanted;
    }

    Order& order_;
};

/// Has each element followed by fill up to the grid; the elements of a system item, of which there may be several, as
/// one.
class Aligner final : public MXFGCStructureFilter {
public:
    Aligner(MXFGCStructureHandler& next, Order& order) : MXFGCStructureFilter(next), order_(order) {}

    void endStream() override {
        order_.requireBetweenPackages();
        next().endStream();
    }
    void startContentPackage() override {
        order_.startContentPackage();
        next().startContentPackage();
    }
    void endContentPackage() override {
        order_.endContentPackage();
        endSystemItem();
        next().endContentPackage();
    }
    void startElement(const KLVKey& key) override {
        order_.startElement(key);
        isSystem_ = mxfutil::isGCSystemElement(key);
        if (!isSystem_) {
            endSystemItem();
        }
        next().startElement(key);
        if (!inSystemItem_) {
            next().startAlign(0);
        }
        inSystemItem_ = isSystem_;
    }
    void endElement(const KLVKey& key) override {
        order_.endElement(key);
        if (!isSystem_) {
            next().endAlign();
        }
        next().endElement(key);
    }

private:
    void endSystemItem() {
        if (inSystemItem_) {
            next().endAlign();
            inSystemItem_ = false;
        }
    }

    Order& order_;
    bool isSystem_ = false;
    bool inSystemItem_ = false;
};

/// Writes system elements with the length form of the essence.
class SystemCoder final : public MXFGCSystemCoder {
public:
    SystemCoder(KLVHandler& receiver, const MXFGCEssenceCoder& essence)
        : MXFGCSystemCoder(receiver), essence_(essence) {}

    bool wantsSystemElement(const KLVKey& key) override {
        setLengthForm(essence_.lengthForm());
        return MXFGCSystemCoder::wantsSystemElement(key);
    }

private:
    const MXFGCEssenceCoder& essence_;
};

} // namespace

struct MXFGCMuxer::Parts {
    Parts(KLVHandler& body, const Locator& locator, const KLVGrid& grid)
        : padder(body, locator, grid), triplets(body, order), structure(std::make_unique<Aligner>(padder, order)),
          essence(triplets), system(triplets, essence) {}

    Order order;
    MXFGCStructurePadder padder;
    Triplets triplets;
    std::unique_ptr<Aligner> structure;
    MXFGCEssenceCoder essence;
    SystemCoder system;
};

MXFGCMuxer::MXFGCMuxer(KLVHandler& body, const Locator& locator, const KLVGrid& grid)
    : parts_(std::make_unique<Parts>(body, locator, grid)) {}

MXFGCMuxer::~MXFGCMuxer() = default;

MXFGCStructureHandler& MXFGCMuxer::padder() {
    return parts_->padder;
}

void MXFGCMuxer::setIndexer(MXFGCIndexer& indexer) {
    parts_->structure = std::make_unique<Aligner>(indexer, parts_->order);
}

bool MXFGCMuxer::isInContentPackage() const {
    return parts_->order.isInPackage();
}

MXFGCStructureHandler& MXFGCMuxer::structureReceiver() {
    return *parts_->structure;
}

MXFGCSystemHandler& MXFGCMuxer::systemReceiver() {
    return parts_->system;
}

MXFGCEssenceCoder& MXFGCMuxer::essenceReceiver() {
    return parts_->essence;
}

} // namespace bryx
