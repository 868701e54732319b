#pragma once

#include <cstdint>

#include "klv/KLVCoding.h"
#include "klv/KLVFindings.h"
#include "klv/KLVHandler.h"
#include "klv/KLVIndividualItemHandler.h"
#include "klv/internal/KLVInput.h"
#include "klv/internal/KLVValueDelivery.h"

namespace bryx {

/// What the elements of one parse share: the input, the handler, the last BER length form reported, and the innermost
/// set or pack that is being walked.
class KLVWalk {
public:
    static constexpr unsigned maxDepth = 32;

    KLVWalk(KLVInput& from, KLVHandler& to)
        : input(from), handler(to), itemHandler_(dynamic_cast<KLVIndividualItemHandler*>(&to)) {}

    KLVInput& input;
    KLVHandler& handler;

    /// Walks triplets up to stream position @p end, or that of the stream if it is -1, or until @p stop is set.
    void walkStream(std::streamoff end, const bool& stop);

    /// Reads the next key, makes its element and walks it.
    void walkTriplet();

    /// Reads a BER length and reports its form if it has changed.
    std::uint64_t readBERLength();

    /// Reads a number of 1 to 8 octets, which have to be left.
    std::uint64_t number(unsigned octets);

    /// Reads a tag or a length in @p form.
    std::uint64_t readField(KLVFieldForm form);

    /// The octets left in the innermost set or pack, or up to the largest stream position.
    std::uint64_t left() const { return static_cast<std::uint64_t>(end_ - input.position()); }

    /// Walks the content of a set or pack of @p length octets: calls @p item until they are used up. Where they do not
    /// come out even, @p finding is thrown.
    template <class Item>
    void walkContainer(std::uint64_t length, const klvutil::Finding& finding, Item item);

    /// Makes the start event, deals with a content of @p length octets as its result says, makes the end event. A
    /// content that does not fit what is left of the container is not looked at; the parse ends after the end event.
    template <class Start, class Content, class End>
    void walkContent(std::uint64_t length, Start start, Content content, End end);

    /// Passes a value of @p length octets on to the handler as it asks.
    void deliver(std::uint64_t length) { klvutil::deliverValue(input, handler, length); }

private:
    /// Walks the next triplet, if that is an outermost one that has been read ahead and that the handler takes whole.
    bool walkItemAhead();

    /// Tells of the form of a length if it is another one.
    void tellForm(std::uint8_t form);

    /// Ends the parse unless @p size octets are left in the container.
    void requireLeft(std::uint64_t size) const {
        if (size > left()) {
            input.fail(*overrun_);
        }
    }

    KLVIndividualItemHandler* itemHandler_; ///< the handler, if it takes items whole
    std::uint8_t lastForm_ = klvutil::automaticBERLengthForm;
    unsigned depth_ = 0;
    std::streamoff end_ = KLVInput::maxPosition;
    const klvutil::Finding* overrun_ = &klvutil::findings::lengthOutOfRange;
};

template <class Item>
void KLVWalk::walkContainer(std::uint64_t length, const klvutil::Finding& finding, Item item) {
    if (depth_ == maxDepth) {
        input.fail(klvutil::findings::nestingTooDeep);
    }
    const std::streamoff outerEnd = end_;
    const klvutil::Finding* const outerOverrun = overrun_;
    ++depth_;
    end_ = input.position() + static_cast<std::streamoff>(length);
    overrun_ = &finding;
    while (left() > 0) {
        item();
    }
    --depth_;
    end_ = outerEnd;
    overrun_ = outerOverrun;
}

template <class Start, class Content, class End>
void KLVWalk::walkContent(std::uint64_t length, Start start, Content content, End end) {
    const bool fits = length <= left();
    const bool wanted = start();
    if (fits) {
        if (wanted) {
            content();
        } else {
            input.skip(length);
        }
    }
    end();
    if (!fits) {
        input.fail(*overrun_);
    }
}

} // namespace bryx
