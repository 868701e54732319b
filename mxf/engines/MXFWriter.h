#pragma once

#include <iosfwd>

#include "klv/GenericKLVWriter.h"
#include "mxf/engines/MXFMuxer.h"
#include "util/Api.h"

namespace bryx {

/// Writes an MXF stream in one pass: the chain of an MXFMuxer, and the stream it ends in. What comes when is for the
/// caller to decide, through the receivers.
///
/// A write that fails throws util::assertion_failure "successful write()", and nothing is written after it.
class BRYX_API MXFWriter : public MXFMuxer {
public:
    /// @param stream written to from where it stands, behind the run-in if there is one; outlives the writer
    explicit MXFWriter(std::ostream& stream);
    ~MXFWriter() override;

private:
    GenericKLVWriter writer_; ///< destroyed before the muxer
};

} // namespace bryx
