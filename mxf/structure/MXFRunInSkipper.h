#pragma once

#include <cstdint>
#include <ios>
#include <iosfwd>
#include <string>

#include "util/Api.h"

namespace bryx {

class ErrorHandler;
class MXFStructureHandler;

/// Finds the header partition pack behind a run-in: octets of another kind of file that an MXF file may begin with
/// (ST 377-1 §6.5).
///
/// The search looks for the first 11 octets of a partition pack key. It has a locator of its own, and tells the error
/// handler so with setLocator, startStream and endStream.
class BRYX_API MXFRunInSkipper {
public:
    /// The longest run-in that ST 377-1 allows, in octets.
    static constexpr std::uint64_t maxRunIn = 65535;

    /// @param limit the longest run-in that is accepted
    explicit MXFRunInSkipper(std::uint64_t limit = maxRunIn) : limit_(limit) {}

    /// Gets the length of a run-in that is found, if it is not 0. Not owned; may be null.
    void setStructureHandler(MXFStructureHandler* structureHandler) { structureHandler_ = structureHandler; }

    /// Gets what ends the search as a fatal error. Not owned; may be null.
    void setErrorHandler(ErrorHandler* errorHandler) { errorHandler_ = errorHandler; }

    /// Reads from the current position to the partition pack key and returns the length of the run-in.
    ///
    /// Afterwards a stream that can seek stands at the first octet of the key. On another one the octets of the key
    /// that were read are in prefix(), and are to be read again before what is left in the stream.
    ///
    /// @throws klvutil::parse_error "invalid run-in" when there is no key within the limit, "unsuccessful get()",
    ///     "unsuccessful seekg()" or "input stream is not good()"; each is first reported to the error handler
    std::uint64_t skip(std::istream& stream);

    /// The octets taken from a stream that cannot seek which belong to the header partition pack; else empty.
    const std::string& prefix() const noexcept { return prefix_; }

private:
    std::uint64_t search(std::istream& stream, std::streampos& position) const;

    std::uint64_t limit_;
    MXFStructureHandler* structureHandler_ = nullptr;
    ErrorHandler* errorHandler_ = nullptr;
    std::string prefix_;
};

} // namespace bryx
