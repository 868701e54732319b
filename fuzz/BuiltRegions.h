#pragma once

#include <string>

#include "mxf/essence/MXFPDProxySystemParser.h"
#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "mxf/index/MXFIndexCoder.h"
#include "support/KLVOctets.h"
#include "support/Octets.h"

/// The body of a partition: a system item with all kinds of elements, a proxy system item, essence and fill.
inline std::string builtBody() {
    const std::string item = octets::of({1, 0, 1, 7});
    std::string body = octets::klv(mxfutil::sdtiCPSystemMetadataKey, octets::of({0x5D, 4}) + std::string(55, 1));
    for (int kind = 2; kind < 6; ++kind) {
        body += octets::klv(mxfutil::sdtiCPElementKey(static_cast<mxfutil::SDTICPElement>(kind), 1), item);
    }
    body +=
        octets::klv(mxfutil::sdtiCPElementKey(mxfutil::SDTICPElement::Control, 1), octets::of({0, 0, 0, 0, 2, 7, 7}));
    body += octets::klv(keys::picture, "picture") + octets::klv(klvutil::fillKey, std::string(9, 0));
    return body + octets::klv(mxfutil::pdProxySetKey, octets::of({1, 1, 0, 4, 0, 0, 0, 1, 1, 2, 0, 16, 0, 0,
                                                                  0, 1, 0, 0, 0, 8, 1, 2, 3, 4, 0, 0,  0, 0}));
}

/// Segments with entries, slices and pos tables, and without any.
inline std::string builtIndex() {
    MXFIndexTableSegment segment;
    segment.instanceUID.octets[0] = 1;
    segment.indexEditRate = {25, 1};
    segment.indexDuration = 2;
    segment.bodySID = segment.indexSID = 1;
    segment.sliceCount = segment.posTableCount = 1;
    segment.deltaEntryArray = {{-1, 0, 0}, {1, 1, 7}};
    segment.indexEntryArray = {{1, 0, 0x80, 0, {5}, {{1, 2}}}, {-1, -1, 0, 100, {6}, {{0, 1}}}};
    KLVOctets octets;
    MXFIndexCoder coder(octets);
    coder.startIndex();
    coder.indexTableSegment(segment);
    segment = {};
    segment.instanceUID.octets[0] = 2;
    segment.indexEditRate = {25, 1};
    segment.indexStartPosition = 2;
    segment.bodySID = segment.indexSID = 1;
    segment.editUnitByteCount = 50;
    coder.indexTableSegment(segment);
    return octets.octets;
}
