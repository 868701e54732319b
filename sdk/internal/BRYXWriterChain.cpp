#include "sdk/internal/BRYXWriterChain.h"

#include "mxf/structure/MXFStructureCoder.h"

namespace bryx {

BRYXWriterChain::BRYXWriterChain(std::ostream& stream, std::iostream* written,
                                 const BRYXWriterConfiguration& configuration)
    : writer(stream) {
    KLVHandler* const generic = writer.getKLVWriter();
    if (configuration.fillKeyVersion != 0) {
        fill_.setKeyVersion(configuration.fillKeyVersion);
    }
    if (written != nullptr) {
        verifying_ = std::make_unique<VerifyingKLVHandler>(*written, generic);
    }
    fill_.setHandler(verifying_ ? static_cast<KLVHandler*>(verifying_.get()) : generic);
    writer.setKLVWriter(&fill_);
    writer.structureReceiver().setBERLengthForm(configuration.packLengthForm);
}

} // namespace bryx
