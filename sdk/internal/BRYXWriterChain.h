#pragma once

#include <iosfwd>
#include <memory>

#include "klv/KLVFillItemKeyFilter.h"
#include "klv/VerifyingKLVHandler.h"
#include "mxf/engines/MXFWriter.h"
#include "sdk/BRYXWriter.h"

namespace bryx {

/// The chain to a stream: what MXFWriter assembles, with a key filter for fill in it, and a verifier if that is wanted.
class BRYXWriterChain {
public:
    /// @param written to read back from; null for no verification
    BRYXWriterChain(std::ostream& stream, std::iostream* written, const BRYXWriterConfiguration& configuration);

    MXFWriter writer;

private:
    KLVFillItemKeyFilter fill_;
    std::unique_ptr<VerifyingKLVHandler> verifying_;
};

} // namespace bryx
