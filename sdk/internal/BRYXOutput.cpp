#include "sdk/internal/BRYXOutput.h"

#include <utility>

#include "klv/internal/StreamAccess.h"
#include "util/assertion_failure.h"

namespace bryx {

using util::require;

BRYXOutput::BRYXOutput(std::shared_ptr<std::ostream> stream) : stream_(std::move(stream)) {
    require(stream_ != nullptr, "stream is present");
}

void BRYXOutput::start(const KLVKey& first) {
    const klvutil::StreamExceptionsOff exceptionsOff(*stream_);
    if (!*stream_) {
        return; // which whoever writes will find out
    }
    const std::streamoff place = stream_->tellp();
    const bool canSeek = place >= 0 && stream_->seekp(place);
    stream_->clear(stream_->rdstate() & ~std::ios::failbit); // which one that cannot seek may set
    if (!canSeek) {
        return;
    }
    base_ = place;
    // The second time shows where it writes: one that appends does so behind the first.
    for (int i = 0; i < 2; ++i) {
        overwrite(0, first.octets.data(), first.octets.size());
    }
    seek(0);
}

void BRYXOutput::flush() {
    const klvutil::StreamExceptionsOff exceptionsOff(*stream_);
    require(static_cast<bool>(stream_->flush()), "successful write()");
}

void BRYXOutput::seek(std::uint64_t position) {
    const klvutil::StreamExceptionsOff exceptionsOff(*stream_);
    require(static_cast<bool>(stream_->seekp(base_ + static_cast<std::streamoff>(position))), "successful write()");
}

void BRYXOutput::overwrite(std::uint64_t position, const std::uint8_t* octets, std::uint64_t size) {
    seek(position);
    require(klvutil::put(*stream_, octets, size), "successful write()");
    flush(); // or else the stream may tell where it would like to stand
    const klvutil::StreamExceptionsOff exceptionsOff(*stream_);
    require(std::streamoff{stream_->tellp()} == base_ + static_cast<std::streamoff>(position + size),
            "stream writes where it stands");
}

} // namespace bryx
