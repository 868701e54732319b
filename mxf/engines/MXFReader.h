#pragma once

#include <iosfwd>

#include "util/Api.h"

namespace bryx {

class ErrorHandler;
class KLVHandler;
class MXFStructureHandler;

/// Reads an MXF file from its first octet to its last and tells the handlers what it holds.
///
/// @code
/// MXFReader reader;
/// reader.setStructureHandler(&structure);  // partitions, random index
/// reader.setBodyHandler(&body);            // the KLV triplets of the essence
/// reader.setErrorHandler(&errors);         // what is wrong with the file, and where
/// std::ifstream file("clip.mxf", std::ios::binary);
/// reader.read(file);
/// @endcode
///
/// Handlers are not owned and must outlive the call of read; those not set are done without. The stream need not be
/// able to seek. To stop before the end, throw an exception of your own from a handler: it comes out of read unchanged.
/// A reader may read one stream after the other, by one thread at a time.
class BRYX_API MXFReader {
public:
    /// Whether octets before the header partition pack are looked past; true unless set. If not, the stream is taken
    /// to begin with a KLV triplet.
    bool setSkipRunIn(bool skipRunIn) { return skipRunIn_ = skipRunIn; }

    /// Told of run-in, partitions and random index, after they have been checked by an MXFStructureValidator.
    MXFStructureHandler* setStructureHandler(MXFStructureHandler* handler) { return structureHandler_ = handler; }

    /// Gets each header metadata region as a stream of its own.
    KLVHandler* setHeaderMetadataHandler(KLVHandler* handler) { return headerMetadataHandler_ = handler; }

    /// Gets each index region as a stream of its own.
    KLVHandler* setIndexHandler(KLVHandler* handler) { return indexHandler_ = handler; }

    /// Gets each body, save those of generic stream partitions, as a stream of its own.
    KLVHandler* setBodyHandler(KLVHandler* handler) { return bodyHandler_ = handler; }

    /// Gets the body of each generic stream partition (ST 410) as a stream of its own.
    KLVHandler* setGenericStreamHandler(KLVHandler* handler) { return genericStreamHandler_ = handler; }

    /// Told what is wrong with the file.
    ErrorHandler* setErrorHandler(ErrorHandler* handler) { return errorHandler_ = handler; }

    /// Reads the file that begins at the stream's current position and extends to the stream's end. A stream that is
    /// already at its end is no file: nothing is called.
    ///
    /// @throws klvutil::parse_error where the data or the stream does not allow to go on, with the position; the error
    ///     handler has got its endStream before
    /// Exceptions of the handlers pass through.
    void read(std::istream& stream);

private:
    bool skipRunIn_ = true;
    MXFStructureHandler* structureHandler_ = nullptr;
    KLVHandler* headerMetadataHandler_ = nullptr;
    KLVHandler* indexHandler_ = nullptr;
    KLVHandler* bodyHandler_ = nullptr;
    KLVHandler* genericStreamHandler_ = nullptr;
    ErrorHandler* errorHandler_ = nullptr;
};

} // namespace bryx
