#pragma once

#include <iosfwd>
#include <memory>

#include "klv/ErrorHandler.h"
#include "klv/KLVHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCStructureHandler.h"
#include "mxf/essence/MXFPDProxySystemParser.h"
#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "mxf/index/MXFIndexHandler.h"
#include "mxf/metadata/factories/MXFMetadataFactory.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/structure/MXFStructureHandler.h"
#include "sdk/BRYXEssenceSplitter.h"
#include "util/Api.h"
#include "validation/BRYXValidationMode.h"

namespace bryx {

/// Reads an MXF file from its first octet to its last, tells the handlers what it holds, and checks it on the way.
///
/// @code
/// const auto file = std::make_shared<std::ifstream>("clip.mxf", std::ios::binary);
/// const auto reader = createBRYXReader(file, BRYXValidationMode::Standard);
/// reader->setMetadataHandler(metadata); // packages, tracks, descriptors
/// reader->setEssenceHandler(essence);   // pictures and sound
/// reader->setErrorHandler(errors);      // what is wrong with the file, and where
/// reader->read();
/// @endcode
///
/// Each handler may be set or not, and what has none is passed over: header metadata and index tables are not decoded,
/// essence is skipped with a seek where the stream allows it. A handler is held until another, or an empty pointer,
/// takes its place. All may be one object.
///
/// The file is checked if the mode is not None and there is an error handler, and only as far as handlers are set: its
/// structure with a structure handler, header metadata with a metadata handler, index tables with an index handler,
/// system items with an SDTI-CP system handler (and then with the essence elements about them); and one against the
/// other. Handlers that do nothing, such as DullMXFStructureHandler, serve where nothing but the checks is wanted.
/// Checking does not change what the handlers get.
///
/// For use by one thread at a time; readers share nothing with one another.
class BRYX_API BRYXReader {
public:
    virtual ~BRYXReader();

    /// Makes the sets of header metadata; a new BRYXMetadataFactory, whose findings go to the error handler, if empty.
    /// One that is given keeps its own error handler.
    virtual void setMetadataFactory(std::shared_ptr<MXFMetadataFactory> factory) = 0;

    /// Decides which keys are those of essence elements; if empty, ST 379-1 does.
    virtual void setEssenceKeyClassifier(std::shared_ptr<BRYXGCEssenceKeyClassifier> classifier) = 0;

    /// Told of run-in, partitions and random index.
    virtual void setStructureHandler(std::shared_ptr<MXFStructureHandler> handler) = 0;

    /// Gets the primer and the sets of each header metadata region; and the model that they make, between the last set
    /// and the end, if it is an MXFMetadataModelHandler as well.
    virtual void setMetadataHandler(std::shared_ptr<MXFMetadataHandler> handler) = 0;

    /// Gets the index table segments.
    virtual void setIndexHandler(std::shared_ptr<MXFIndexHandler> handler) = 0;

    /// Told where content packages and elements begin and end.
    virtual void setGCStructureHandler(std::shared_ptr<MXFGCStructureHandler> handler) = 0;

    /// Gets the SDTI-CP compatible system items of content packages (ST 385).
    virtual void setSDTICPSystemHandler(std::shared_ptr<MXFSDTICPSystemHandler> handler) = 0;
    /// Gets the PDProxy system items of content packages.
    virtual void setPDProxySystemHandler(std::shared_ptr<MXFPDProxySystemHandler> handler) = 0;

    /// Gets the essence; in pieces if it is an MXFGCChunkedEssenceHandler as well.
    virtual void setEssenceHandler(std::shared_ptr<MXFGCEssenceHandler> handler) = 0;

    /// Told what is wrong with the file. Its locator shows the KLV triplet that a report is about, also where that was
    /// read before; until the next reading, or the end of the reader, it shows the last position of this one.
    virtual void setErrorHandler(std::shared_ptr<ErrorHandler> handler) = 0;

    /// Reads the file that begins at the stream's current position, to the end of the stream. A stream that is at its
    /// end already is no file: nothing is called. May be called again, and keeps nothing from one call to the next.
    ///
    /// To stop before the end, throw an exception of your own from a handler: it comes out unchanged.
    ///
    /// @throws klvutil::parse_error where the data or the stream does not allow to go on, with the position
    virtual void read() = 0;

    /// Gets the body of each generic stream partition (ST 410) as a stream of KLV triplets of its own.
    virtual void setGenericStreamHandler(std::shared_ptr<KLVHandler> handler) = 0;
};

/// A reader of @p stream, which it holds as well. Requires "stream is present".
BRYX_API std::shared_ptr<BRYXReader> createBRYXReader(std::shared_ptr<std::istream> stream,
                                                      BRYXValidationMode::Enum mode);

} // namespace bryx
