/// Writes the inputs that fuzzing starts from: make_seeds FOLDER

#include <fstream>

#include "mxf/essence/MXFPDProxySystemParser.h"
#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "mxf/structure/MXFIndexCoder.h"
#include "support/BuiltModel.h"
#include "support/GoodClip.h"
#include "support/KLVOctets.h"
#include "support/Models.h"
#include "support/Octets.h"

namespace {

/// The body of a partition: a system item with all kinds of elements, a proxy system item, essence and fill.
std::string builtBody() {
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
std::string builtIndex() {
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

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const std::string whole = FileBuilder::whole().file;
    BRYXMetadataFactory factory;
    const auto model = builtModel();
    const auto storage = model->getContentStorage();
    const auto material = std::dynamic_pointer_cast<MaterialPackage>(storage->getPackageAt(0));
    ClipOptions small;
    small.frames = 2;
    small.pictureSize = 20;
    small.partitionDuration = 1;
    for (const std::string& seed : {GoodClip(small).octets, whole, "run-in" + whole, whole.substr(0, 300),
                                    coded(model, factory), coded((storage->removePackageAt(0), material), factory),
                                    builtBody(), builtBody() + builtBody(), builtIndex()}) {
        std::ofstream file(argv[1] + ("/seed" + std::to_string(seed.size())), std::ios::binary);
        file << seed << '\0';
        if (!file.flush()) {
            return 1;
        }
    }
    return 0;
}
