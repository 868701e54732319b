/// Writes an MXF file again, with a fresh layout and the same content.
///
///     rewrap IN OUT [options]
///
/// Essence, system items and generic streams are copied octet for octet; header metadata goes through a model, or through
/// its sets as they are if the model cannot hold it whole. IN stays as it is. Exits with 0, with 1 if anything is wrong
/// with IN or OUT cannot be written, or with 2 if it was called wrongly.

#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include <boost/program_options.hpp>

#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "rewrap/Rewrap.h"
#include "shared/CommandLine.h"
#include "shared/ErrorPrinter.h"
#include "shared/InputFile.h"
#include "shared/OutputFile.h"
#include "util/byte_order.h"

namespace {

using Placement = BRYXWriterConfiguration::IndexPlacement;

/// Hands out the same identifiers in each run.
class CountingUIDGenerator final : public MXFUIDGenerator {
public:
    MXFUID generateUID() override {
        MXFUID uid{{0xB7, 0x19, 0x64, 0x0E, 0x52, 0xDA, 0x4C, 0x83, 0x91, 0x5F}};
        util::storeBigEndian(&uid.octets[10], ++count_, 6);
        return uid;
    }

private:
    std::uint64_t count_ = 0;
};

ExitCode run(const std::string& in, const std::string& out, const RewrapOptions& options) {
    std::ifstream file;
    if (!openInput(file, in, "rewrap")) {
        return Failure;
    }
    const auto size = sizeOf(file);
    if (!size) {
        throw std::runtime_error(in + ": cannot seek, and is to be read twice; make it a file first");
    }
    if (*size == 0) {
        throw std::runtime_error("the file is empty");
    }
    std::error_code unknown;
    if (std::filesystem::equivalent(in, out, unknown)) {
        throw std::runtime_error(out + " is what is read");
    }
    ProgressBar progress(size);
    ErrorPrinter errors("rewrap", progress);
    std::shared_ptr<std::fstream> written;
    const auto create = [&] { return written = createOutput(out); };
    try {
        rewrap(file, create, options, errors, progress);
    } catch (const std::exception& error) {
        const std::string problem =
            written == nullptr || *written ? std::string(error.what()) : fileFailure(out).what();
        errors.finish();
        errors.error(problem);
    }
    errors.finish();
    progress.clear();
    return errors.errors() == 0 ? Success : Failure;
}

Placement placementOf(const std::string& name) {
    static const std::map<std::string, Placement> names{
        {"none", Placement::None}, {"footer", Placement::Footer}, {"after", Placement::AfterEssence}};
    const auto found = names.find(name);
    if (found == names.end()) {
        throw boost::program_options::error("there is no index placement \"" + name + "\"");
    }
    return found->second;
}

} // namespace

int main(int argc, char** argv) {
    namespace po = boost::program_options;
    RewrapOptions options;
    BRYXWriterConfiguration& configuration = options.configuration;
    configuration.headerSpace = 0; // what is written in the end is what is known in the beginning
    std::string placement = "after";
    po::options_description described("Writes an MXF file again, with a fresh layout and the same content.\n\n"
                                      "  rewrap IN OUT [options]\n\nOptions");
    const auto value = [](auto& variable) { return po::value(&variable)->default_value(variable); };
    described.add_options()("kag", value(configuration.kagSize), "octets of the KLV alignment grid")                 //
        ("partition-duration", value(configuration.partitionDuration), "content packages of a partition; 0 for all") //
        ("partition-size", value(configuration.partitionSize), "octets of essence of a partition; 0 for all")        //
        ("header-space", value(configuration.headerSpace), "octets kept free for header metadata")                   //
        ("index", value(placement), "none, footer, or after its essence")                                            //
        ("keep-layout", "copy grid, partitions and fill of the essence, and the index table")                        //
        ("fixed-uids", "make identifiers that are the same each time")                                               //
        ("verify", "read back what is written");
    return runProgram(argc, argv, {"rewrap", described, {"in", "out"}}, [&](const po::variables_map& arguments) {
        if (arguments.count("out") == 0) {
            throw po::error("two files are needed");
        }
        const auto out = arguments["out"].as<std::string>();
        requireFile(out, "OUT");
        configuration.indexPlacement = placementOf(placement);
        options.keepsLayout = arguments.count("keep-layout") != 0;
        options.verifies = arguments.count("verify") != 0;
        if (arguments.count("fixed-uids") != 0) {
            configuration.uidGenerator = std::make_shared<CountingUIDGenerator>();
        }
        return run(arguments["in"].as<std::string>(), out, options);
    });
}
