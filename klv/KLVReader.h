#pragma once

#include <ios>
#include <iosfwd>

#include "util/Api.h"

namespace bryx {

class ErrorHandler;
class KLVHandler;

/// Turns a stream of octets into KLV events on a handler. Handler and error handler are not owned and must outlive
/// the parse.
class BRYX_API KLVReader {
public:
    virtual ~KLVReader();

    /// Gets the events. A null pointer clears it.
    virtual void setHandler(KLVHandler* handler) = 0;
    /// Requires "handler is present".
    virtual KLVHandler* getHandler() const = 0;

    /// The error handler is optional; a null pointer clears it.
    virtual void setErrorHandler(ErrorHandler* errorHandler) = 0;
    /// Requires "error handler is present".
    virtual ErrorHandler* getErrorHandler() const = 0;

    /// Reads from @p start, which is where a stream that can tell its position stands, to the end of the stream.
    virtual void parse(std::istream& stream, std::streampos start) = 0;
};

} // namespace bryx
