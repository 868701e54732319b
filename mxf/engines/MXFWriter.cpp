#include "mxf/engines/MXFWriter.h"

MXFWriter::MXFWriter(std::ostream& stream) : writer_(stream) {
    setKLVWriter(&writer_);
}

MXFWriter::~MXFWriter() = default;
