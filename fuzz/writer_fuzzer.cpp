/// Reads the input as the body of a partition, and writes it into a file that is verified as it is written. Whatever the
/// body holds, what can be read of it can be written, and the file reads back as written, its index included.

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "Writing.h"
#include "klv/GenericKLVReader.h"
#include "klv/parse_error.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/essence/MXFGCStructureHandler.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::uint8_t choice = data[size - 1];
    std::istringstream body(std::string(reinterpret_cast<const char*>(data), size - 1));
    const auto writer = createVerifyingBRYXWriter(std::make_shared<std::stringstream>());
    writer->setConfiguration(configurationOf(choice));
    writer->start(leastMetadata());
    BRYXEssenceContainer container;
    container.isConstant = choice % 3 == 0;
    writer->startEssence(container);
    MXFGCSplitter splitter(&writer->structureReceiver(), &writer->systemReceiver(), &writer->essenceReceiver());
    GenericKLVReader reader;
    reader.setHandler(&splitter);
    try {
        reader.parse(body, 0);
    } catch (const klvutil::parse_error&) {
        return 0; // an element may be half written
    }
    writer->endEssence();
    if (!writer->finish(leastMetadata())) {
        std::fputs("the header partition is left open\n", stderr);
        std::abort();
    }
    return 0;
}
