#pragma once

#include <cstdint>
#include <iosfwd>

#include "util/Api.h"

namespace bryx {

class ErrorHandler;
class KLVHandler;
class MXFIndexHandler;
class MXFStructureHandler;

/// Reads single partitions, or the random index, of a file in a stream that can seek, without reading the rest: where
/// a whole file would take long and only its structure or header metadata matters. The file may still be growing. Each
/// call leaves the stream in a good state, somewhere.
///
/// Nothing that is set is owned. Use by one thread at a time.
class BRYX_API MXFPartialReader {
public:
    /// Told of run-in, partition and random index.
    void setStructureHandler(MXFStructureHandler* handler) { structureHandler_ = handler; }
    void clearStructureHandler() { structureHandler_ = nullptr; }

    /// Gets the header metadata of a partition as a stream.
    void setHeaderMetadataHandler(KLVHandler* handler) { headerMetadataHandler_ = handler; }
    void clearHeaderMetadataHandler() { headerMetadataHandler_ = nullptr; }

    /// Gets the index table segments of a partition.
    void setIndexHandler(MXFIndexHandler* handler) { indexHandler_ = handler; }
    void clearIndexHandler() { indexHandler_ = nullptr; }

    /// Told what is wrong with what is read.
    void setErrorHandler(ErrorHandler* handler) { errorHandler_ = handler; }
    void clearErrorHandler() { errorHandler_ = nullptr; }

    /// The stream to read from. The file begins where it stands when skipRunIn is called, else at position 0.
    void setInputStream(std::istream* stream);
    void clearInputStream() { setInputStream(nullptr); }

    /// Finds the header partition pack from the stream's current position, tells the structure handler of a run-in and
    /// returns its length in octets. Offsets that partition packs and the random index hold count from behind it.
    /// Requires "has stream".
    /// @throws klvutil::parse_error as MXFRunInSkipper::skip does
    std::uint64_t skipRunIn();

    /// Reads the partition whose pack begins at stream position @p position, up to where its body begins. The structure
    /// handler gets startStructure, the partition and endStructure. What follows may be damaged or not be there yet.
    /// Requires "has stream" and "position is in the file": not before its beginning.
    /// @return whether there was a partition
    /// @throws klvutil::parse_error where the data or the stream does not allow to go on
    bool readPartition(std::uint64_t position);

    /// Reads the random index pack at the end of the stream; its overall length in the last four octets leads to it.
    /// Requires "has stream", "has structure handler" and "successful seekg()".
    /// @return whether there was a random index pack; if not, nothing is called
    bool readRandomIndexPack();

private:
    MXFStructureHandler* structureHandler_ = nullptr;
    KLVHandler* headerMetadataHandler_ = nullptr;
    MXFIndexHandler* indexHandler_ = nullptr;
    ErrorHandler* errorHandler_ = nullptr;
    std::istream* stream_ = nullptr;
    std::uint64_t base_ = 0;
};

} // namespace bryx
