#include "mxf/engines/MXFWriter.h"

namespace bryx {

MXFWriter::MXFWriter(std::ostream& stream) : writer_(stream) {
    setKLVWriter(&writer_);
}

MXFWriter::~MXFWriter() = default;

} // namespace bryx
