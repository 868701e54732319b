#pragma once

#include "klv/KLVReader.h"

namespace bryx {

/// Reads the KLV coding of SMPTE ST 336 from any byte stream, one triplet after the other, and drives a KLVHandler.
///
/// No tree is built and no value is held: a value goes to the buffers that the handler gives, or past it in pieces of
/// at most 65,536 octets, or is skipped. Reading takes the same memory whatever lengths the data claims, and never
/// goes past the end of a set or pack. The stream need not be able to seek; if it can, values are skipped by seeking.
///
/// A stream that can seek is read ahead, up to 128 KiB, past its own buffer, which need not be large: what is written there
/// meanwhile may not be seen. It belongs to the reader during a parse; a handler that reads something else in it has to
/// put it back where it stood. Of any other stream no more is read than the events ask for.
///
/// A reader may be used for one parse after the other, by one thread at a time.
class BRYX_API GenericKLVReader : public KLVReader {
public:
    void setHandler(KLVHandler* handler) override;
    KLVHandler* getHandler() const override;
    void setErrorHandler(ErrorHandler* errorHandler) override;
    ErrorHandler* getErrorHandler() const override;

    /// Reads from @p start to the end of the stream.
    ///
    /// @param start the position of the first key. A stream that can tell its position and seek must stand there (else
    ///     the requirement "correct currentPosition" fails); on another one, positions are counted from it.
    /// @throws klvutil::parse_error where the data or the stream does not allow to go on; the error handler still gets
    ///     its endStream, the handler does not
    /// @throws util::assertion_failure "handler is present", or "valid chunk offset" when a handler asks for a chunk
    ///     that it cannot have
    /// Exceptions of the handlers pass through. A stream that can seek then stands somewhere in the triplet that was told of,
    /// or behind it.
    void parse(std::istream& stream, std::streampos start) override;

    /// Reads on until the first triplet boundary at or beyond @p end, or until a handler has set @p stop.
    ///
    /// @param end where reading ends; -1 for the end of the stream
    /// @param[in,out] stop looked at before each triplet. Reading ends with the triplet during which it is set; a
    ///     stream that can seek then stands at the first octet after that triplet. Until then it may stand further
    ///     ahead.
    virtual void parse(std::istream& stream, std::streampos start, std::streampos end, bool& stop);

    /// Reads to the end of the stream, or until a handler has set @p stop.
    virtual void parse(std::istream& stream, std::streampos start, bool& stop);

private:
    KLVHandler* handler_ = nullptr;
    ErrorHandler* errorHandler_ = nullptr;
};

} // namespace bryx
