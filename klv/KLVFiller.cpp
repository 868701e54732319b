#include "klv/KLVFiller.h"

#include <algorithm>

namespace bryx {

using util::require;

namespace {

constexpr std::uint64_t pieceSize = 4096;

} // namespace

std::uint64_t klvutil::fillSize(std::uint64_t size, std::uint64_t alignment, std::uint8_t form) {
    if (alignment == 0 || size % alignment == 0) {
        return 0;
    }
    const std::uint64_t head = keySize + berLengthFieldSize(form);
    const std::uint64_t over = (size % alignment + head) % alignment;
    return head + (over == 0 ? 0 : alignment - over);
}

KLVFiller::~KLVFiller() = default;

void KLVFiller::setLocator(const Locator& locator) {
    locator_ = &locator;
    next().setLocator(locator);
}

const Locator& KLVFiller::getLocator() const {
    require(locator_ != nullptr, "locator is present");
    return *locator_;
}

std::uint64_t KLVFiller::position() const {
    return static_cast<std::uint64_t>(std::streamoff{getLocator().streampos()});
}

void KLVFiller::setPadding(Mode mode, std::uint64_t alignment, std::uint64_t paddedLength) {
    require(mode != Mode::FixedLength || alignment == 0 || paddedLength % alignment == 0,
            "padded length is multiple of alignment");
    mode_ = mode;
    alignment_ = alignment;
    paddedLength_ = paddedLength;
}

void KLVFiller::setFillLengthForm(std::uint8_t form) {
    require(klvutil::isValidBERLengthForm(form), "valid BER length form");
    fillForm_ = form;
}

void KLVFiller::berLengthForm(std::uint8_t form) {
    form_ = form;
    next().berLengthForm(form);
}

void KLVFiller::startFilledItem() {
    require(!inFilledItem_, "not in filled item");
    start_ = position();
    inFilledItem_ = true;
}

void KLVFiller::endFilledItem() {
    require(inFilledItem_, "in filled item");
    if (mode_ == Mode::FixedLength) {
        const std::uint64_t written = position() - start_;
        const std::uint64_t head = klvutil::keySize + klvutil::berLengthFieldSize(fillForm_);
        require(paddedLength_ == written || (paddedLength_ > written && paddedLength_ - written >= head),
                "achievable padded length");
        writeFill(paddedLength_ - written);
    } else {
        const std::uint64_t written = position() - static_cast<std::uint64_t>(grid_.origin);
        writeFill(klvutil::fillSize(written + extraSize_, alignment_, fillForm_));
    }
    inFilledItem_ = false;
}

void KLVFiller::writeFill(std::uint64_t size) {
    if (size == 0) {
        return;
    }
    const std::uint64_t usual = size - klvutil::keySize - klvutil::berLengthFieldSize(fillForm_);
    const std::uint8_t form = klvutil::fittingBERLengthForm(fillForm_, usual);
    const std::uint64_t length = size - klvutil::keySize - klvutil::berLengthFieldSize(form);
    next().berLengthForm(form);
    if (next().startIndividualItem(klvutil::fillKey, length)) {
        static constexpr std::uint8_t zeros[pieceSize] = {};
        for (std::uint64_t left = length; left > 0;) {
            const std::uint64_t piece = std::min(left, pieceSize);
            next().value(zeros, piece);
            left -= piece;
        }
    }
    next().endIndividualItem(klvutil::fillKey);
    if (form_ != 0 && form_ != form) {
        next().berLengthForm(form_);
    }
}

} // namespace bryx
