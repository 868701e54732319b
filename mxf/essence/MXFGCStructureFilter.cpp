#include "mxf/essence/MXFGCStructureFilter.h"

namespace bryx {

MXFGCStructureFilter::~MXFGCStructureFilter() = default;

void MXFGCStructureFilter::startStream(std::uint64_t kagSize) {
    next_.startStream(kagSize);
}
void MXFGCStructureFilter::endStream() {
    next_.endStream();
}
void MXFGCStructureFilter::startContentPackage() {
    next_.startContentPackage();
}
void MXFGCStructureFilter::endContentPackage() {
    next_.endContentPackage();
}
void MXFGCStructureFilter::startElement(const KLVKey& key) {
    next_.startElement(key);
}
void MXFGCStructureFilter::endElement(const KLVKey& key) {
    next_.endElement(key);
}
void MXFGCStructureFilter::startPad(std::uint64_t extraSize) {
    next_.startPad(extraSize);
}
void MXFGCStructureFilter::endPad() {
    next_.endPad();
}
void MXFGCStructureFilter::startAlign(std::uint64_t alignment) {
    next_.startAlign(alignment);
}
void MXFGCStructureFilter::endAlign() {
    next_.endAlign();
}

} // namespace bryx
