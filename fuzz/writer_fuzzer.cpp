/// Reads the input as the body of a partition, and writes it into a file that is verified as it is written. Whatever the
/// body holds, what can be read of it can be written, and the file reads back as written, its index included. Left out are
/// system elements with tags or item lengths of four octets, which no writer takes, and those with more items than a splitter
/// hands on.

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "Writing.h"
#include "klv/DullErrorHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/parse_error.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCFindings.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/essence/MXFGCStructureHandler.h"

namespace {

/// Passes over what cannot be written.
class Splitter final : public MXFGCSplitter {
public:
    using MXFGCSplitter::MXFGCSplitter;

private:
    bool isSystemElement(const KLVKey& key) const override {
        return MXFGCSplitter::isSystemElement(key) && klvutil::itemTagForm(key) != KLVFieldForm::FourOctets &&
               klvutil::itemLengthForm(key) != KLVFieldForm::FourOctets;
    }
};

/// Ends the reading where an element is not handed on.
class Refusals final : public DullErrorHandler {
public:
    void error(const util::uuid& id, const std::string& message) override {
        if (id == mxfutil::findings::unsupportedGCSystemItems.id) {
            throw klvutil::parse_error(mxfutil::findings::unsupportedGCSystemItems, 0, message);
        }
    }
};

} // namespace

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
    Splitter splitter(&writer->structureReceiver(), &writer->systemReceiver(), &writer->essenceReceiver());
    Refusals refusals;
    splitter.setErrorHandler(&refusals);
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
