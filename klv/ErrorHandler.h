#pragma once

#include <string>

#include "util/Api.h"
#include "util/uuid.h"

namespace bryx {

class Locator;

/// Receives findings about the data that is read or written. An application implements it to log what is wrong with
/// a file and to decide whether to go on.
///
/// Per stream the calls come in this order: setLocator, startStream, setLocator again from an engine that knows the
/// positions of packs better, any number of reports, endStream. endStream also comes after a requested stop and before
/// an exception leaves the parse; the locator must not be used after it. Reading one file makes two streams: the search
/// for its first octet behind a run-in, and the file.
///
/// The report operations may throw: the exception ends reading and reaches the caller of the parse.
class BRYX_API ErrorHandler {
public:
    virtual ~ErrorHandler();

    /// @p locator tells the position of the KLV triplet being processed whenever a report arrives.
    virtual void setLocator(const Locator& locator) = 0;
    /// A stream begins: positions are those of the locator from now on.
    virtual void startStream() = 0;
    virtual void endStream() = 0;

    /// Something a careful writer would not have done. Reading goes on.
    virtual void warning(const util::uuid& id, const std::string& message) = 0;

    /// A violation. If the call returns, reading goes on where that makes sense; where it does not, the engine throws
    /// klvutil::parse_error with the same text and identifier.
    virtual void error(const util::uuid& id, const std::string& message) = 0;

    /// Reading cannot go on. An implementation is expected to throw; if it returns, the engine throws
    /// klvutil::parse_error with the same text and identifier.
    virtual void fatalError(const util::uuid& id, const std::string& message) = 0;
};

} // namespace bryx
