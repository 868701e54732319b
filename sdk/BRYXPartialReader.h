#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>

#include "klv/ErrorHandler.h"
#include "mxf/index/MXFIndexHandler.h"
#include "mxf/metadata/factories/MXFMetadataFactory.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/structure/MXFStructureHandler.h"
#include "util/Api.h"

namespace bryx {

/// Reads single partitions, or the random index, of a file in a stream that can seek, and nothing of the essence: where
/// a whole file would take long and only its structure, header metadata or index matters. The file may still be growing.
///
/// Handlers are held until another, or an empty pointer, takes their place; each may be set or not. For use by one
/// thread at a time.
class BRYX_API BRYXPartialReader {
public:
    virtual ~BRYXPartialReader();

    /// As BRYXReader::setMetadataFactory().
    virtual void setMetadataFactory(std::shared_ptr<MXFMetadataFactory> factory) = 0;
    /// Told of partitions and, if it is read, the random index.
    virtual void setStructureHandler(std::shared_ptr<MXFStructureHandler> handler) = 0;
    /// As BRYXReader::setMetadataHandler().
    virtual void setMetadataHandler(std::shared_ptr<MXFMetadataHandler> handler) = 0;
    /// As BRYXReader::setIndexHandler().
    virtual void setIndexHandler(std::shared_ptr<MXFIndexHandler> handler) = 0;
    /// As BRYXReader::setErrorHandler().
    virtual void setErrorHandler(std::shared_ptr<ErrorHandler> handler) = 0;

    /// As MXFPartialReader::skipRunIn(). To be called, where there may be a run-in, before anything else.
    /// @throws klvutil::parse_error as MXFPartialReader::skipRunIn() does
    virtual std::uint64_t skipRunIn() = 0;

    /// As MXFPartialReader::readPartition().
    /// @return whether there was a partition pack at stream position @p position
    /// @throws klvutil::parse_error where the data or the stream does not allow to go on
    virtual bool readPartition(std::uint64_t position) = 0;

    /// As MXFPartialReader::readRandomIndexPack(): it goes to the structure handler. Requires "has structure handler".
    /// @return whether the file ends with a random index pack
    virtual bool readRandomIndexPack() = 0;
};

/// A partial reader of @p stream, which it holds as well. Requires "stream is present".
BRYX_API std::shared_ptr<BRYXPartialReader> createBRYXPartialReader(std::shared_ptr<std::istream> stream);

} // namespace bryx
