#pragma once

#include <cstdint>
#include <memory>
#include <ostream>

#include "klv/KLVKey.h"

namespace bryx {

/// The stream that a file is written to, as far as its chain does not write it: where the file begins, and going back in
/// it. Positions are octets from there. What fails throws "successful write()", whatever the stream's exception mask.
class BRYXOutput {
public:
    /// Requires "stream is present".
    explicit BRYXOutput(std::shared_ptr<std::ostream> stream);

    std::ostream& stream() const noexcept { return *stream_; }

    /// The file begins where the stream stands. Finds out whether that can seek; then @p first, the first key of the
    /// file, is written there for trial. Requires "stream writes where it stands", which one that was opened for
    /// appending does not.
    void start(const KLVKey& first);

    /// Whether what has been written can be corrected.
    bool canSeek() const noexcept { return base_ >= 0; }

    /// Has the stream hand over what it holds back.
    void flush();

    // All that follow need a stream that can seek.

    void seek(std::uint64_t position);
    void overwrite(std::uint64_t position, const std::uint8_t* octets, std::uint64_t size);

private:
    std::shared_ptr<std::ostream> stream_;
    std::streamoff base_ = -1; ///< where the file begins; -1 if the stream cannot seek
};

} // namespace bryx
