/// Reads the input as a header metadata region, codes the model that comes of it, and reads that again. The second
/// model must equal the first. A model that cannot be coded must say so by a failed requirement.

#include <cstdio>
#include <cstdlib>

#include "klv/parse_error.h"
#include "support/Models.h"
#include "util/assertion_failure.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    BRYXMetadataFactory factory;
    ModelReader reader(factory);
    Model model;
    try {
        model = reader.readRegion({data, data + size});
    } catch (const klvutil::parse_error&) {
        return 0;
    }
    if (model.empty()) {
        return 0;
    }
    std::string octets;
    try {
        octets = coded(model.front(), factory);
    } catch (const util::assertion_failure&) {
        return 0;
    }
    ModelReader again(factory);
    const Model second = again.readRegion(octets);
    const std::string difference =
        second.size() == 1 ? mxfutil::firstDifference(*model.front(), *second.front()) : joined(again.log);
    if (!difference.empty() || second.size() != 1) {
        std::fprintf(stderr, "read again, the model differs: %s\n", difference.c_str());
        std::abort();
    }
    return 0;
}
