/// Reads the input as the body of a partition, and writes it into a file that is verified as it is written. Whatever the
/// body holds, what can be read of it can be written, and the file reads back as written, its index included.

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "klv/GenericKLVReader.h"
#include "klv/parse_error.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/essence/MXFGCStructureHandler.h"
#include "mxf/metadata/structural/Preface.h"
#include "sdk/BRYXWriter.h"

namespace {

const BRYXHeaderMetadata& metadata() {
    static const BRYXHeaderMetadata metadata = [] {
        const auto preface = Preface::create();
        preface->setOperationalPattern({});
        preface->setEssenceContainers({});
        preface->setDMSchemes({});
        preface->setContentStorage(ContentStorage::create());
        return toBRYXHeaderMetadata(preface);
    }();
    return metadata;
}

BRYXWriterConfiguration configuration(std::uint8_t choice) {
    constexpr std::uint32_t kagSizes[] = {0, 1, 16, 512};
    constexpr std::uint8_t forms[] = {0x80, 1, 0x81, 0x88};
    BRYXWriterConfiguration configuration;
    configuration.kagSize = kagSizes[choice % 4U];
    configuration.essenceLengthForm = forms[choice / 4U % 4U];
    configuration.partitionDuration = choice / 16U % 4U;
    configuration.indexPlacement = choice < 128 ? BRYXWriterConfiguration::IndexPlacement::AfterEssence
                                                : BRYXWriterConfiguration::IndexPlacement::Footer;
    return configuration;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::uint8_t choice = data[size - 1];
    std::istringstream body(std::string(reinterpret_cast<const char*>(data), size - 1));
    const auto writer = createVerifyingBRYXWriter(std::make_shared<std::stringstream>());
    writer->setConfiguration(configuration(choice));
    writer->start(metadata());
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
    if (!writer->finish(metadata())) {
        std::fputs("the header partition is left open\n", stderr);
        std::abort();
    }
    return 0;
}
